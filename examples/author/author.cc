// An authoring application in small, from one source for Windows and other systems: it opens a
// site, saves its top page, shows the links of that page, and rebuilds the site with a dialog.
//
//   author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME       folders are absolute, as the system has
//   them
#include <zvrsit40.h>

#include <cstdio>
#include <string>

#if defined(_WIN32)
// The application's framework: a text window, here one line of the console.
class CWnd {};
#endif

namespace {

int LoadText(unsigned id, char* buffer, int size) {
  const char* text = id == 8131   ? "reading folders"
                     : id == 8132 ? "reading links"
                     : id == 8133 ? "links are read"
                                  : "";
  return std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text);
}

#if defined(_WIN32)
struct Label : CWnd {};

void ShowOnConsole(CWnd*, const char* text) {
  std::printf("  %s\n", text);
}
#else
struct Label : zvrsit::CWnd {
  void SetWindowTextA(const char* text) override { std::printf("  %s\n", text); }
};
#endif

// Shows status texts only; a bar is a window of the application, and may be left out.
class Dialog {
 public:
  Dialog() {
    zvrsit::platform::SetStringLoader(&LoadText);
#if defined(_WIN32)
    zvrsit::platform::SetTextShower(&ShowOnConsole);
#endif
    dialog.statusText = &status_;
  }
  ~Dialog() {
    zvrsit::platform::SetStringLoader(nullptr);
  }

  zvrsit::CZvrSiteRebuildProgressDlg dialog;

 private:
  Label status_;
};

// A `\` path that ends in one.
std::string FolderPath(const char* native) {
  std::string path;
  zvrsit::platform::FromNativePath(native, path);
  if (path.empty() || path.back() != '\\') path += '\\';
  return path;
}

void ShowLinks(zvrsit::SiteMgr& manager, const std::string& page) {
  zvrsit::vec<zvrsit::SiteRecCell>* links = manager.GetForeLinks(page);
  if (links == nullptr) return;
  for (const zvrsit::SiteRecCell& link : *links) std::printf("  %s\n", link.GetName().c_str());
  zvrsit::SiteMgr::DeleteVecRecCell(links);
}

bool OpenSite(zvrsit::SiteMgr& manager, const std::string& site, const std::string& page) {
  zvrsit::SiteProfile profile;
  profile.folders[zvrsit::kSlotSiteFolder] = site;
  profile.topFile = page;
  profile.linkRules = zvrsit::LinkRules::Web;
  manager.SetSiteProf("author", profile);
  return manager.SiteOpen("author", 0) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME\n", stderr);
    return 2;
  }
  const std::string site = FolderPath(argv[1]);
  const std::string page = site + argv[3];
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(FolderPath(argv[2]).c_str(), "sites.R", "servers.R", 0);
  if (!OpenSite(manager, site, page)) {
    std::fputs("the site cannot be opened\n", stderr);
    return 1;
  }
  std::puts("saving the top page; its links:");
  manager.Save(page, nullptr);
  ShowLinks(manager, page);

  std::puts("rebuilding:");
  Dialog progress;
  manager.SiteRebuildDB(1, &progress.dialog);
  const bool rebuilt = manager.GetSiteProfRebuildState() == 2;
  std::puts(rebuilt ? "rebuilt" : "the rebuild failed");
  manager.SiteClose();
  return rebuilt ? 0 : 1;
}
