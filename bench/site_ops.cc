// What single operations on an open site cost, without the start of a program around them.
//
//   site_ops DB SITE open [RUNS]           opening and closing
//   site_ops DB SITE save PAGE [RUNS]      opening, reading PAGE anew, closing; each time after
//                                          opening and closing alone, which is told as "idle"
//   site_ops DB SITE links-to PAGE [RUNS]  opening; the links to PAGE; closing
//
// Prints the medians in seconds, and the number of links found, as one line of JSON. DB is a
// database made by zvrsit; PAGE is a native path. Every run must find the same.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "dom/dom.h"
#include "manager/site_mgr.h"
#include "platform/native_path.h"

namespace {

using Clock = std::chrono::steady_clock;

// Before each run: a database is hardly ever opened a moment after it was written.
constexpr std::chrono::milliseconds kRest(100);

double Since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Job {
  std::string database;  // `\` paths
  std::string site;
  std::string operation;
  std::string page;
  int runs = 5;
};

struct Run {
  double open = 0;
  double work = 0;
  double again = 0;  // the same work a second time, when what is made on demand has been made
  double close = 0;
  long found = 0;
};

long LinksTo(zvrsit::SiteMgr& manager, const std::string& page) {
  const int number = manager.FindPath(page);
  if (number < 0) return -1;
  const std::unique_ptr<std::vector<int>> links(
      manager.GetBackLinks(zvrsit::UrlID(zvrsit::kKindPath, number)));
  return links == nullptr ? -1 : static_cast<long>(links->size());
}

long Work(zvrsit::SiteMgr& manager, const Job& job) {
  if (job.operation == "save") return manager.Save(job.page, nullptr);
  if (job.operation == "links-to") return LinksTo(manager, job.page);
  return 0;
}

bool RunOnce(const Job& job, Run& run) {
  std::this_thread::sleep_for(kRest);
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(job.database.c_str(), "sites.R", "servers.R", 0);
  auto start = Clock::now();
  if (manager.SiteOpen(job.site, 0) != 0) return false;
  run.open = Since(start);
  start = Clock::now();
  run.found = Work(manager, job);
  run.work = Since(start);
  if (job.operation == "links-to") {
    start = Clock::now();
    if (Work(manager, job) != run.found) return false;
    run.again = Since(start);
  }
  start = Clock::now();
  const bool closed = manager.SiteClose() == 0;
  run.close = Since(start);
  return closed && run.found >= 0;
}

bool Absolute(const std::string& native, std::string& path) {
  return zvrsit::platform::FromNativePath(
      std::filesystem::absolute(native).lexically_normal().string(), path);
}

bool Parse(int argc, char** argv, Job& job) {
  if (argc < 4) return false;
  if (!Absolute(argv[1], job.database)) return false;
  if (job.database.back() != '\\') job.database += '\\';
  job.site = argv[2];
  job.operation = argv[3];
  const bool hasPage = job.operation == "save" || job.operation == "links-to";
  if (!hasPage && job.operation != "open") return false;
  if (hasPage && (argc < 5 || !Absolute(argv[4], job.page))) return false;
  const int next = hasPage ? 5 : 4;
  if (argc > next) job.runs = std::max(1, std::atoi(argv[next]));
  return argc <= next + 1;
}

}  // namespace

int main(int argc, char** argv) {
  Job job;
  if (!Parse(argc, argv, job)) {
    std::fprintf(stderr, "usage: site_ops DB SITE open|save PAGE|links-to PAGE [RUNS]\n");
    return 2;
  }
  std::vector<double> open, work, again, close, total, idle;
  long found = 0;
  Job opening = job;
  opening.operation = "open";
  for (int count = 0; count < job.runs; ++count) {
    Run run, alone;
    const bool isOpened = job.operation != "save" || RunOnce(opening, alone);
    if (!isOpened || !RunOnce(job, run) || (count > 0 && run.found != found)) {
      std::fprintf(stderr, "site_ops: %s failed or found something else\n", argv[3]);
      return 1;
    }
    found = run.found;
    idle.push_back(alone.open + alone.close);
    open.push_back(run.open);
    work.push_back(run.work);
    again.push_back(run.again);
    close.push_back(run.close);
    total.push_back(run.open + run.work + run.close);
  }
  std::printf(
      "{\"open\": %.6f, \"work\": %.6f, \"again\": %.6f, \"close\": %.6f, \"total\": %.6f, "
      "\"idle\": %.6f, \"found\": %ld}\n",
      Median(open), Median(work), Median(again), Median(close), Median(total), Median(idle), found);
  return 0;
}
