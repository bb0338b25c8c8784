#include "tables/site_link_db.h"

#include <algorithm>
#include <limits>

#include "storage/batch.h"
#include "storage/guarded.h"
#include "util/hash.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

std::uint64_t JoinWords(std::int32_t high, std::int32_t low) {
  return std::uint64_t{static_cast<std::uint32_t>(high)} << 32 | static_cast<std::uint32_t>(low);
}

// Of everything that two links of one source must share to be equal.
std::uint32_t HashLink(const SiteLinkRec& link) {
  const std::uint64_t texts = JoinWords(link.text, link.alternative);
  return static_cast<std::uint32_t>(HashWords(HashWords(JoinWords(link.to.kind, link.to.id), texts),
                                              static_cast<std::uint32_t>(link.type)));
}

// Deleting the occurrences of a link one by one leaves one.
void EndOccurrences(char* slot) {
  char* const count = slot + SiteLinkRec::kCountAt;
  StoreLE32(count, std::min(LoadLE32(count), 1));
}

}  // namespace

int SiteLinkDB::Add(std::string_view text, const UrlID& from, const UrlID& to, int type) {
  return Add(text, from, to, {}, type);
}

int SiteLinkDB::Add(std::string_view text, const UrlID& from, const UrlID& to,
                    std::string_view alternative, int type, int offset) {
  if (text.empty() || !isOpen()) return -1;
  FoundString found = strings_->Search(text);
  return Add(text, found, from, to, alternative, type, offset);
}

int SiteLinkDB::Add(std::string_view text, FoundString& found, const UrlID& from, const UrlID& to,
                    std::string_view alternative, int type, int offset) {
  if (text.empty() || !isOpen()) return -1;
  if (Guarded([&] { return KnowLinksFrom(from); }) < 0) return -1;
  SiteLinkRec link;
  link.from = from;
  link.to = to;
  link.type = type;
  link.offset = offset;
  link.text = found.id;
  if (!alternative.empty()) {
    const FoundString known = strings_->Search(alternative);
    if (known.hasFailed()) return -1;
    link.alternative = known.id;
  }
  // Only a link whose texts are both there can be equal to another.
  if (link.text >= 0 && (alternative.empty() || link.alternative >= 0)) {
    const int equal = FindEqual(link);
    if (equal >= 0) return Raise(equal);
  }
  link.text = found.id = strings_->AddString(text, found);
  return link.text < 0 ? -1 : AddNew(link, alternative);
}

void SiteLinkDB::PrepareFor(const UrlID& from, std::size_t count) {
  if (!isOpen() || count == 0) return;
  Guarded([&] {
    if (KnowLinksFrom(from) < 0) return -1;  // Add will say so
    known_.Reserve(known_.size() + count);
    return 0;
  });
}

// Adds a link whose text has its reference already.
int SiteLinkDB::AddNew(SiteLinkRec& link, std::string_view alternative) {
  if (!alternative.empty()) {
    link.alternative = strings_->AddString(alternative);
    if (link.alternative < 0) return -1;
  }
  const int number = AddRecord(link);
  if (number < 0) return -1;
  const auto learn = [&] {
    Learn(link);
    return 0;
  };
  sourceKnown_ = Guarded(learn) == 0;
  return number;
}

// The links of one page are added one after another. So equal links are looked for only among the
// links of one source at a time.
int SiteLinkDB::LearnLinksFrom(const UrlID& source) {
  known_.Clear();
  sourceKnown_ = false;
  if (Query(source, kAnyUrlID, numbers_) < 0) return -1;
  for (const int number : numbers_) {
    SiteLinkRec link;
    // A query for the any-identifier gives links of every source.
    if (Get(number, link) == 0 && link.from == source) Learn(link);
  }
  source_ = source;
  sourceKnown_ = true;
  return 0;
}

void SiteLinkDB::Learn(const SiteLinkRec& link) {
  known_.Insert(HashLink(link), {0, link.id});
}

// Whether a link of the same source goes to the same place, with the same texts and type.
bool SiteLinkDB::IsEqual(int number, const SiteLinkRec& link) const {
  const char* const slot = records_->Slot(number);
  return slot != nullptr && LoadLE32(slot + SiteLinkRec::kTextAt) == link.text &&
         LoadLE32(slot + SiteLinkRec::kToAt + 4) == link.to.id &&
         LoadLE32(slot + SiteLinkRec::kToAt) == link.to.kind &&
         LoadLE32(slot + SiteLinkRec::kTypeAt) == link.type &&
         LoadLE32(slot + SiteLinkRec::kAlternativeAt) == link.alternative;
}

// The number of the equal link of the current source, or -1.
int SiteLinkDB::FindEqual(const SiteLinkRec& link) const {
  const Known* known = known_.Find(
      HashLink(link), [this, &link](const Known& other) { return IsEqual(other.number, link); });
  return known == nullptr ? -1 : known->number;
}

// One occurrence more; the number, or -1.
int SiteLinkDB::Raise(int number) {
  char* const slot = records_->ChangeSlot(number);
  if (slot == nullptr) return -1;
  const std::int32_t count = LoadLE32(slot + SiteLinkRec::kCountAt);
  if (count < std::numeric_limits<std::int32_t>::max()) {
    StoreLE32(slot + SiteLinkRec::kCountAt, count + 1);
  }
  return number;
}

// Its texts may be others now.
int SiteLinkDB::Update(const SiteLinkRec& link) {
  sourceKnown_ = false;
  return PairTable::Update(link);
}

int SiteLinkDB::Delete(int number) {
  SiteLinkRec link;
  if (number < 0 || !isOpen() || records_->Get(number, &link) < 0) return -1;
  if (link.count < 2) return Remove(link);
  --link.count;
  return PairTable::Update(link);
}

int SiteLinkDB::DeleteAll(int number) {
  SiteLinkRec link;
  if (number < 0 || !isOpen() || records_->Get(number, &link) < 0) return -1;
  return Remove(link);
}

int SiteLinkDB::Remove(const SiteLinkRec& link) {
  if (char* const slot = records_->ChangeSlot(link.id)) EndOccurrences(slot);
  if (records_->Delete(link.id) < 0) return -1;
  Forget(link);
  const int text = ReleaseText(link.text);
  const int alternative = ReleaseText(link.alternative);
  return text < 0 || alternative < 0 ? -1 : 0;
}

void SiteLinkDB::Forget(const SiteLinkRec& link) {
  RemoveEnds(link);
  if (!sourceKnown_ || !(link.from == source_)) return;
  Known* known = known_.Find(
      HashLink(link), [&link](const Known& candidate) { return candidate.number == link.id; });
  if (known != nullptr) known_.Erase(known);
}

int SiteLinkDB::Clear() {
  if (!isOpen()) return -1;
  ForgetEnds();
  known_.Clear();
  sourceKnown_ = false;
  // A damaged text stays.
  auto texts = MakeBatch<int>(
      [this](int text) { static_cast<void>(strings_->ReleaseStringUnindexed(text)); });
  const auto release = [this, &texts](std::int32_t text) {
    if (text >= 0) texts.Add(strings_->EntryOf(text), text);
  };
  records_->DeleteAll([&release](char* slot) {
    EndOccurrences(slot);
    release(LoadLE32(slot + SiteLinkRec::kTextAt));
    release(LoadLE32(slot + SiteLinkRec::kAlternativeAt));
  });
  texts.Finish();
  return 0;
}

}  // namespace zvrsit
