// Which names the fragments of links can lead to, page by page.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "links/link_place.h"

namespace zvrsit {

class Document;

// The IDs of pages as 64-bit hashes: eight bytes each, however long the ID is. Two texts are
// assumed never to have the same hash: among a million IDs this happens with a chance of one in 37
// million.
class PageIds {
 public:
  // An ID that stands in one page more than once.
  struct Repeated {
    std::string id;
    std::vector<LinkPlace> places;  // in the order of the page
  };

  // The names of `document`, read in DocumentScope::kReferencesAndIds, are those of page `number`.
  void Note(int number, const Document& document);
  // Page `number` may have any name: nothing is known about its IDs.
  void NoteAny(int number);
  void Forget(int number);

  bool IsKnown(int number) const;
  // Whether page `number`, which is known, has a name of that hash.
  bool Has(int number, std::uint64_t hash) const;
  // Never 0 or 1.
  static std::uint64_t HashOf(std::string_view name);
  // Of page `number`, in the order of the page; null for none.
  const std::vector<Repeated>* FindRepeated(int number) const;

 private:
  struct Page {
    std::size_t begin = 0;  // its hashes, ascending, in hashes_
    std::size_t end = 0;
    bool isKnown = false;
    bool hasAny = false;
  };

  Page& PageOf(int number);
  void CloseUp();
  // `hashes`: those of all IDs of the page, ascending.
  std::vector<Repeated> RepeatedIn(const Document& document, std::span<const std::uint64_t> hashes);
  // The text of an attribute's value; good until the next call.
  std::string_view Decode(std::string_view raw);
  const Page* Find(int number) const;

  std::vector<Page> pages_;  // by number
  std::vector<std::uint64_t> hashes_;
  std::size_t forgotten_ = 0;                                // of them, those of no page any more
  std::unordered_map<int, std::vector<Repeated>> repeated_;  // by page
  std::string scratch_;
};

}  // namespace zvrsit
