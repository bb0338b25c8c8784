#include "cli/live_site.h"

#include <sstream>
#include <system_error>
#include <utility>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"
#include "cli/table_files.h"
#include "cli/update_command.h"
#include "findings/compare.h"
#include "findings/owned_cells.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// Another text when the configuration is another one; empty for none.
std::string StampOfConfig(const std::string& file) {
  return file.empty() ? "" : file + " " + StampOf(PathOf(file));
}

// By the document root, else by the address of the site.
std::string PathOnServerOf(const SiteProfile& profile) {
  const std::string& root = profile.folders[kSlotDocumentRoot];
  const std::string& folder = profile.folders[kSlotSiteFolder];
  if (profile.useDocumentRoot && !root.empty() && folder.starts_with(root)) {
    return NameOf("/" / PathOf(NativePath(folder)).lexically_relative(PathOf(NativePath(root))) /
                  "");
  }
  const std::string& url = profile.folders[kSlotLiveUrl];
  const std::size_t host = url.find("://");
  const std::size_t path = host == url.npos ? url.npos : url.find('/', host + 3);
  if (path == url.npos) return "/";
  return url.substr(path) + (url.ends_with('/') ? "" : "/");
}

// No value when one of them has no `\` path.
std::optional<std::vector<std::string>> FolderPaths(const std::vector<std::string>& natives) {
  std::vector<std::string> paths;
  try {
    for (const std::string& native : natives) paths.push_back(FolderPath(native));
  } catch (const Failure&) {
    return std::nullopt;
  }
  return paths;
}

}  // namespace

LiveSite::LiveSite(const Options& options, std::string name, const FindingOptions& wanted)
    : options_(options), name_(std::move(name)), given_(wanted), wanted_(wanted) {
  Session session(options_, Database::kAsk);
  ReadProfileOf(session);
  configStamp_ = StampOfConfig(given_.config.empty() ? ConfigIn(folder_) : given_.config);
  Configure(wanted_, ConfigIn(folder_));
}

LiveSite::~LiveSite() {
  if (session_ != nullptr) session_->Discard();
}

void LiveSite::ReadProfileOf(Session& session) {
  const SiteProfile profile = ReadProfile(session, name_);
  folder_ = NativePath(profile.folders[kSlotSiteFolder]);
  prefix_ = PrefixOf(folder_);
  top_ = profile.topFile;
  baseUrl_ = profile.folders[kSlotLiveUrl];
  pathOnServer_ = PathOnServerOf(profile);
  fallbackExtensions_.clear();
  std::istringstream extensions(profile.folders[kSlotFallbackExtensions]);
  for (std::string one; std::getline(extensions, one, ',');) fallbackExtensions_.push_back(one);
  rules_ = profile.linkRules;
  database_ = session.database();
}

// Reads the configuration again when it has changed. One with a fault leaves everything as it was.
void LiveSite::ReadConfiguration() {
  std::string stamp = StampOfConfig(given_.config.empty() ? ConfigIn(folder_) : given_.config);
  if (stamp == configStamp_) return;
  configStamp_ = std::move(stamp);
  FindingOptions wanted = given_;
  try {
    Configure(wanted, ConfigIn(folder_));
  } catch (const Failure& failure) {
    return Warn(failure.what());
  }
  ForgetFindings();
  wanted_ = std::move(wanted);
}

FindingChange LiveSite::Follow(const std::optional<std::vector<std::string>>& folders) {
  ReadConfiguration();
  SiteUpdates updates;
  const bool isUpdated = session_ != nullptr && UpdateOpen(folders, updates);
  if (!isUpdated) OpenAnew();
  FindingChange change;
  const bool filesChanged = !isUpdated || !updates.touched.empty() || !updates.gone.empty();
  if (findings_ == nullptr) {
    StartFindings();
    change = {findings_->List(), std::exchange(last_, {})};
  } else if (findings_->Follow(updates, change.mended, change.broke)) {
    Ignore(change.mended);
  } else {
    Forget();
    throw Failure(kDatabase, "the tables of the site cannot be read");
  }
  Ignore(change.broke);
  TakeOutShared(change.mended, change.broke);
  change.filesChanged = filesChanged;
  return change;
}

