// What all benchmarks of this folder work on: names, links and pages from fixed seeds, and a
// temporary folder to work in.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace zvrsit::bench {

// A folder among the temporary files, gone with this object.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // Removes all that is in it.
  void Clear();
  // Puts a copy of each file of `other` into it, in place of what it held.
  void CopyFrom(const TempFolder& other);
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

struct Link {
  int from = 0;
  int to = 0;
  std::string text;
};

// `count` different paths of a site, in the order of a walk.
std::vector<std::string> MakePaths(int count);
// `count` different links of pages with 50 links each, in the order of a rebuild.
std::vector<Link> MakeLinks(int count);
// How many pages the links of MakeLinks(count) come from and go to.
int PagesOf(int count);
// The numbers 0 .. count-1 in an order that only the seed knows.
std::vector<int> Shuffled(int count);
// A page of about `bytes` bytes: text, tables, links, comments, character references.
std::string MakePage(int bytes);

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace zvrsit::bench
