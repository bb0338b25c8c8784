// Saving one page in a site of 10,000: reading it, finding its links and registering them anew in
// place of those that were there; and SQLite and LMDB doing the same with what our parser finds.
//
//   save_bench [--benchmark_filter=...]
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/rival_stores.h"
#include "bench/site_writer.h"
#include "bench/workload.h"
#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "dom/mapped_file.h"
#include "links/extractor.h"
#include "links/target_resolver.h"
#include "manager/site_mgr.h"
#include "platform/native_path.h"

namespace zvrsit::bench {
namespace {

constexpr unsigned kPages = 10000;
constexpr unsigned kStride = 7919;     // from one saved page to the next
constexpr std::size_t kFewLinks = 45;  // no page has fewer
constexpr int kSaves = 2000;

// The pages, on disk.
class Pages {
 public:
  Pages() {
    SiteShape shape;
    shape.folder = folder_.path() + "/site";
    shape.pages = kPages;
    good_ = WriteSite(shape) && platform::FromNativePath(shape.folder + "/", path_);
  }
  bool good() const { return good_; }
  const std::string& path() const { return path_; }
  std::string PathOf(unsigned page) const {
    std::string name;
    platform::FromNativePath(PageName(page), name);
    return path_ + name;
  }
  // The native path of a folder for a database.
  std::string DatabaseFolder() const { return folder_.path(); }

 private:
  TempFolder folder_;
  std::string path_;
  bool good_ = false;
};

// Our site, rebuilt and open.
class OurSite {
 public:
  bool Open(const Pages& pages) {
    SiteProfile profile;
    profile.linkRules = LinkRules::Web;
    profile.folders[kSlotDocumentRoot] = profile.folders[kSlotSiteFolder] = pages.path();
    profile.topFile = pages.path() + "index.html";
    std::string database;
    if (!platform::FromNativePath(pages.DatabaseFolder() + "/db/", database)) return false;
    manager_.setDom(&dom_);
    manager_.setDB(database.c_str(), "sites.R", "servers.R", 0);
    return manager_.SetSiteProf("bench", profile) == 0 && manager_.SiteOpen("bench", 0) == 0 &&
           manager_.SiteRebuildComplete(nullptr) == 0 && manager_.FlushSite() == 0;
  }
  ~OurSite() { manager_.SiteClose(); }

  bool Save(const std::string& path) { return manager_.Save(path, nullptr) == 0; }
  bool Commit() { return manager_.FlushSite() == 0; }
  std::size_t CountLinks(const std::string& path) {
    const std::unique_ptr<std::vector<int>> links(
        manager_.GetForeLinks(UrlID(kKindPath, manager_.FindPath(path))));
    return links == nullptr ? 0 : links->size();
  }

 private:
  DOM dom_;
  SiteMgr manager_;
};

// The same pages in a rival, every page saved once.
class TheirSite {
 public:
  explicit TheirSite(std::unique_ptr<RivalSite> store) : store_(std::move(store)) {}

  bool Open(const Pages& pages) {
    root_ = pages.path();
    if (!store_->Open(pages.DatabaseFolder())) return false;
    for (unsigned page = 0; page < kPages; ++page) {
      if (!Save(pages.PathOf(page))) return false;
    }
    return Commit();
  }
  bool Save(const std::string& path) {
    const int page = store_->NumberOf(path);
    return page >= 0 && ReadLinks(path, page) && store_->ReplaceLinks(page, links_);
  }
  bool Commit() { return store_->Commit(); }
  std::size_t CountLinks(const std::string& path) {
    return static_cast<std::size_t>(store_->CountFrom(store_->NumberOf(path)));
  }

 private:
  bool ReadLinks(const std::string& path, int page) {
    links_.clear();
    if (!file_.open(path, 0) || !text_.Import(file_.top(), file_.size(), 0)) return false;
    Document* document = dom_.createDocument("HTML");
    document->createNodes(text_.text(), static_cast<int>(text_.length()), nullptr, true);
    ExtractPage(*document, LinkRules::Web, rows_);
    resolver_.BeginPage(root_, path);
    for (const LinkRow& row : rows_.links) {
      const TargetKind kind = resolver_.Resolve(row.target, target_);
      if (kind != TargetKind::kLocal && kind != TargetKind::kExternal) continue;
      links_.push_back({page, store_->NumberOf(target_), std::string(row.target)});
    }
    dom_.deleteDocument(document);
    file_.close();
    return true;
  }

  std::unique_ptr<RivalSite> store_;
  std::string root_;
  DOM dom_;
  MappedFile file_;
  CodeConv text_;
  PageRows rows_;
  TargetResolver resolver_{LinkRules::Web};
  std::string target_;
  std::vector<Link> links_;
};

// Saves pages here and there. With `commit` each is then handed to the system, so that it outlives
// this process; the rivals cannot do without.
template <class Site>
void BenchSave(benchmark::State& state, Site& site, bool commit) {
  const Pages pages;
  if (!pages.good() || !site.Open(pages)) return state.SkipWithError("no site");
  const std::size_t links = site.CountLinks(pages.PathOf(0));
  unsigned page = 0;
  for (auto _ : state) {
    if (!site.Save(pages.PathOf(page)) || (commit && !site.Commit())) {
      return state.SkipWithError("cannot save");
    }
    page = (page + kStride) % kPages;
  }
  if (links < kFewLinks || site.CountLinks(pages.PathOf(0)) != links) {
    state.SkipWithError("wrong links");
  }
  state.SetItemsProcessed(state.iterations());
}

template <class Make>
void RegisterRival(const char* name, Make make) {
  benchmark::RegisterBenchmark(name,
                               [make](benchmark::State& state) {
                                 TheirSite site(make());
                                 BenchSave(state, site, true);
                               })
      ->Iterations(kSaves)
      ->Unit(benchmark::kMicrosecond);
}

void RegisterOurs(const char* name, bool commit) {
  benchmark::RegisterBenchmark(name,
                               [commit](benchmark::State& state) {
                                 OurSite site;
                                 BenchSave(state, site, commit);
                               })
      ->Iterations(kSaves)
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace zvrsit::bench

int main(int argc, char** argv) {
  using namespace zvrsit::bench;
  RegisterOurs("save/page of 10000/zvrsit, in memory", false);
  RegisterOurs("save/page of 10000/zvrsit", true);
  RegisterRival("save/page of 10000/sqlite", MakeSqliteSite);
  RegisterRival("save/page of 10000/lmdb", MakeLmdbSite);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
