#include "cli/live_view.h"

#include <chrono>
#include <utility>

#include "cli/examine.h"
#include "cli/gathered_view.h"
#include "cli/output.h"
#include "web/finding_id.h"
#include "web/gzip.h"
#include "web/report.h"
#include "web/site_view.h"

namespace zvrsit::cli {
namespace {

constexpr std::size_t kMostEvents = 100;
// Of the findings of one event; the data have them all.
constexpr std::size_t kMostTold = 20;
// After this time one who waits is told nothing, so that a connection that is gone is noticed.
constexpr std::chrono::seconds kPatience(2);
// What one has seen who was told that it is over.
constexpr unsigned kEnded = ~0U;

// Findings as in the data of the view, but a place names its file.
Json AsJson(const std::vector<Finding>& findings) {
  Json all = Json::array();
  for (const Finding& finding : findings) {
    if (all.size() == kMostTold) break;
    Json places = Json::array();
    for (const FindingPlace& place : finding.places) {
      if (places.size() == kMostTold) break;
      places.push_back({JsonText(place.file), place.line, place.column, JsonText(place.reference)});
    }
    all.push_back({{"id", IdOf(finding)},
                   {"rule", TraitsOf(finding.rule).name},
                   {"severity", SeverityName(finding.severity)},
                   {"target", JsonText(finding.target)},
                   {"message", JsonText(finding.message)},
                   {"suggestion", JsonText(finding.suggestion)},
                   {"command", ""},
                   {"places", places}});
  }
  return all;
}

}  // namespace

LiveView::LiveView(const Options& options, LiveSite& site, std::string editor)
    : options_(options), site_(site), editor_(std::move(editor)) {}

void LiveView::Note(const FindingChange& change) {
  Json told = {{"totals", Json::parse(TotalsJson(site_.Report()))},
               {"broke", AsJson(change.broke)},
               {"mended", AsJson(change.mended)}};
  const std::lock_guard lock(eventsInUse_);
  told["made"] = MadeAt(now_ + 1);
  events_.push_back({++now_, told.dump()});
  if (events_.size() > kMostEvents) events_.pop_front();
  eventsCame_.notify_all();
}

void LiveView::End() {
  const std::lock_guard lock(eventsInUse_);
  isEnding_ = true;
  eventsCame_.notify_all();
}

bool LiveView::NextEvents(bool isWhole, unsigned& seen, std::string& text) {
  std::unique_lock lock(eventsInUse_);
  if (seen != 0) {
    eventsCame_.wait_for(lock, kPatience, [&] { return isEnding_ || seen != now_; });
  }
  if (isEnding_) {
    const bool isTold = seen == kEnded;
    text = "event: ended\ndata: {}\n\n";
    seen = kEnded;
    return !isTold;
  }
  const bool hasMissed = seen == 0 || (seen < now_ && events_.front().number > seen + 1);
  if (hasMissed) {
    text = "event: hello\ndata: " + Json({{"made", MadeAt(now_)}}).dump() + "\n\n";
  } else {
    for (const Event& event : events_) {
      if (event.number <= seen) continue;
      text += "event: change\ndata: " + (isWhole ? event.text : "{}") + "\n\n";
    }
    if (text.empty()) text = ":\n\n";
  }
  seen = now_;
  return true;
}

// Makes page and data of the site as it is now.
void LiveView::Gather() {
  unsigned now = 0;
  {
    const std::lock_guard lock(eventsInUse_);
    now = now_;
  }
  if (made_ == now || !site_.IsOpen()) return;
  page_ = data_ = nullptr;
  report_ = std::make_unique<FindingReport>(site_.Report());
  made_ = now;
}

std::shared_ptr<const std::string> LiveView::Page() {
  const std::lock_guard lock(siteInUse_);
  Gather();
  if (page_ == nullptr && site_.IsOpen()) page_ = std::make_shared<std::string>(ReportPage(View()));
  return page_;
}

std::shared_ptr<const std::string> LiveView::Data() {
  const std::lock_guard lock(siteInUse_);
  Gather();
  if (data_ == nullptr && site_.IsOpen())
    data_ = std::make_shared<std::string>(Gzip(SiteViewJson(View())));
  return data_;
}

SiteView LiveView::View() {
  SiteView view;
  view.report = *report_;
  const ExaminedSite site = site_.Examined();
  cli::Gather(options_, site_.options(), site, view.report, view);
  {
    const std::lock_guard lock(eventsInUse_);
    view.site.made = MadeAt(made_);
  }
  view.site.isLive = true;
  view.site.editor = editor_;
  view.site.siteAddress = siteAddress_;
  return view;
}

std::string LiveView::MarksOf(const std::string& file) {
  const std::lock_guard lock(siteInUse_);
  Gather();
  Json findings = Json::array();
  // Another program may use the site since before anybody asked.
  static const FindingReport kNone;
  for (const Finding& finding : (report_ != nullptr ? *report_ : kNone).findings) {
    Json places = Json::array();
    for (const FindingPlace& place : finding.places) {
      if (place.file == file && !place.reference.empty()) {
        places.push_back({place.line, place.column, JsonText(place.reference)});
      }
    }
    if (places.empty()) continue;
    findings.push_back({{"severity", SeverityName(finding.severity)},
                        {"message", JsonText(finding.message)},
                        {"suggestion", JsonText(finding.suggestion)},
                        {"places", places}});
  }
  return Json({{"page", JsonText(file)}, {"findings", findings}}).dump();
}

// When that state of the site was, and which it is: two may be of one second.
std::string LiveView::MadeAt(unsigned number) {
  const auto known = times_.find(number);
  if (known != times_.end()) return known->second;
  times_.clear();
  return times_[number] = UtcNow() + fmt::format(".{:03}Z", number % 1000);
}

}  // namespace zvrsit::cli
