#include "cli/site_profile.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <tuple>

#include "cli/exit_code.h"
#include "cli/legacy_session.h"
#include "cli/native_name.h"
#include "cli/table_files.h"
#include "links/folder_documents.h"
#include "manager_base/site_locks.h"
#include "platform/code_page.h"
#include "platform/single_byte.h"
#include "tables/table_files.h"
#include "util/file_type.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

std::string ExistingFolder(const std::string& native) {
  std::error_code error;
  if (native.empty()) throw Failure(kUsage, "an empty name is no folder");
  if (!fs::is_directory(PathOf(native), error)) {
    throw Failure(kFileSystem, native + ": " + (error ? error.message() : "not a folder"));
  }
  return FolderPath(native);
}

// The page of a folder that is most likely its home page: the one that lies highest; of several,
// one with a usual name; of several, the first by name. Empty when there is no page at all.
fs::path LookForTop(const fs::path& folder, const GivenSite& site) {
  const bool isWeb = site.rules.value_or("web") == "web";
  const PageTypes types(site.pageTypes.value_or(""));
  std::tuple<int, std::ptrdiff_t, fs::path> best{INT_MAX, 0, fs::path()};
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                         error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    const std::string name = NameOf(entry->path().filename());
    if (entry.depth() >= std::get<0>(best)) entry.disable_recursion_pending();
    const bool isPage = isWeb && types.Hold(name) && IsShownAsPage(PageSyntaxOf(name));
    if (!isPage && ClassifyFileType(name.c_str()) != FT_HTML) continue;
    if (!entry->is_regular_file(ignored)) continue;
    const auto rank = std::ranges::find(kDefaultDocuments, name) - std::begin(kDefaultDocuments);
    best = std::min(best, {entry.depth(), rank, entry->path()});
  }
  return std::get<2>(best);
}

std::string TopPath(const fs::path& folder, const fs::path& top) {
  std::error_code error;
  fs::path path = folder / top;
  if (!fs::is_regular_file(path, error) && fs::is_regular_file(top, error)) path = top;
  if (!fs::is_regular_file(path, error)) {
    throw Failure(kFileSystem, NameOf(path) + ": no such file");
  }
  std::string below = PathBelow(FolderPath(NameOf(folder)), NameOf(path));
  if (below.empty()) throw Failure(kUsage, NameOf(path) + ": this file lies outside of the site");
  return below;
}

// Whether a system that ignores letter case takes two names for one. In UTF-8 no part of a longer
// character looks like a letter.
bool AreOneName(const std::string& a, const std::string& b) {
  return std::ranges::equal(platform::ToUtf8(a), platform::ToUtf8(b), {}, platform::LowerAscii,
                            platform::LowerAscii);
}

// Changes `path` when it lies below the folder that was moved.
void Rebase(std::string& path, const std::string& from, const std::string& to) {
  if (!from.empty() && path.starts_with(from)) path = to + path.substr(from.size());
}

void ChangeFolder(SiteProfile& profile, const std::string& folder) {
  const std::string before = profile.folders[kSlotSiteFolder];
  for (std::string& path : profile.folders) Rebase(path, before, folder);
  profile.folders[kSlotSiteFolder] = folder;
  Rebase(profile.topFile, before, folder);
}

// Puts what is given into the profile. The folder comes first, because the others lie below it.
void Apply(Session& session, const GivenSite& site, SiteProfile& profile) {
  if (site.folder) ChangeFolder(profile, ExistingFolder(*site.folder));
  const fs::path folder = PathOf(NativePath(profile.folders[kSlotSiteFolder]));
  if (site.top || site.folder) {
    profile.topFile = TopPath(folder, PathOf(site.top ? *site.top : NativePath(profile.topFile)));
  }
  if (site.docRoot) {
    profile.useDocumentRoot = !site.docRoot->empty();
    profile.folders[kSlotDocumentRoot] =
        profile.useDocumentRoot ? ExistingFolder(*site.docRoot) : std::string();
  }
  if (site.defaultUrl) profile.defaultUrl = *site.defaultUrl;
  if (site.fallbackExtensions) {
    profile.folders[kSlotFallbackExtensions] = *site.fallbackExtensions;
  }
  if (site.rules) profile.linkRules = *site.rules == "web" ? LinkRules::Web : LinkRules::Classic;
  if (site.baseUrl) profile.folders[kSlotLiveUrl] = *site.baseUrl;
  if (site.pageTypes) {
    profile.folders[kSlotPageTypes] =
        site.pageTypes->empty() ? std::string() : PageTypes(*site.pageTypes).list();
  }
  ServProfile server;
  if (site.server && !site.server->empty() &&
      session.manager().GetServProf(*site.server, server) != 0) {
    throw Failure(kUsage, "there is no server named \"" + *site.server + "\"");
  }
  if (site.server) profile.server = *site.server;
}

