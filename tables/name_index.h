// NameIndex: from a text to the number of the record that has it. It keeps its own copies of the
// texts, so that it still answers when the files are closed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "storage/probe_table.h"

namespace zvrsit {

class NameIndex {
 public:
  // The number of a text, compared byte by byte, or -1.
  int Find(std::string_view text) const;
  // Sets the number of a text, also of one that is there.
  void Put(std::string_view text, int number);
  // Forgets a text; one that is not there is ignored.
  void Remove(std::string_view text);
  void Clear();

 private:
  struct Name {
    std::uint32_t hash;
    std::int32_t number;
    std::size_t offset;  // of the text in `texts_`
    std::size_t length;
  };

  static constexpr std::size_t kKeptBytes = 4096;

  auto HasText(std::string_view text) const;
  void DropRemovedTexts();

  ProbeTable<Name> names_;
  std::string texts_;
  std::size_t removed_ = 0;  // bytes of `texts_` that no name refers to
};

}  // namespace zvrsit
