// TextMap: a map from texts to values that needs no memory of its own for each text. The texts lie
// one after the other in a few large pieces of memory, and a hash table says where.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "storage/probe_table.h"

namespace zvrsit {

// Where the texts of a map lie: one after the other in memory of the map's own.
class OwnTexts {
 public:
  std::string_view view() const { return bytes_; }
  // Adds a text and gives where in `view()` it lies from now on.
  std::size_t Place(std::string_view text) {
    bytes_.append(text);
    return bytes_.size() - text.size();
  }
  void Clear() { bytes_.clear(); }

 private:
  std::string bytes_;
};

// Texts are compared byte by byte. The caller gives the hash of a text, and always the same hash
// for the same text. Value is a small plain type; Texts is a class with the functions of OwnTexts.
// A call that adds a text may throw when there is no memory; the map is then as it was.
template <class Value, class Texts = OwnTexts>
class TextMap {
 public:
  TextMap() = default;
  explicit TextMap(Texts texts) : texts_(std::move(texts)) {}

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  Texts& texts() { return texts_; }
  const Texts& texts() const { return texts_; }

  // The value of a text, good until the next change of the map; null for a text that is not there.
  const Value* Find(std::string_view text, std::uint32_t hash) const {
    const Entry* const entry = entries_.Find(hash, IsOf(text));
    return entry == nullptr ? nullptr : &entry->value;
  }
  Value* Find(std::string_view text, std::uint32_t hash) {
    return const_cast<Value*>(std::as_const(*this).Find(text, hash));
  }
  // Where Find will look first, for PrefetchMemory.
  const void* Home(std::uint32_t hash) const { return entries_.Home(hash); }

  // Adds a text that Find did not find. One that would lie after 4 GB of others is left out.
  void Insert(std::string_view text, std::uint32_t hash, const Value& value) {
    const std::size_t offset = texts_.Place(text);
    if (offset + text.size() > std::numeric_limits<std::uint32_t>::max()) return;
    const auto length = static_cast<std::uint32_t>(text.size());
    entries_.Insert(hash, {0, static_cast<std::uint32_t>(offset), length, value});
  }
  // Takes a text out; whether it was there. Its bytes stay where they are.
  bool Remove(std::string_view text, std::uint32_t hash) {
    Entry* const entry = entries_.Find(hash, IsOf(text));
    if (entry != nullptr) entries_.Erase(entry);
    return entry != nullptr;
  }
  void Clear() {
    entries_.Clear();
    texts_.Clear();
  }
  // Makes room for `count` texts at once, but not for their bytes.
  void Reserve(std::size_t count) { entries_.Reserve(count); }

  // Gives a copy of the texts in the map, and of no others. From now on the map looks for each text
  // at its place in that copy. So the caller must make `texts()` give the copy.
  std::string Move() {
    const std::string_view view = texts_.view();
    std::size_t length = 0;
    entries_.ForEach([&length](const Entry& entry) { length += entry.length; });
    std::string copy;
    copy.reserve(length);
    entries_.ForEach([&](Entry& entry) {
      const std::size_t offset = copy.size();
      if (entry.offset <= view.size()) copy.append(view.substr(entry.offset, entry.length));
      entry.offset = static_cast<std::uint32_t>(offset);
    });
    return copy;
  }

 private:
  struct Entry {
    std::uint32_t hash;
    std::uint32_t offset;  // in what texts() gives
    std::uint32_t length;
    Value value;
  };

  auto IsOf(std::string_view text) const {
    return [view = texts_.view(), text](const Entry& entry) {
      return entry.length == text.size() && entry.offset <= view.size() &&
             view.substr(entry.offset, entry.length) == text;
    };
  }

  ProbeTable<Entry> entries_;
  Texts texts_;
};

}  // namespace zvrsit