// Brings the open tables up to date. False when they are no longer those of the disk, or must be
// made anew; then they are not open any more.
bool LiveSite::UpdateOpen(const std::optional<std::vector<std::string>>& folders,
                          SiteUpdates& updates) {
  bool isHeld = session_->HoldAgain();
  try {
    if (isHeld) {
      TerminalProgress progress(false);
      const NotOfTheSite leftOut(*session_);
      SiteMgr& manager = session_->manager();
      const auto paths = folders ? FolderPaths(*folders) : std::nullopt;
      isHeld = (paths ? manager.SiteUpdateFolders(*paths, updates, progress.dialog())
                      : manager.SiteUpdate(updates, progress.dialog())) == 0;
      Interrupts::Check();
    }
    if (isHeld) session_->WriteUpdated();
  } catch (...) {
    Forget();
    throw;
  }
  if (!isHeld) {
    Forget();
    return false;
  }
  session_->LetGo();
  TellUnreadable();
  return true;
}

void LiveSite::OpenAnew() {
  static_cast<void>(UpdateSite(options_, name_, isFirst_ && !wanted_.quiet));
  auto session = std::make_unique<Session>(options_, Database::kMustExist);
  try {
    session->Open(name_);
    ReadProfileOf(*session);
  } catch (...) {
    session->Discard();
    throw;
  }
  documents_ = session->manager().ListFolderDocuments();
  session->manager().KeepPageIds(true);
  session->LetGo();
  session_ = std::move(session);
  isFirst_ = false;
}

void LiveSite::StartFindings() {
  auto findings = std::make_unique<SiteFindings>(session_->manager(), FoundSiteOf(*session_, top_),
                                                 wanted_.severities);
  if (!findings->Collect()) {
    Forget();
    throw Failure(kDatabase, "the tables of the site cannot be read");
  }
  findings_ = std::move(findings);
}

// Names what could not be read, when it is something else than before.
void LiveSite::TellUnreadable() {
  const std::vector<std::string>& skipped = session_->manager().SkippedByRebuild();
  if (skipped != unreadable_) static_cast<void>(TellSkipped(*session_));
  unreadable_ = skipped;
}

void LiveSite::ForgetFindings() {
  if (findings_ == nullptr) return;
  last_ = findings_->List();
  Ignore(last_);
  findings_.reset();
}

// What was not written is lost.
void LiveSite::Forget() {
  ForgetFindings();
  session_->Discard();
  session_.reset();
}

void LiveSite::Ignore(std::vector<Finding>& findings) const {
  FindingReport report;
  report.findings.swap(findings);
  wanted_.ignores.TakeOut(report);
  report.findings.swap(findings);
}

bool LiveSite::LeavesOut(const fs::path& folder) const {
  return LeftOut(rules_, database_).HasFolder(folder);
}

bool LiveSite::LeavesOutFile(const std::string& name) const {
  return LeftOut(rules_, database_).HasFile(name);
}

ExaminedSite LiveSite::Examined() {
  return {*session_, name_, top_, baseUrl_};
}

std::vector<std::string> LiveSite::ListFiles() {
  std::vector<std::string> names;
  const OwnedCells cells(session_->manager().EnumPath());
  for (std::size_t i = 0; cells != nullptr && i < cells->size(); ++i) {
    names.push_back(NativePath((*cells)[i].GetName()));
  }
  return names;
}

FindingReport LiveSite::Report() {
  std::vector<Finding> findings = findings_->List();
  Ignore(findings);
  return ReportOn(std::move(findings));
}

FindingReport LiveSite::ReportOn(std::vector<Finding> findings) const {
  FindingReport report;
  report.folder = folder_;
  report.prefix = prefix_;
  report.findings = std::move(findings);
  session_->manager().CountSite(report.totals);
  return report;
}

}  // namespace zvrsit::cli
