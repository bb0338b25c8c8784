// Which names the fragments of links can lead to, page by page.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

class Document;

// The IDs of pages, as 64-bit hashes: eight bytes each, however long they are. That two texts share
// a hash is taken for impossible: among a million IDs it has a chance of one in 37 million.
class PageIds {
 public:
  // The names of `document`, read in DocumentScope::kReferencesAndIds, are those of page `number`.
  void Note(int number, const Document& document);
  // Page `number` may have any name.
  void NoteAny(int number);
  void Forget(int number);
  void ForgetAll();

  bool IsKnown(int number) const;
  // Whether page `number`, which is known, has that name.
  bool Has(int number, std::string_view name) const;
  // Whether page `number` may have an ID that stands in it twice.
  bool MayRepeat(int number) const;

 private:
  struct Page {
    std::size_t begin = 0;  // its hashes, ascending, in hashes_
    std::size_t end = 0;
    bool isKnown = false;
    bool hasAny = false;
    bool repeats = false;
  };

  Page& PageOf(int number);
  const Page* Find(int number) const;

  std::vector<Page> pages_;  // by number
  std::vector<std::uint64_t> hashes_;
  std::string scratch_;
};

}  // namespace zvrsit
