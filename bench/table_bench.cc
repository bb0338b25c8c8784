// The seven tables beside SQLite, LMDB and a plain arena doing the same work; see store_bench.h.
//
//   table_bench [--benchmark_filter=add/path ...]
#include <benchmark/benchmark.h>

#include <map>
#include <memory>

#include "bench/our_stores.h"
#include "bench/rival_arena.h"
#include "bench/rival_stores.h"
#include "bench/store_bench.h"
#include "tables/site_folder_db.h"
#include "tables/site_path_db.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"

namespace zvrsit::bench {
namespace {

// Made once a size, when a benchmark first runs.
const std::vector<std::string>& Paths(int count) {
  static std::map<int, std::vector<std::string>> made;
  auto& paths = made[count];
  if (paths.empty()) paths = MakePaths(count);
  return paths;
}

const std::vector<Link>& Links(int count) {
  static std::map<int, std::vector<Link>> made;
  auto& links = made[count];
  if (links.empty()) links = MakeLinks(count);
  return links;
}

// Relations are links without a text; the rivals are given the shortest one.
const std::vector<Link>& Relations(int count) {
  static std::map<int, std::vector<Link>> made;
  auto& relations = made[count];
  if (!relations.empty()) return relations;
  relations = Links(count);
  for (Link& relation : relations) relation.text = "-";
  return relations;
}

const std::vector<std::string>& ProfileNames(int count) {
  static std::map<int, std::vector<std::string>> made;
  auto& names = made[count];
  for (int i = static_cast<int>(names.size()); i < count; ++i) {
    names.push_back("site" + std::to_string(i));
  }
  return names;
}

// `names(count)` gives the names of the entries.
template <class Table, class Rec>
void RegisterNamed(const std::string& table, int count,
                   const std::vector<std::string>& (*names)(int)) {
  RegisterStore(table, "zvrsit", count,
                [=] { return std::make_unique<NamedStore<Table, Rec>>(names(count)); });
  RegisterStore(table, "sqlite", count,
                [=] { return MakeSqliteNames(names(count), Rec::kSlotLength); });
  RegisterStore(table, "lmdb", count,
                [=] { return MakeLmdbNames(names(count), Rec::kSlotLength); });
}

template <class Make>
void RegisterPairs(const std::string& table, const char* store, int count, Make make) {
  RegisterStore(table, store, count, make);
  RegisterQueries(table, store, count, make);
}

void RegisterLinks(int count) {
  RegisterPairs("link", "zvrsit", count, [=] { return std::make_unique<LinkStore>(Links(count)); });
  RegisterPairs("link", "sqlite", count, [=] { return MakeSqliteLinks(Links(count)); });
  RegisterPairs("link", "lmdb", count, [=] { return MakeLmdbLinks(Links(count)); });
}

void RegisterRelations(int count) {
  RegisterPairs("relation", "zvrsit", count,
                [=] { return std::make_unique<RelStore>(Relations(count)); });
  RegisterPairs("relation", "sqlite", count, [=] { return MakeSqliteLinks(Relations(count)); });
  RegisterPairs("relation", "lmdb", count, [=] { return MakeLmdbLinks(Relations(count)); });
}

// The yardstick: what an arena with open hashing needs to take the same entries and write one file.
void RegisterArena(int count) {
  Register("path", "add", "arena", count, [=](benchmark::State& state) {
    BenchAdd(state, count,
             [=] { return std::make_unique<ArenaNames>(Paths(count), SitePathRec::kSlotLength); });
  });
  Register("link", "add", "arena", count, [=](benchmark::State& state) {
    BenchAdd(state, count, [=] { return std::make_unique<ArenaLinks>(Links(count)); });
  });
}

void RegisterAll() {
  for (const int count : {1000, 100000, 1000000}) {
    RegisterNamed<SitePathDB, SitePathRec>("path", count, Paths);
    RegisterNamed<SiteUrlDB, SiteUrlRec>("url", count, Paths);
    RegisterNamed<SiteFolderDB, SiteNodeRec>("folder", count, Paths);
    RegisterLinks(count);
    RegisterRelations(count);
    RegisterArena(count);
    // Those of sites are written at once: each is in the file when Add returns.
    RegisterNamed<SiteSiteProfDB, SiteSiteRec>("site-profile", count, ProfileNames);
    RegisterNamed<SiteServProfDB, SiteServRec>("server-profile", count, ProfileNames);
  }
}

}  // namespace
}  // namespace zvrsit::bench

int main(int argc, char** argv) {
  zvrsit::bench::RegisterAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
