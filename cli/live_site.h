// A site of the database that is kept true while its files change, with what is wrong with it.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/examine.h"
#include "cli/finding_options.h"
#include "cli/session.h"
#include "findings/finding.h"
#include "findings/site_findings.h"

namespace zvrsit::cli {

// What has happened to findings: each holds only the places that are new, or have gone.
struct FindingChange {
  std::vector<Finding> broke;
  std::vector<Finding> mended;
  bool filesChanged = false;  // or were read again

  bool isEmpty() const { return broke.empty() && mended.empty(); }
};

// The tables stay open, and nothing is locked between two calls, so that others can ask the site
// and change it.
class LiveSite {
 public:
  // Reads the profile. Throws Failure: kDatabase without a database, kUsage without such a site.
  LiveSite(const Options& options, std::string name, const FindingOptions& wanted);
  ~LiveSite();
  LiveSite(const LiveSite&) = delete;
  LiveSite& operator=(const LiveSite&) = delete;

  // Brings the database up to date with the disk and writes it, and gives what has become of the
  // findings; the first time, all are new. Only what has changed is read, unless that cannot be, or
  // others have written the tables meanwhile. Throws as UpdateSite, and InUse; what it could not do
  // then, the next call does. `folders`: native paths, the only ones in which files of the site
  // have changed since the last call; without a value it looks everywhere.
  FindingChange Follow(const std::optional<std::vector<std::string>>& folders);

  const std::string& name() const { return name_; }
  // The native folder of the site, with a separator at its end.
  const std::string& folder() const { return folder_; }
  // Whether a folder in it does not belong to it.
  bool LeavesOut(const std::filesystem::path& folder) const;
  bool IsOpen() const { return findings_ != nullptr; }
  bool LeavesOutFile(const std::string& name) const;
  // The names of the documents that stand for their folders, the most wanted first.
  const std::vector<std::string>& FolderDocuments() const { return documents_; }
  // Where the server of the site has its folder: "/", or "/docs/".
  const std::string& PathOnServer() const { return pathOnServer_; }
  // The extensions that links may leave out.
  const std::vector<std::string>& FallbackExtensions() const { return fallbackExtensions_; }
  // The open tables. To be called after Follow, like all below.
  ExaminedSite Examined();
  // Every file that the site knows, by its absolute native name.
  std::vector<std::string> ListFiles();
  // All that is wrong now, with totals; what is to be ignored is left out.
  FindingReport Report();
  // A report of its own about some of it.
  FindingReport ReportOn(std::vector<Finding> findings) const;
  const FindingOptions& options() const { return wanted_; }

 private:
  void ReadProfileOf(Session& session);
  void ReadConfiguration();
  bool UpdateOpen(const std::optional<std::vector<std::string>>& folders, SiteUpdates& updates);
  void OpenAnew();
  void StartFindings();
  void TellUnreadable();
  void ForgetFindings();
  void Forget();
  void Ignore(std::vector<Finding>& findings) const;

  const Options& options_;
  const std::string name_;
  const FindingOptions given_;  // by the command line
  FindingOptions wanted_;       // with the configuration
  std::string configStamp_;
  std::string folder_;
  std::string prefix_;
  std::string top_;
  std::string baseUrl_;
  std::string pathOnServer_;
  std::vector<std::string> documents_;
  std::vector<std::string> fallbackExtensions_;
  LinkRules rules_ = LinkRules::Web;
  std::string database_;
  bool isFirst_ = true;

  std::unique_ptr<Session> session_;        // null while the tables are not open
  std::unique_ptr<SiteFindings> findings_;  // null when they are to be collected anew
  std::vector<Finding> last_;               // then: those that were told last
  std::vector<std::string> unreadable_;     // files that were told of
};

}  // namespace zvrsit::cli
