// The least that a store of names or links can be: texts in one arena, found by open hashing,
// fixed records in one array, and one file written in one piece. It checks nothing, deletes
// nothing and cannot be opened again: the yardstick for adding.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/workload.h"

namespace zvrsit::bench {

// Different texts, numbered in the order in which they came.
class Arena {
 public:
  // The number of the text, added when it is new.
  int Intern(std::string_view text);
  const std::vector<char>& bytes() const { return bytes_; }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    int number = -1;  // -1: free
  };

  std::size_t Place(std::string_view text, std::uint64_t hash) const;
  void Grow();

  std::vector<char> bytes_;
  std::vector<Slot> slots_;
  int count_ = 0;
};

class ArenaNames {
 public:
  ArenaNames(const std::vector<std::string>& names, int recordBytes)
      : names_(names), record_(static_cast<std::size_t>(recordBytes), '\0') {}

  bool Open(const std::string& folder);
  bool Add(int number);
  int Count() const { return static_cast<int>(records_.size() / record_.size()); }
  bool Commit() const;
  bool Close() const { return true; }

 private:
  const std::vector<std::string>& names_;
  std::string record_;
  std::string file_;
  Arena arena_;
  std::vector<char> records_;
};

// With the numbers of each page's links chained from both ends.
class ArenaLinks {
 public:
  explicit ArenaLinks(const std::vector<Link>& links) : links_(links) {}

  bool Open(const std::string& folder);
  bool Add(int number);
  int Count() const { return static_cast<int>(records_.size()); }
  bool Commit() const;
  bool Close() const { return true; }

 private:
  struct Record {
    int from, to, type, count, text;
    int nextFrom, nextTo;  // the previous link of the same end, -1 for none
  };

  static int Chain(std::vector<int>& heads, int page, int number);

  const std::vector<Link>& links_;
  std::string file_;
  Arena arena_;
  std::vector<Record> records_;
  std::vector<int> fromHeads_;
  std::vector<int> toHeads_;
};

}  // namespace zvrsit::bench