bool SameFolder(const SiteProfile& a, const SiteProfile& b, int slot) {
  const auto at = static_cast<std::size_t>(slot);
  return a.folders[at] == b.folders[at];
}

// Whether links anywhere in the site may lead elsewhere now. For a new default document the
// affected pages are known, so it does not count here. When the default document is taken away, it
// counts only if links to folders still mean a document.
bool NeedRebuild(const SiteProfile& before, const SiteProfile& after) {
  const RuleFlags& rules = FlagsOf(after.linkRules);
  return before.linkRules != after.linkRules || before.useDocumentRoot != after.useDocumentRoot ||
         !SameFolder(before, after, kSlotSiteFolder) ||
         !SameFolder(before, after, kSlotDocumentRoot) ||
         (rules.resolvesAsBrowser && !SameFolder(before, after, kSlotLiveUrl)) ||
         (rules.findsFolderDocuments && !SameFolder(before, after, kSlotFallbackExtensions)) ||
         (rules.readsOtherPageTypes && PageTypesOf(before).list() != PageTypesOf(after).list()) ||
         (!rules.findsFolderDocuments && after.defaultUrl.empty() && !before.defaultUrl.empty());
}

// Reads again the pages that a new default document affects, and closes the site; gives their
// names.
std::vector<std::string> ReadFolderLinksAnew(Session& session) {
  std::vector<std::string> names;
  for (const std::string& path : session.manager().ListFolderLinkSources()) {
    names.push_back(session.names().Shown(path));
  }
  if (session.manager().ReflectDefaultUrl("") != 0) session.FailToWrite();
  session.Close();
  if (session.manager().SetSiteProfRebuildState(kRebuilt, session.number()) != 0) {
    FailToWriteProfile("the site");
  }
  return names;
}

}  // namespace

bool HasGiven(Session& session, const GivenSite& site, const SiteProfile& profile) {
  GivenSite given = site;
  given.folder.reset();
  SiteProfile wanted = profile;
  Apply(session, given, wanted);
  return wanted == profile;
}

CLI::Option* AddGiven(CLI::App& command, const std::string& name, std::optional<std::string>& value,
                      const std::string& help) {
  return command.add_option_function<std::string>(
      name, [&value](const std::string& given) { value = given; }, help);
}

void AddTopOption(CLI::App& command, GivenSite& site) {
  AddGiven(command, "--top", site.top, "the home page; by default index.html and its like")
      ->option_text("FILE");
}

void AddSiteOptions(CLI::App& command, GivenSite& site) {
  AddTopOption(command, site);
  AddGiven(command, "--default-url", site.defaultUrl,
           "documents that stand for their folders: index.html,index.php")
      ->option_text("LIST");
  AddGiven(command, "--fallback-extensions", site.fallbackExtensions,
           "extensions that links may leave out: with html a link to about is one to about.html")
      ->option_text("LIST")
      ->check(&FaultOfExtensions);
  AddGiven(command, "--doc-root", site.docRoot, "the folder that a leading / in a link means")
      ->option_text("FOLDER");
  AddGiven(command, "--base-url", site.baseUrl,
           "the address under which the folder is served: links to it are links in the site")
      ->option_text("URL")
      ->check(&FaultOfBaseUrl);
  AddGiven(command, "--page-types", site.pageTypes,
           "extensions of files that are pages beside htm, html, shtm and shtml; by default " +
               std::string(PageTypes::kUsual))
      ->option_text("LIST")
      ->check(&FaultOfExtensions);
  AddGiven(command, "--rules", site.rules,
           "web (default): what a browser of today would load; classic: HTML 4 and no more")
      ->option_text("web|classic")
      ->check(&FaultOfRules);
}

