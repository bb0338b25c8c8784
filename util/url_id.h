// The identifier of an entry of a site.
#pragma once

#include <cstdint>

namespace zvrsit {

// Kinds of a UrlID: the table that its number belongs to.
inline constexpr std::int32_t kKindFolder = 0;
inline constexpr std::int32_t kKindPath = 2;  // a local file
inline constexpr std::int32_t kKindUrl = 3;   // an external URL

// Two words, copied by value. (1, -1) is the empty identifier.
struct UrlID {
  std::int32_t kind = 1;
  std::int32_t id = -1;  // record number in the table of `kind`; -1 for none

  UrlID() = default;
  UrlID(int theKind, int theId) : kind(theKind), id(theId) {}

  friend bool operator==(const UrlID&, const UrlID&) = default;

  // Kept for programs that call it; it prints nothing.
  void print() const {}
};

// The any-identifier: a wildcard in relation and link queries.
inline const UrlID kAnyUrlID{-1, -1};

}  // namespace zvrsit
