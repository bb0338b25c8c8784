// An authoring application in small, from one source for Windows and other systems: it opens a
// site, saves its top page, shows the links of that page, and rebuilds the site with a dialog. Then
// it gives a page another name, and the links of the site follow; the top page is open in its
// editor meanwhile.
//
//   author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME PAGE_NAME NEW_NAME
//
// Folders are absolute, as the system writes them, and end in its separator.
#include <zvrsit40/zvrsit40.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "dialog.h"

namespace {

std::string LibraryPath(const char* native) {
  std::string path;
  zvrsit::platform::FromNativePath(native, path);
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

// A page that the user is working on: the application has a copy, which may be newer than the file.
class Editor : public zvrsit::OpenFiles {
 public:
  explicit Editor(const std::string& page) : page_(page) {
    zvrsit::platform::ToNativePath(page, native_);
    std::ifstream file(native_, std::ios::binary);
    text_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }

  bool IsOpen(const std::string& path) override { return path == page_; }
  void Change(const zvrsit::FileEdits& edits) override {
    for (const zvrsit::TextEdit& edit : edits.edits) {
      std::printf("  in the editor, line %d: %s becomes %s\n", edit.line, edit.before.c_str(),
                  edit.after.c_str());
    }
    zvrsit::ApplyEdits(text_, edits, text_);
  }

  void Save(zvrsit::SiteMgr& manager) {
    std::ofstream(native_, std::ios::binary) << text_;
    manager.Save(page_, nullptr);
  }

 private:
  std::string page_;
  std::string native_;
  std::string text_;
};

// Gives a page another name; all references to it, and those in it, lead where they led.
bool RenamePage(zvrsit::SiteMgr& manager, const std::string& from, const std::string& to,
                const std::string& journal, Editor& editor) {
  zvrsit::RepairPlan plan;
  if (zvrsit::PlanMove(manager, from, to, plan) != 0) return false;
  for (const zvrsit::FileEdits& file : plan.files) {
    std::printf("  %s: %d to change\n", file.path.c_str(), static_cast<int>(file.edits.size()));
  }
  zvrsit::DiskChange change;
  change.files = plan.files;
  change.moves = {{from, to}};
  zvrsit::DiskFault fault;
  if (zvrsit::ChangeDisk(change, journal, &editor, fault) != 0) return false;
  zvrsit::SiteUpdates updates;
  const bool isUpdated =
      manager.SiteUpdate(updates, nullptr) == 0 || manager.SiteRebuildDB(1, nullptr) == 0;
  return zvrsit::EndRepair(journal) == 0 && isUpdated;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs("author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME PAGE_NAME NEW_NAME\n", stderr);
    return 2;
  }
  const std::string site = LibraryPath(argv[1]);
  const std::string page = site + argv[3];
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(LibraryPath(argv[2]).c_str(), "sites.R", "servers.R", 0);
  if (!OpenSite(manager, site, page)) {
    std::fputs("the site cannot be opened\n", stderr);
    return 1;
  }
  std::puts("saving the top page; its links:");
  manager.Save(page, nullptr);
  ShowLinks(manager, page);

  std::puts("rebuilding:");
  Dialog dialog;
  manager.SiteRebuildDB(1, dialog.handles());
  const bool rebuilt = manager.GetSiteProfRebuildState() == 2;
  std::printf("%s; the bar stands at %d\n", rebuilt ? "rebuilt" : "the rebuild failed",
              dialog.position());

  std::puts("renaming a page:");
  Editor editor(page);
  const std::string journal = LibraryPath(argv[2]) + "journal";
  const bool renamed = RenamePage(manager, site + argv[4], site + argv[5], journal, editor);
  editor.Save(manager);
  std::printf("%s; the links of the top page:\n", renamed ? "renamed" : "not renamed");
  ShowLinks(manager, page);
  manager.SiteClose();
  return rebuilt && renamed ? 0 : 1;
}
