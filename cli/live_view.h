// What `serve` tells browsers of a site that is kept true: asked by many threads, changed by one.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/live_site.h"
#include "web/site_view.h"

namespace zvrsit::cli {

class LiveView {
 public:
  // `editor`: as in ViewedSite.
  LiveView(const Options& options, LiveSite& site, std::string editor);

  // Whoever uses the site holds it.
  std::mutex& siteInUse() { return siteInUse_; }
  // Where files of the site are shown; empty for nowhere.
  void SetSiteAddress(std::string address) { siteAddress_ = std::move(address); }

  // Notes that the site has changed; the site is held.
  void Note(const FindingChange& change);
  // Ends the waiting of all.
  void End();
  // As WebHandler::NextEvents; with the changes of findings if `isWhole`.
  bool NextEvents(bool isWhole, unsigned& seen, std::string& text);

  // The page of the view, and its data as JSON, packed with gzip. Null while the tables cannot be
  // asked.
  std::shared_ptr<const std::string> Page();
  std::shared_ptr<const std::string> Data();
  // What is wrong in a file, named from the folder of the site, as web/view/overlay.js takes it: an
  // object with `page` and `findings`, whose places are line, column and reference.
  std::string MarksOf(const std::string& file);

 private:
  struct Event {
    unsigned number;
    std::string text;
  };
  using Text = std::shared_ptr<const std::string>;

  void Gather();
  SiteView View();
  std::string MadeAt(unsigned number);

  const Options& options_;
  LiveSite& site_;
  const std::string editor_;
  std::string siteAddress_;

  std::mutex siteInUse_;
  // As of number `made_`, or null; used while the site is held.
  unsigned made_ = 0;
  Text page_;
  Text data_;
  std::unique_ptr<FindingReport> report_;

  std::mutex eventsInUse_;
  std::condition_variable eventsCame_;
  std::deque<Event> events_;  // the last ones
  unsigned now_ = 1;
  std::unordered_map<unsigned, std::string> times_;  // of the last number; used with events_
  bool isEnding_ = false;
};

}  // namespace zvrsit::cli
