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
  return [&end](const auto& chain) { return chain.end == end; };
}

}  // namespace

void EndIndex::Start() {
  Forget();
  made_ = true;
}

void EndIndex::Forget() {
  chains_.Clear();
  neighbours_.Reset(0);
  made_ = false;
}

void EndIndex::Append(const UrlID& end, int record) {
  neighbours_.Grow(static_cast<std::size_t>(record) + 1);
  Neighbours& own = neighbours_.slot(static_cast<std::size_t>(record));
  const std::uint32_t hash = HashEnd(end);
  Chain* chain = chains_.Find(hash, IsOf(end));
  if (chain == nullptr) {
    chains_.Insert(hash, {0, end, record, record, 1});
    own = {};
    return;
  }
  neighbours_.slot(static_cast<std::size_t>(chain->last)).next = record + 1;
  own = {chain->last + 1, 0};
  chain->last = record;
  ++chain->size;
}

void EndIndex::Remove(const UrlID& end, int record) {
  Chain* chain = chains_.Find(HashEnd(end), IsOf(end));
  if (chain == nullptr) return;
  if (--chain->size == 0) {
    chains_.Erase(chain);
    return;
  }
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
  const Chain* chain = chains_.Find(HashEnd(end), IsOf(end));
  return chain == nullptr ? -1 : chain->first;
}

int EndIndex::Size(const UrlID& end) const {
  const Chain* chain = chains_.Find(HashEnd(end), IsOf(end));
  return chain == nullptr ? 0 : chain->size;
}

}  // namespace zvrsit
