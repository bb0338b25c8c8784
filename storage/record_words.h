// What the words of each class of record are called, and what they refer to. For code that
// treats all records alike: a dump, a check. The bytes are those of records.h.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace zvrsit {

enum class WordKind : std::uint8_t {
  kNumber,
  kUnsigned,
  kName,    // a text that every record has
  kText,    // a text, or -1
  kSecret,  // a text that is not shown, or -1
  kCount,   // how many texts the next word's list has
  kList,    // a block with the numbers of texts, or -1
  kEnd,     // a UrlID, two words
};

struct RecordWord {
  const char* name;
  WordKind kind;
  int at = 0;  // in the slot

  bool isText() const {
    return kind == WordKind::kName || kind == WordKind::kText || kind == WordKind::kSecret;
  }
};

// The words of a class (its kRecordType) after the number of the record, in order.
std::span<const RecordWord> WordsOf(int recordType);

}  // namespace zvrsit
