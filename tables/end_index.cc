#include "tables/end_index.h"

#include "util/hash.h"

namespace zvrsit {

namespace {

std::uint32_t HashEnd(const UrlID& end) {
  return static_cast<std::uint32_t>(
      HashWords(static_cast<std::uint32_t>(end.kind), static_cast<std::uint32_t>(end.id)));
}

// Matches the chain of an end.
auto IsOf(const UrlID& end) {
  return [&end](const auto& stray) { return stray.end == end; };
}

}  // namespace

void EndIndex::Start(int records) {
  Forget();
  records_ = static_cast<std::size_t>(records);
  made_ = true;
}

void EndIndex::Forget() {
  for (auto& chains : chains_) chains.Reset(0);
  strays_.Clear();
  neighbours_.Reset(0);
  records_ = 0;
  made_ = false;
}

const EndIndex::Chain* EndIndex::FindStray(const UrlID& end) const {
  const StrayChain* stray = strays_.Find(HashEnd(end), IsOf(end));
  return stray == nullptr ? nullptr : &stray->chain;
}

void EndIndex::Begin(const UrlID& end, int record) {
  MakeNeighbours(record) = {};
  const Chain chain = {record, record, 1};
  const auto kind = static_cast<std::size_t>(end.kind);
  const auto id = static_cast<std::size_t>(end.id);
  if (kind < kKinds && id < kPlacedIds + kPlacedIdsPerRecord * records_) {
    chains_[kind].Grow(id + 1);
    chains_[kind].slot(id) = chain;
  } else {
    strays_.Insert(HashEnd(end), {0, end, chain});
  }
}

void EndIndex::Drop(const UrlID& end, Chain* chain) {
  chain->size = 0;
  if (strays_.empty()) return;
  StrayChain* stray = strays_.Find(HashEnd(end), IsOf(end));
  if (stray != nullptr) strays_.Erase(stray);
}

void EndIndex::Remove(const UrlID& end, int record) {
  Chain* chain = Find(end);
  if (chain == nullptr) return;
  if (--chain->size == 0) return Drop(end, chain);
  const Neighbours own = neighbours_.at(static_cast<std::size_t>(record));
  if (own.previous == 0) {
    chain->first = own.next - 1;
  } else {
    neighbours_.slot(static_cast<std::size_t>(own.previous - 1)).next = own.next;
  }
  if (own.next == 0) {
    chain->last = own.previous - 1;
  } else {
    neighbours_.slot(static_cast<std::size_t>(own.next - 1)).previous = own.previous;
  }
}

int EndIndex::First(const UrlID& end) const {
  const Chain* chain = Find(end);
  return chain == nullptr ? -1 : chain->first;
}

int EndIndex::Size(const UrlID& end) const {
  const Chain* chain = Find(end);
  return chain == nullptr ? 0 : chain->size;
}

}  // namespace zvrsit
