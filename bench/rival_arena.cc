#include "bench/rival_arena.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

namespace zvrsit::bench {
namespace {

std::uint64_t Hash(std::string_view text) {
  return std::hash<std::string_view>{}(text);
}

// Both arrays, one after the other, as one file.
bool WriteFile(const std::string& path, const std::vector<char>& texts, const void* records,
               std::size_t length) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                             std::fclose);
  return file != nullptr &&
         std::fwrite(texts.data(), 1, texts.size(), file.get()) == texts.size() &&
         std::fwrite(records, 1, length, file.get()) == length;
}

}  // namespace

std::size_t Arena::Place(std::string_view text, std::uint64_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    const Slot& slot = slots_[at];
    if (slot.number < 0) return at;
    if (slot.hash == hash && std::string_view(bytes_.data() + slot.offset, slot.length) == text) {
      return at;
    }
  }
}

void Arena::Grow() {
  std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
  old.swap(slots_);
  const std::size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.number < 0) continue;
    std::size_t at = slot.hash & mask;
    while (slots_[at].number >= 0) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

int Arena::Intern(std::string_view text) {
  if (static_cast<std::size_t>(count_) * 2 >= slots_.size()) Grow();
  const std::uint64_t hash = Hash(text);
  Slot& slot = slots_[Place(text, hash)];
  if (slot.number < 0) {
    slot = {hash, static_cast<std::uint32_t>(bytes_.size()),
            static_cast<std::uint32_t>(text.size()), count_++};
    bytes_.insert(bytes_.end(), text.begin(), text.end());
  }
  return slot.number;
}

bool ArenaNames::Open(const std::string& folder) {
  file_ = folder + "/arena";
  return true;
}

bool ArenaNames::Add(int number) {
  if (arena_.Intern(names_[static_cast<std::size_t>(number)]) != number) return false;
  records_.insert(records_.end(), record_.begin(), record_.end());
  return true;
}

bool ArenaNames::Commit() const {
  return WriteFile(file_, arena_.bytes(), records_.data(), records_.size());
}

bool ArenaLinks::Open(const std::string& folder) {
  file_ = folder + "/arena";
  return true;
}

int ArenaLinks::Chain(std::vector<int>& heads, int page, int number) {
  const auto at = static_cast<std::size_t>(page);
  if (at >= heads.size()) heads.resize(at + 1 + heads.size(), -1);
  return std::exchange(heads[at], number);
}

bool ArenaLinks::Add(int number) {
  const Link& link = links_[static_cast<std::size_t>(number)];
  records_.push_back({link.from, link.to, 1, 1, arena_.Intern(link.text),
                      Chain(fromHeads_, link.from, number), Chain(toHeads_, link.to, number)});
  return static_cast<int>(records_.size()) == number + 1;
}

bool ArenaLinks::Commit() const {
  return WriteFile(file_, arena_.bytes(), records_.data(), records_.size() * sizeof(Record));
}

}  // namespace zvrsit::bench
