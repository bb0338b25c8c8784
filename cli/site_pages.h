// The files of a site as its server would give them, on the loopback.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/live_view.h"
#include "cli/web_listener.h"

namespace zvrsit::cli {

// Answers at an address of its own, with the folder of the site as its root, so that links that
// begin with "/" lead where they should, and scripts of the pages cannot ask the view. A browser is
// given the secret as a cookie, by the address that EntryPath says.
class SitePages : public WebHandler {
 public:
  struct Ways {
    bool marks = true;     // broken references are marked in pages
    bool follows = false;  // files outside of the site, which links there lead to, are given too
  };
  SitePages(LiveSite& site, LiveView& view, std::string secret, Ways ways);

  // What leads to a file with its encoded path behind it.
  std::string EntryPath() const;
  // Cookies know no ports.
  void SetPort(int port) { cookie_ = "zvrsit-" + std::to_string(port); }

  WebAnswer Answer(const WebRequest& request) override;
  bool NextEvents(unsigned& seen, std::string& text) override;

 private:
  bool HasCookie(const std::string& cookies) const;
  WebAnswer Enter(const WebRequest& request) const;
  WebAnswer Own(const WebRequest& request);
  WebAnswer File(const std::string& path);
  std::optional<std::string> FileAt(std::string path) const;
  bool MayBeGiven(const std::filesystem::path& root, const std::filesystem::path& file) const;

  LiveSite& site_;
  LiveView& view_;
  const std::string secret_;
  const Ways ways_;
  std::string cookie_;
};

// The bytes of a percent-encoded path; nothing for one that no file has.
std::optional<std::string> DecodedPath(const std::string& encoded);
// Whether two texts are the same, in a time that does not tell how much of them is.
bool AreSame(const std::string& a, const std::string& b);

}  // namespace zvrsit::cli
