#include "tables/pair_table.h"

#include <algorithm>

namespace zvrsit {

int PairTableBase::OpenPairs(const std::string& path, int recordLength, int recordType) {
  return OpenFiles(path, recordLength, recordType, true);
}

EndIndex& PairTableBase::MadeIndex(End which) {
  EndIndex& index = which == End::kFrom ? fromIndex_ : toIndex_;
  if (index.isMade()) return index;
  if (which == End::kFrom) sources_.clear();
  index.Start(records_->liveCount());
  records_->FindIf<SiteRelRec>([&index, which](const SiteRelRec& record) {
    index.Append(which == End::kFrom ? record.from : record.to, record.id);
    return false;
  });
  return index;
}

void PairTableBase::EnterEnds(const UrlID& from, const UrlID& to, int number) {
  if (fromIndex_.isMade()) {
    fromIndex_.Append(from, number);
  } else if (Source* const source = FindSource(from)) {
    source->numbers.push_back(number);
  }
  if (toIndex_.isMade()) toIndex_.Append(to, number);
}

void PairTableBase::RemoveEnds(const SiteRelRec& record) {
  if (fromIndex_.isMade()) fromIndex_.Remove(record.from, record.id);
  if (toIndex_.isMade()) toIndex_.Remove(record.to, record.id);
}

void PairTableBase::ForgetEnds() {
  fromIndex_.Forget();
  toIndex_.Forget();
  sources_.clear();
}

PairTableBase::Source* PairTableBase::FindSource(const UrlID& from) {
  const auto found = std::find_if(sources_.begin(), sources_.end(),
                                  [&from](const Source& source) { return source.end == from; });
  return found == sources_.end() ? nullptr : &*found;
}

// The records of a source, ascending; null where the index is to be asked. Saving a page asks for
// its own and those of its sheets, which takes a walk over the table each where the index would
// take several. After some of them it is made.
const std::vector<int>* PairTableBase::NumbersOf(const UrlID& from) {
  if (fromIndex_.isMade()) return nullptr;
  Source* source = FindSource(from);
  if (source == nullptr) {
    if (sources_.size() == kMostSources) return nullptr;
    source = &sources_.emplace_back(Source{from, {}});
    records_->ForEachWithWords(SiteRelRec::kFromAt, from.kind, from.id,
                               [source](int number) { source->numbers.push_back(number); });
  }
  // Some may be gone, and their numbers used again.
  std::vector<int>& numbers = source->numbers;
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::erase_if(numbers, [this, &from](int number) {
    SiteRelRec record;
    return records_->Get(number, &record) < 0 || !(record.from == from);
  });
  return &numbers;
}

// Calls visit(number) for each record that joins the two ends. With both given the shorter list is
// gone through.
template <class Visit>
void PairTableBase::ForEachMatch(const UrlID& from, const UrlID& to, Visit visit) {
  if (from == kAnyUrlID && to == kAnyUrlID) {
    for (int number = NextNumber(0); number >= 0; number = NextNumber(number + 1)) visit(number);
    return;
  }
  if (to == kAnyUrlID) {
    if (const std::vector<int>* const numbers = NumbersOf(from)) {
      std::for_each(numbers->begin(), numbers->end(), visit);
      return;
    }
  }
  const bool anyFrom = from == kAnyUrlID;
  const bool both = !anyFrom && !(to == kAnyUrlID);
  const bool byTo = anyFrom || (both && CountTo(to) < CountFrom(from));
  const EndIndex& index = MadeIndex(byTo ? End::kTo : End::kFrom);
  for (int number = index.First(byTo ? to : from); number >= 0; number = index.Next(number)) {
    if (both) {
      SiteRelRec record;
      if (records_->Get(number, &record) < 0) continue;
      if (!(byTo ? record.from == from : record.to == to)) continue;
    }
    visit(number);
  }
}

// The lists are in ascending order but for numbers that were handed out again after a Pack.
int PairTableBase::Query(const UrlID& from, const UrlID& to, std::vector<int>& numbers) {
  numbers.clear();
  if (!isOpen()) return -1;
  ForEachMatch(from, to, [&numbers](int number) { numbers.push_back(number); });
  if (!std::is_sorted(numbers.begin(), numbers.end())) std::sort(numbers.begin(), numbers.end());
  return static_cast<int>(numbers.size());
}

int PairTableBase::First(const UrlID& from, const UrlID& to) {
  int first = -1;
  if (!isOpen()) return first;
  ForEachMatch(from, to, [&first](int number) {
    if (first < 0 || number < first) first = number;
  });
  return first;
}

int PairTableBase::CountFrom(const UrlID& from) {
  return isOpen() ? MadeIndex(End::kFrom).Size(from) : -1;
}

int PairTableBase::CountTo(const UrlID& to) {
  return isOpen() ? MadeIndex(End::kTo).Size(to) : -1;
}

// One question may be answered by a walk that ends at the first record found. When walks have cost
// what the index costs, it is made.
int PairTableBase::IsTarget(const UrlID& to) {
  if (!isOpen()) return -1;
  if (toIndex_.isMade() || walked_ > records_->liveCount()) return CountTo(to) > 0 ? 1 : 0;
  const bool found = records_->FindIf<SiteRelRec>([this, &to](const SiteRelRec& record) {
    ++walked_;
    return record.to == to;
  });
  return found ? 1 : 0;
}

}  // namespace zvrsit
