#include "legacy/sit_pair_db.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "legacy/word_record.h"

namespace zvrsit {

namespace {

constexpr std::int64_t kPairHeaderSize = 8;
constexpr std::int64_t kRecordSize = sizeof(SitPairRec);
static_assert(kRecordSize == 36);
constexpr std::int64_t kLargestPairFile = 0x7FFFFFFF;
constexpr std::int32_t kMostLostSlots = 1000;

// Meant to be one for all stores: an enumeration of one store restarts with a query of another.
PairQuery lastQuery;

std::int64_t SlotOffset(std::int32_t id) {
  return kPairHeaderSize + kRecordSize * id;
}

// The whole slots of a file of that size.
std::int32_t SlotsIn(std::int64_t size) {
  const std::int64_t bytes = std::clamp<std::int64_t>(size, kPairHeaderSize, kLargestPairFile);
  return static_cast<std::int32_t>((bytes - kPairHeaderSize) / kRecordSize);
}

}  // namespace

void ForgetLastPairQuery() {
  lastQuery = {};
}

SitPairDB::SitPairDB(const std::string& path, int kind, SitHist* history) : history_(history) {
  Open(path, kind);
}

int SitPairDB::Open(const std::string& path, int kind) {
  Close();
  if (kind == kLinkFile) storeTag_ = kTagLink;
  if (kind == kRelationFile) storeTag_ = kTagRel;
  path_ = path;
  nextId_ = liveCount_ = 0;
  hidden_ = slots_ = 0;
  whole_ = false;
  inSlots_ = true;
  const bool opened = file_.Open(path);
  if (!path.empty()) strings_.Open(path.substr(0, path.size() - 1) + "S");
  return opened && Load() ? 0 : -1;
}

bool SitPairDB::Load() {
  std::int32_t slots = 0;
  std::int32_t live = 0;
  whole_ = file_.Size() == 0;
  slots_ = hidden_ = SlotsInFile();
  if (!file_.ReadWord(0, slots)) return false;
  nextId_ = slots;
  if (!file_.ReadWord(4, live)) return false;
  liveCount_ = live;
  if (slots < 0 || live < 0) return false;
  hidden_ = 0;
  SitFileScan scan(file_, kPairHeaderSize);
  WordBytes<SitPairRec> bytes;
  std::int32_t loaded = 0;
  for (; scan.Take(bytes.data(), bytes.size()); ++loaded) {
    const auto record = LoadWords<SitPairRec>(bytes.data());
    // Deleted records are indexed too, under id -1; Find meets them and callers count on it.
    index_.Append(record.id, record.from, record.to);
    inSlots_ = inSlots_ && (record.id == -1 || record.id == loaded);
  }
  // A crash may have come between a record and its count.
  whole_ = loaded == SlotsInFile() && (slots == loaded || slots == loaded - 1);
  cursor_ = index_.Head();
  return true;
}

int SitPairDB::Close() {
  const bool stringsClosed = strings_.Close() == 0;
  const bool closed = file_.Close();
  index_.Clear();
  cursor_ = lastMatch_ = PairIndex::kNone;
  return stringsClosed && closed ? 0 : -1;
}

std::unique_ptr<SitPairRec> SitPairDB::Find(const UrlID& from, const UrlID& to) {
  const PairQuery query{from, to};
  if (query != lastQuery) {
    lastQuery = query;
    cursor_ = index_.Head();
  }
  if (cursor_ == PairIndex::kNone) {
    cursor_ = index_.Head();
    return nullptr;
  }
  const int match = MatchFromCursor(query);
  lastMatch_ = match;
  lastMatchQuery_ = query;
  if (match == PairIndex::kNone) {
    cursor_ = index_.Head();
    return nullptr;
  }
  cursor_ = index_.Next(match);
  return Read(index_.At(match).id);
}

int SitPairDB::MatchFromCursor(const PairQuery& query) const {
  const bool resumed = lastMatch_ != PairIndex::kNone && lastMatchQuery_ == query &&
                       index_.Next(lastMatch_) == cursor_;
  return resumed ? index_.NextMatch(query.from, query.to, lastMatch_)
                 : index_.FirstMatch(query.from, query.to, cursor_);
}

int SitPairDB::Add(const UrlID& from, const UrlID& to) {
  if (from == kAnyUrlID || to == kAnyUrlID) return -1;
  const int cursor = cursor_;
  // With no cursor, a search for the pair of the last query ends at once, and the pair gets a
  // second record. Meant.
  cursor_ = PairIndex::kNone;
  const std::unique_ptr<SitPairRec> found = Find(from, to);
  cursor_ = cursor;
  if (found != nullptr) {
    if (found->refCount < std::numeric_limits<std::int32_t>::max()) ++found->refCount;
    WriteSlot(*found, found->id);
    RecordChange(kOpAdd, *found);
    return found->id;
  }
  SitPairRec added;
  added.id = nextId_;
  added.from = from;
  added.to = to;
  ChangeLiveCount(1);
  if (!MayPlace(added.id)) {
    file_.RefuseWrite(EFBIG);
  } else if (WriteSlot(added, added.id)) {
    slots_ = std::max(slots_, added.id + 1);
  }
  index_.Append(added.id, from, to);
  if (nextId_ < std::numeric_limits<std::int32_t>::max()) ++nextId_;
  file_.WriteWord(0, nextId_);
  RecordChange(kOpAdd, added);
  return added.id;
}

// A few slots may be missing where writes have failed or the file was cut.
bool SitPairDB::MayPlace(std::int32_t id) const {
  return id >= hidden_ && id - slots_ <= kMostLostSlots;
}

void SitPairDB::ChangeLiveCount(int by) {
  liveCount_ += by;
  // In memory the count of a file that told too few goes on below 0. Meant.
  file_.WriteWord(4, static_cast<std::int32_t>(std::clamp<std::int64_t>(
                         liveCount_, 0, std::numeric_limits<std::int32_t>::max())));
}

int SitPairDB::Delete(SitPairRec& record, bool force) {
  if (record.refCount < 1) return 0;
  record.refCount = force ? 0 : record.refCount - 1;
  // The lowered count is meant to stay in memory: the file keeps the old one.
  if (record.refCount > 0) return record.refCount;
  ChangeLiveCount(-1);
  RemoveFromIndex(record);
  const std::int32_t slot = record.id;
  if (const auto old = Read(slot)) RecordChange(kOpDelete, *old);
  record.id = -1;
  return WriteSlot(record, slot) ? 0 : -1;
}

void SitPairDB::RemoveFromIndex(const SitPairRec& record) {
  const int removed = index_.Remove(record.id, record.from, record.to);
  if (removed == PairIndex::kNone) return;
  if (cursor_ == removed) cursor_ = index_.Next(removed);
  if (lastMatch_ == removed) lastMatch_ = PairIndex::kNone;
}

std::unique_ptr<SitPairRec> SitPairDB::Read(int id) {
  WordBytes<SitPairRec> bytes;
  if (id < 0 || !file_.ReadAt(SlotOffset(id), bytes.data(), bytes.size())) return nullptr;
  return std::make_unique<SitPairRec>(LoadWords<SitPairRec>(bytes.data()));
}

bool SitPairDB::WriteSlot(const SitPairRec& record, std::int32_t id) {
  if (id < 0) return false;
  const WordBytes<SitPairRec> bytes = StoreWords(record);
  return file_.WriteAt(SlotOffset(id), bytes.data(), bytes.size());
}

int SitPairDB::Write(const SitPairRec& record) {
  if (const auto old = Read(record.id)) RecordChange(kOpRewrite, *old);
  return WriteSlot(record, record.id) ? static_cast<int>(kRecordSize) : -1;
}

void SitPairDB::RecordChange(std::uint32_t operation, const SitPairRec& record) {
  if (history_ != nullptr) history_->Record(storeTag_ | operation, 0, WordsAsText(record));
}

int SitPairDB::Count() {
  std::int32_t slots = -1;
  return file_.ReadWord(0, slots) ? slots : -1;
}

std::int32_t SitPairDB::SlotsInFile() {
  return SlotsIn(file_.Size());
}

int SitPairDB::Slots() {
  return std::clamp(Count(), 0, SlotsInFile());
}

std::optional<std::string> SitPairDB::GetString(int id) {
  return strings_.Get(id);
}

int SitPairDB::AddString(const char* text, int wanted) {
  const int id = strings_.Add(text, wanted);
  if (id >= 0 && history_ != nullptr) history_->Record(storeTag_ | kOpStringAdd, id, {});
  return id;
}

int SitPairDB::DeleteString(int id) {
  std::optional<std::string> old = strings_.Get(id);
  if (old && history_ != nullptr) {
    history_->Record(storeTag_ | kOpStringDelete, id, std::move(*old));
  }
  return strings_.Delete(id);
}

bool SitPairDB::CopyLiveRecords(SitPackWriter& copy, std::vector<std::int32_t>& numbers,
                                std::int32_t& kept) {
  const std::int64_t size = file_.Size();
  if (size < 0) return false;
  SitFileScan scan(file_, kPairHeaderSize);
  WordBytes<SitPairRec> bytes;
  for (std::int32_t slots = SlotsIn(size); slots > 0; --slots) {
    if (!scan.Take(bytes.data(), bytes.size())) return false;
    const bool live = LoadLE32(bytes.data()) != -1;
    numbers.push_back(live ? kept : -1);
    if (!live) continue;
    StoreLE32(bytes.data(), kept++);
    copy.Append(bytes.data(), bytes.size());
  }
  return true;
}

int SitPairDB::Pack(bool reopen) {
  if (!file_.IsOpen() || !whole_) return -1;
  SitPackWriter copy(path_, kPairHeaderSize);
  std::vector<std::int32_t> numbers;
  std::int32_t kept = 0;
  if (!copy.IsOpen() || !CopyLiveRecords(copy, numbers, kept)) return -1;
  unsigned char header[kPairHeaderSize];
  StoreLE32(header, kept);
  StoreLE32(header + 4, kept);
  if (!copy.Finish(header, sizeof header)) return -1;
  // Records name strings by ids, which stay: either file does with the other as it was.
  const bool stringsPacked = strings_.Pack(false) == 0;
  Close();
  const bool packed = stringsPacked && copy.Replace();
  if (packed && history_ != nullptr) history_->RenumberPairs(storeTag_, numbers);
  if (reopen) Open(std::string(path_), -1);
  return packed ? kept : -1;
}

int SitPairDB::Remove() {
  const std::string path = path_;
  const std::string companion = strings_.path();
  strings_.Discard();
  Close();
  const bool deleted = platform::Unlink(path) >= 0;
  const bool companionDeleted = platform::Unlink(companion) >= 0;
  if (!deleted || !companionDeleted) return -1;
  Open(path, -1);
  return 0;
}

std::vector<int> SitPairDB::Matching(const UrlID& from, const UrlID& to) const {
  std::vector<int> ids;
  for (int match = index_.FirstMatch(from, to, index_.Head()); match != PairIndex::kNone;
       match = index_.NextMatch(from, to, match)) {
    if (const int id = index_.At(match).id; id >= 0) ids.push_back(id);
  }
  return ids;
}

}  // namespace zvrsit
