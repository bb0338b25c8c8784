// The same operations on any store of N entries, timed alike. A store is one of our tables or a
// rival's; `make()` gives a std::unique_ptr to a closed one. Every method of a store that may fail
// gives a bool, and a benchmark of which one failed, or that counts wrongly at its end, is shown as
// an error.
//
//   add     N entries into a new store, committed
//   open    a store of N entries, up to its first answer
//   find    each of N entries, in random order
//   delete  each of N entries, in random order, committed
//   close   committing one changed record of N, and closing
//   pack    a store of which every second entry was deleted
//
// Items per second are entries per second; setting up is not timed.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench/workload.h"

namespace zvrsit::bench {

template <class Store>
bool Fill(Store& store, int count) {
  for (int number = 0; number < count; ++number) {
    if (!store.Add(number)) return false;
  }
  return store.Commit();
}

template <class Make>
bool FillFolder(const TempFolder& folder, int count, Make make) {
  const auto store = make();
  return store->Open(folder.path()) && Fill(*store, count) && store->Close();
}

// Ends an iteration: what was timed, and whether all of it was right.
inline bool Note(benchmark::State& state, double seconds, bool right) {
  state.SetIterationTime(seconds);
  if (!right) state.SkipWithError("wrong result");
  return right;
}

template <class Make>
void BenchAdd(benchmark::State& state, int count, Make make) {
  TempFolder folder;
  for (auto _ : state) {
    folder.Clear();
    const auto store = make();
    if (!store->Open(folder.path())) return state.SkipWithError("cannot open");
    const Stopwatch watch;
    bool right = Fill(*store, count);
    const double seconds = watch.seconds();
    right = right && store->Count() == count && store->Close();
    if (!Note(state, seconds, right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Make>
void BenchOpen(benchmark::State& state, int count, Make make) {
  TempFolder folder;
  if (!FillFolder(folder, count, make)) return state.SkipWithError("cannot fill");
  for (auto _ : state) {
    const auto store = make();
    const Stopwatch watch;
    bool right = store->Open(folder.path()) && store->Find(count / 2);
    const double seconds = watch.seconds();
    right = right && store->Count() == count && store->Close();
    if (!Note(state, seconds, right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Make>
void BenchFind(benchmark::State& state, int count, Make make) {
  TempFolder folder;
  const auto store = make();
  if (!FillFolder(folder, count, make) || !store->Open(folder.path()) || !store->Find(0)) {
    return state.SkipWithError("cannot fill");
  }
  const std::vector<int> order = Shuffled(count);
  for (auto _ : state) {
    const Stopwatch watch;
    const bool right =
        std::all_of(order.begin(), order.end(), [&](int number) { return store->Find(number); });
    if (!Note(state, watch.seconds(), right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Make>
void BenchDelete(benchmark::State& state, int count, Make make) {
  TempFolder full, folder;
  if (!FillFolder(full, count, make)) return state.SkipWithError("cannot fill");
  const std::vector<int> order = Shuffled(count);
  for (auto _ : state) {
    folder.CopyFrom(full);
    const auto store = make();
    if (!store->Open(folder.path())) return state.SkipWithError("cannot open");
    const Stopwatch watch;
    bool right =
        std::all_of(order.begin(), order.end(), [&](int number) { return store->Delete(number); });
    right = right && store->Commit();
    const double seconds = watch.seconds();
    right = right && store->Count() == 0 && store->Close();
    if (!Note(state, seconds, right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Make>
void BenchClose(benchmark::State& state, int count, Make make) {
  TempFolder folder;
  if (!FillFolder(folder, count, make)) return state.SkipWithError("cannot fill");
  for (auto _ : state) {
    const auto store = make();
    bool right = store->Open(folder.path()) && store->Count() == count && store->Touch(count / 2);
    const Stopwatch watch;
    right = right && store->Close();
    if (!Note(state, watch.seconds(), right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Make>
void BenchPack(benchmark::State& state, int count, Make make) {
  TempFolder half, folder;
  {
    const auto store = make();
    bool right = FillFolder(half, count, make) && store->Open(half.path());
    for (int number = 0; number < count; number += 2) right = right && store->Delete(number);
    if (!right || !store->Commit() || !store->Close()) return state.SkipWithError("cannot fill");
  }
  for (auto _ : state) {
    folder.CopyFrom(half);
    const auto store = make();
    if (!store->Open(folder.path())) return state.SkipWithError("cannot open");
    const Stopwatch watch;
    bool right = store->Pack();
    const double seconds = watch.seconds();
    right = right && store->Close() && store->Open(folder.path()) && store->Find(1) &&
            store->Count() == count / 2;
    if (!Note(state, seconds, right)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

// Lists the links of each page in random order; `list(store, page)` gives how many, and all of them
// together must be `count`. Items are links.
template <class Make, class List>
void BenchQuery(benchmark::State& state, int count, Make make, List list) {
  TempFolder folder;
  const auto store = make();
  if (!FillFolder(folder, count, make) || !store->Open(folder.path()) || list(*store, 0) < 0) {
    return state.SkipWithError("cannot fill");
  }
  const std::vector<int> pages = Shuffled(PagesOf(count));
  for (auto _ : state) {
    long found = 0;
    const Stopwatch watch;
    for (const int page : pages) found += list(*store, page);
    if (!Note(state, watch.seconds(), found == count)) break;
  }
  state.SetItemsProcessed(state.iterations() * count);
}

// Registers OPERATION/TABLE/N/STORE. Fixed rounds, as setting up costs more than what is timed.
template <class Bench>
void Register(const std::string& table, const char* operation, const char* store, int count,
              Bench bench) {
  const std::string name =
      std::string(operation) + '/' + table + '/' + std::to_string(count) + '/' + store;
  benchmark::RegisterBenchmark(name.c_str(), bench)
      ->UseManualTime()
      ->Iterations(count > 100000 ? 3
                   : count > 1000 ? 5
                                  : 50)
      ->Unit(benchmark::kMillisecond);
}

// Registers all operations that every store has.
template <class Make>
void RegisterStore(const std::string& table, const char* store, int count, Make make) {
  using State = benchmark::State;
  Register(table, "add", store, count, [=](State& s) { BenchAdd(s, count, make); });
  Register(table, "open", store, count, [=](State& s) { BenchOpen(s, count, make); });
  Register(table, "find", store, count, [=](State& s) { BenchFind(s, count, make); });
  Register(table, "delete", store, count, [=](State& s) { BenchDelete(s, count, make); });
  Register(table, "close", store, count, [=](State& s) { BenchClose(s, count, make); });
  Register(table, "pack", store, count, [=](State& s) { BenchPack(s, count, make); });
}

template <class Make>
void RegisterQueries(const std::string& table, const char* store, int count, Make make) {
  Register(table, "query-source", store, count, [=](benchmark::State& state) {
    BenchQuery(state, count, make, [](auto& each, int page) { return each.CountFrom(page); });
  });
  Register(table, "query-target", store, count, [=](benchmark::State& state) {
    BenchQuery(state, count, make, [](auto& each, int page) { return each.CountTo(page); });
  });
}

}  // namespace zvrsit::bench
