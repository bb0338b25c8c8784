#include "tables/pair_table.h"

#include <algorithm>

#include "storage/guarded.h"

namespace zvrsit {

namespace {

// How many neighbouring records can be read in the time of one that lies elsewhere.
constexpr int kNearness = 8;

}  // namespace

int PairTableBase::OpenPairs(const std::string& path, int recordLength, int recordType) {
  return OpenFiles(path, recordLength, recordType, true);
}

EndIndex& PairTableBase::MadeIndex(End which) {
  EndIndex& index = which == End::kFrom ? fromIndex_ : toIndex_;
  if (index.isMade()) return index;
  index.Start(records_->liveCount());
  try {
    records_->FindIf<SiteRelRec>([&index, which](const SiteRelRec& record) {
      index.Append(which == End::kFrom ? record.from : record.to, record.id);
      return false;
    });
  } catch (...) {
    index.Forget();
    throw;
  }
  return index;
}

// An index that cannot be kept in step is dropped, and made again when it is next needed.
void PairTableBase::EnterEnds(const UrlID& from, const UrlID& to, int number) {
  const auto enter = [&] {
    if (fromIndex_.isMade()) fromIndex_.Append(from, number);
    if (toIndex_.isMade()) toIndex_.Append(to, number);
    return 0;
  };
  if (Guarded(enter) < 0) ForgetEnds();
}

void PairTableBase::RemoveEnds(const SiteRelRec& record) {
  if (fromIndex_.isMade()) fromIndex_.Remove(record.from, record.id);
  if (toIndex_.isMade()) toIndex_.Remove(record.to, record.id);
}

void PairTableBase::ForgetEnds() {
  fromIndex_.Forget();
  toIndex_.Forget();
}

bool PairTableBase::ComesFrom(int number, const UrlID& from) const {
  SiteRelRec record;
  return records_->Get(number, &record) == 0 && record.from == from;
}

bool PairTableBase::GoesTo(int number, const UrlID& to) const {
  SiteRelRec record;
  return records_->Get(number, &record) == 0 && record.to == to;
}

// Calls visit(number) for each record that joins the two ends, in any order. When both ends are
// given, the shorter of the two lists is used if it is much shorter; else the list of the source,
// because its records mostly lie side by side. The first questions about one end are answered by
// walks.
template <class Visit>
void PairTableBase::ForEachMatch(const UrlID& from, const UrlID& to, Visit visit) {
  if (from == kAnyUrlID && to == kAnyUrlID) {
    for (int number = NextNumber(0); number >= 0; number = NextNumber(number + 1)) visit(number);
    return;
  }
  const bool anyFrom = from == kAnyUrlID;
  const bool both = !anyFrom && !(to == kAnyUrlID);
  if (!anyFrom && MayWalk(fromIndex_)) {
    walked_ += records_->ForEachFrom(from, [&](int number) {
      if (!both || GoesTo(number, to)) visit(number);
    });
    return;
  }
  if (anyFrom && MayWalk(toIndex_)) {
    walked_ += records_->ForEachTo(to, visit);
    return;
  }
  const bool byTo = anyFrom || (both && CountTo(to) < CountFrom(from) / kNearness);
  const EndIndex& index = MadeIndex(byTo ? End::kTo : End::kFrom);
  for (int number = index.First(byTo ? to : from); number >= 0; number = index.Next(number)) {
    if (!both || (byTo ? ComesFrom(number, from) : GoesTo(number, to))) visit(number);
  }
}

// The lists are ascending, except for numbers that were handed out again after a Pack.
int PairTableBase::Query(const UrlID& from, const UrlID& to, std::vector<int>& numbers) {
  numbers.clear();
  if (!isOpen()) return -1;
  const auto list = [&] {
    ForEachMatch(from, to, [&numbers](int number) { numbers.push_back(number); });
    return 0;
  };
  if (Guarded(list) < 0) return -1;
  if (!std::is_sorted(numbers.begin(), numbers.end())) std::sort(numbers.begin(), numbers.end());
  return static_cast<int>(numbers.size());
}

int PairTableBase::First(const UrlID& from, const UrlID& to) {
  int first = -1;
  if (!isOpen()) return first;
  return Guarded([&] {
    ForEachMatch(from, to, [&first](int number) {
      if (first < 0 || number < first) first = number;
    });
    return first;
  });
}

int PairTableBase::CountFrom(const UrlID& from) {
  return isOpen() ? Guarded([&] { return MadeIndex(End::kFrom).Size(from); }) : -1;
}

int PairTableBase::CountTo(const UrlID& to) {
  return isOpen() ? Guarded([&] { return MadeIndex(End::kTo).Size(to); }) : -1;
}

// While there is no index, by a walk that ends at the first record found.
int PairTableBase::IsTarget(const UrlID& to) {
  if (!isOpen()) return -1;
  if (!MayWalk(toIndex_)) {
    const int count = CountTo(to);
    return std::min(count, 1);
  }
  const bool found = records_->FindIf<SiteRelRec>([this, &to](const SiteRelRec& record) {
    ++walked_;
    return record.to == to;
  });
  return found ? 1 : 0;
}

}  // namespace zvrsit
