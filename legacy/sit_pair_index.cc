#include "legacy/sit_pair_index.h"

namespace zvrsit {

namespace {

template <class Map, class Key>
std::int32_t HeadIn(const Map& map, const Key& key) {
  const auto found = map.find(key);
  return found == map.end() ? PairIndex::kNone : found->second.head;
}

}  // namespace

void PairIndex::Clear() {
  nodes_.clear();
  all_ = {};
  bySource_.clear();
  byTarget_.clear();
  byBoth_.clear();
}

void PairIndex::LinkAtEnd(Chain chain, Ends& ends, int position) {
  ListNode& added = nodes_[Slot(position)];
  added.previous[chain] = ends.tail;
  added.next[chain] = kNone;
  if (ends.tail == kNone) {
    ends.head = position;
  } else {
    nodes_[Slot(ends.tail)].next[chain] = position;
  }
  ends.tail = position;
}

void PairIndex::Unlink(Chain chain, Ends& ends, int position) {
  // The node keeps its own links, so that a cursor on it still finds its successor.
  const int next = nodes_[Slot(position)].next[chain];
  const int previous = nodes_[Slot(position)].previous[chain];
  (previous == kNone ? ends.head : nodes_[Slot(previous)].next[chain]) = next;
  (next == kNone ? ends.tail : nodes_[Slot(next)].previous[chain]) = previous;
}

void PairIndex::Append(std::int32_t id, const UrlID& from, const UrlID& to) {
  const int position = static_cast<int>(nodes_.size());
  nodes_.push_back({{id, from, to}, {}, {}});
  LinkAtEnd(kAll, all_, position);
  LinkAtEnd(kFrom, bySource_[from], position);
  LinkAtEnd(kTo, byTarget_[to], position);
  LinkAtEnd(kBoth, byBoth_[{from, to}], position);
}

int PairIndex::Remove(std::int32_t id, const UrlID& from, const UrlID& to) {
  int position = HeadOf(kBoth, from, to);
  while (position != kNone && At(position).id != id) {
    position = nodes_[Slot(position)].next[kBoth];
  }
  if (position == kNone) return kNone;
  Unlink(kAll, all_, position);
  Unlink(kFrom, bySource_[from], position);
  Unlink(kTo, byTarget_[to], position);
  Unlink(kBoth, byBoth_[{from, to}], position);
  return position;
}

PairIndex::Chain PairIndex::ChainOf(const UrlID& from, const UrlID& to) {
  if (from == kAnyUrlID) return to == kAnyUrlID ? kAll : kTo;
  return to == kAnyUrlID ? kFrom : kBoth;
}

int PairIndex::HeadOf(Chain chain, const UrlID& from, const UrlID& to) const {
  switch (chain) {
    case kFrom:
      return HeadIn(bySource_, from);
    case kTo:
      return HeadIn(byTarget_, to);
    case kBoth:
      return HeadIn(byBoth_, Pair{from, to});
    default:
      return all_.head;
  }
}

int PairIndex::FirstMatch(const UrlID& from, const UrlID& to, int position) const {
  const Chain chain = ChainOf(from, to);
  if (chain == kAll) return position;
  int match = HeadOf(chain, from, to);
  while (match != kNone && match < position) match = nodes_[Slot(match)].next[chain];
  return match;
}

int PairIndex::NextMatch(const UrlID& from, const UrlID& to, int match) const {
  return nodes_[Slot(match)].next[ChainOf(from, to)];
}

}  // namespace zvrsit