SiteProfile NewProfile(Session& session, const GivenSite& site) {
  GivenSite given = site;
  const std::string folder = ExistingFolder(site.folder.value_or(""));
  if (!given.top) {
    given.top = NameOf(LookForTop(PathOf(NativePath(folder)), site));
    if (given.top->empty()) throw Failure(kFileSystem, *site.folder + ": no page in this folder");
  }
  SiteProfile profile;
  profile.linkRules = LinkRules::Web;
  Apply(session, given, profile);
  return profile;
}

void NeedNewName(Session& session, const std::string& name, const std::string& except) {
  for (const std::string& own :
       {std::string(kOlderFolder), std::string(SiteLocks::kFile), std::string(kKeptAnswers),
        std::string(kKeptAnswers) + "-journal", std::string(kSiteProfiles),
        TextFileOf(kSiteProfiles), std::string(kServerProfiles), TextFileOf(kServerProfiles)}) {
    if (AreOneName(own, name)) {
      throw Failure(kUsage, "\"" + name +
                                "\" cannot be the name of a site: the database has a file "
                                "or folder of that name");
    }
  }
  for (const std::string& taken : TakeList(session.manager().EnumSiteProf())) {
    if (taken != except && AreOneName(taken, name)) {
      throw Failure(kUsage, "there is a site named \"" + taken + "\" already");
    }
  }
}

void AddSite(Session& session, const std::string& name, const GivenSite& site) {
  NeedNewName(session, name, "");
  if (session.manager().SetSiteProf(name, NewProfile(session, site)) < 0) {
    ThrowIfSystemFailed("the profile of \"" + name + "\" cannot be written");
    throw Failure(kUsage, "\"" + name + "\" cannot be the name of a site: not every system could " +
                              "have a folder of that name");
  }
}

std::vector<std::string> ChangeSite(Session& session, const std::string& name,
                                    const GivenSite& site) {
  session.HoldSite(name);
  SiteMgr& manager = session.manager();
  const SiteProfile before = ReadProfile(session, name);
  SiteProfile profile = before;
  Apply(session, site, profile);
  if (NeedRebuild(before, profile)) profile.rebuildState = kNeverRebuilt;
  const bool reflect = profile.rebuildState == kRebuilt && profile.defaultUrl != before.defaultUrl;
  if (reflect) session.Open(name);
  if (reflect) profile.rebuildState = kNotWhole;  // until the pages are read
  // Every path in the tables belongs to the old folder.
  const bool moves = !SameFolder(before, profile, kSlotSiteFolder);
  if ((moves && manager.DeleteSiteProf(name) != 0) || manager.SetSiteProf(name, profile) < 0) {
    FailToWriteProfile("\"" + name + "\"");
  }
  return reflect ? ReadFolderLinksAnew(session) : std::vector<std::string>();
}

SiteProfile ReadProfile(Session& session, const std::string& name) {
  SiteProfile profile;
  if (session.manager().GetSiteProf(name, profile) != 0) {
    throw Failure(kUsage, "there is no site named \"" + name + "\"");
  }
  return profile;
}

PageTypes PageTypesOf(const SiteProfile& profile) {
  return PageTypes(profile.folders[kSlotPageTypes]);
}

const char* RulesName(LinkRules rules) {
  return rules == LinkRules::Web ? "web" : "classic";
}

const char* RebuildState(const SiteProfile& profile) {
  if (profile.rebuildState == kRebuilt) return "rebuilt";
  return profile.rebuildState == kNotWhole ? "last rebuild failed" : "to be rebuilt";
}

Json ProfileAsJson(const std::string& name, const SiteProfile& profile) {
  const std::string docRoot =
      profile.useDocumentRoot ? NativePath(profile.folders[kSlotDocumentRoot]) : std::string();
  return {{"name", JsonText(name)},
          {"folder", JsonText(NativePath(profile.folders[kSlotSiteFolder]))},
          {"top", JsonText(NativePath(profile.topFile))},
          {"default_url", JsonText(profile.defaultUrl)},
          {"doc_root", JsonText(docRoot)},
          {"fallback_extensions", JsonText(profile.folders[kSlotFallbackExtensions])},
          {"base_url", JsonText(profile.folders[kSlotLiveUrl])},
          {"server", JsonText(profile.server)},
          {"page_types", JsonText(profile.folders[kSlotPageTypes])},
          {"rules", RulesName(profile.linkRules)},
          {"state", RebuildState(profile)}};
}

}  // namespace zvrsit::cli
