#include "storage/site_fix_rec_db.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

#include "storage/guarded.h"
#include "storage/pack_file.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr int kIdCountAt = 16;
constexpr int kSlotCountAt = 20;

}  // namespace

// Every class of record fits, whatever record length the file was given.
SiteFixRecDB::SlotBuffer::SlotBuffer(int length) : data_(fixed_) {
  if (length > kFixed) {
    large_.reset(new (std::nothrow) char[static_cast<std::size_t>(length)]);
    data_ = large_.get();
  }
  const int used = std::max(length, kLongestRecord);
  if (data_ != nullptr) std::memset(data_, 0, static_cast<std::size_t>(used));
}

SiteFixRecDB::SiteFixRecDB(std::string filePath, int recordBytes, int recordClass, bool wholeFile)
    : SiteDB(std::move(filePath), wholeFile),
      recordLength(recordBytes),
      recordType(recordClass),
      joinsEnds_(wholeFile && HoldsEnds(recordClass) && recordBytes >= SiteRelRec::kSlotLength) {}

int SiteFixRecDB::Open() {
  if (SiteDB::Open() < 0) return -1;
  if (recordLength >= 1 && CountsAreSound() && Guarded([&] { return MakeIndex(); }) == 0) return 0;
  Abandon();
  return -1;
}

bool SiteFixRecDB::CountsAreSound() const {
  return headerWord1 >= 0 && headerWord1 <= kMostIds && headerWord2 >= 0 &&
         std::int64_t{headerWord2} * recordLength <= Length() - kHeaderSize;
}

int SiteFixRecDB::MakeIndex() {
  slotIndex.Reset(static_cast<std::size_t>(headerWord1));
  live_ = 0;
  freed_ = {};
  cursor_ = 0;
  sources_.Follow(joinsEnds_ ? kHeaderSize + headerWord2 * recordLength : 0);
  SlotBuffer copy(recordLength);
  const std::int64_t length = std::int64_t{headerWord2} * recordLength;
  const char* const slots = recordLength >= 4 ? Bytes(kHeaderSize, length) : nullptr;
  for (int k = 0; k < headerWord2; ++k) {
    const int offset = kHeaderSize + k * recordLength;
    if (slots == nullptr && ReadSlotAt(offset, copy) < 0) return -1;
    const char* const slot = slots != nullptr ? slots + (offset - kHeaderSize) : copy.data();
    const std::int32_t id = IsKnownType() ? LoadLE32(slot) : -1;
    if (id < 0 || id >= headerWord1) continue;
    std::int32_t& known = slotIndex.slot(static_cast<std::size_t>(id));
    if (known == 0) ++live_;
    known = offset;
    if (joinsEnds_) sources_.AddNext(offset, LoadLE32(slot + kSourceAt));
  }
  return 0;
}

int SiteFixRecDB::Close() {
  if (SiteDB::Close() < 0) return -1;
  slotIndex.Reset(0);
  sources_.Follow(0);
  return 0;
}

// Whether the class is one that the file's class derives from.
bool SiteFixRecDB::IsBaseOfRecords(int classType) const {
  if (classType == SiteBaseRec::kRecordType) return true;
  constexpr std::pair<int, int> kWithBase[] = {
      {SiteUrlRec::kRecordType, SiteNodeRec::kRecordType},
      {SitePathRec::kRecordType, SiteNodeRec::kRecordType},
      {SiteSiteRec::kRecordType, SiteNodeRec::kRecordType},
      {SiteServRec::kRecordType, SiteNodeRec::kRecordType},
      {SiteLinkRec::kRecordType, SiteRelRec::kRecordType},
  };
  return std::find(std::begin(kWithBase), std::end(kWithBase), std::pair(recordType, classType)) !=
         std::end(kWithBase);
}

// The offset of the live slot of an id, or -1. The look-up of id 0 in a file without ids throws.
int SiteFixRecDB::SlotOffset(int id) const {
  if (!isOpen() || !IsAcceptable(id)) return -1;
  const std::int32_t offset = slotIndex.at(static_cast<std::size_t>(id));
  return offset == 0 ? -1 : offset;
}

int SiteFixRecDB::ReadSlotAt(int offset, SlotBuffer& slot) {
  return slot.data() != nullptr && ReadAt(slot.data(), offset, recordLength) == recordLength ? 0
                                                                                             : -1;
}

int SiteFixRecDB::AddSlot(SiteBaseRec* record, const Writer& writer) {
  if (!isOpen() || recordLength < 1 || writer.serialize == nullptr) return -1;
  return Guarded([&] { return AddNewSlot(record, writer); });
}

int SiteFixRecDB::AddNewSlot(SiteBaseRec* record, const Writer& writer) {
  const std::int64_t offset = std::int64_t{recordLength} * headerWord2 + kHeaderSize;
  const int id = ChooseId();
  if (id >= kMostIds || offset + recordLength > FileImage::kLargestFile) return RefuseForRoom();
  slotIndex.Grow(static_cast<std::size_t>(id) + 1);
  std::int32_t& slot = slotIndex.slot(static_cast<std::size_t>(id));
  if (id == headerWord1) ++headerWord1;
  record->id = id;
  const auto at = static_cast<std::int32_t>(offset);
  if (WriteSlot(at, *record, writer) < 0) return -1;
  slot = at;
  if (!freed_.empty() && freed_.top() == id) freed_.pop();
  ++live_;
  ++headerWord2;
  return WriteCounts() < 0 ? -1 : id;
}

// The smallest free number below the slot count, while there are fewer slots than ids, as after a
// Pack; else a new number. Numbers below the cursor are live, or are in `freed_`.
int SiteFixRecDB::ChooseId() {
  if (headerWord2 == headerWord1 || headerWord2 < 1) return headerWord1;
  const int limit = std::min(headerWord1, headerWord2);
  if (!freed_.empty() && freed_.top() < limit) return freed_.top();
  if (cursor_ < limit) {
    cursor_ = static_cast<int>(slotIndex.FindZero(static_cast<std::size_t>(cursor_)));
  }
  return cursor_ < limit ? cursor_ : headerWord1;
}

int SiteFixRecDB::WriteCounts() {
  char words[8];
  StoreLE32(words, headerWord1);
  StoreLE32(words + 4, headerWord2);
  return WriteAt(words, kIdCountAt, 4) == 4 && WriteAt(words + 4, kSlotCountAt, 4) == 4 ? 0 : -1;
}

int SiteFixRecDB::UpdateSlot(const SiteBaseRec& record, const Writer& writer) {
  if (!isOpen() || writer.serialize == nullptr) return -1;
  const int offset = SlotOffset(record.id);
  return offset < 0 ? -1 : WriteSlot(offset, record, writer);
}

// Writes in place when the file is in memory and the slot has room for all words of the class.
int SiteFixRecDB::WriteSlot(int offset, const SiteBaseRec& record, const Writer& writer) {
  char* const place = recordLength >= writer.slotLength ? MakeRoom(offset, recordLength) : nullptr;
  if (place != nullptr) {
    const int written = writer.serialize(record, place);
    std::fill(place + written, place + recordLength, '\0');
    if (joinsEnds_) sources_.Add(offset, LoadLE32(place + kSourceAt));
    return 0;
  }
  SlotBuffer slot(recordLength);
  if (slot.data() == nullptr) return -1;
  writer.serialize(record, slot.data());
  if (WriteAt(slot.data(), offset, recordLength) != recordLength) return -1;
  if (joinsEnds_) sources_.Add(offset, LoadLE32(slot.data() + kSourceAt));
  return 0;
}

int SiteFixRecDB::Delete(int id) {
  const int offset = SlotOffset(id);
  if (offset < 0 || MarkSlotDead(offset) < 0) return -1;
  slotIndex.slot(static_cast<std::size_t>(id)) = 0;
  --live_;
  const auto remember = [&] {
    if (id < cursor_) freed_.push(id);
    return 0;
  };
  if (Guarded(remember) < 0) {  // all free numbers are then found by the cursor
    freed_ = {};
    cursor_ = 0;
  }
  return 0;
}

int SiteFixRecDB::MarkSlotDead(int offset) {
  char* const place = recordLength >= 4 ? ChangeBytes(offset, recordLength) : nullptr;
  if (place != nullptr) {
    StoreLE32(place, -1);
    return 0;
  }
  SlotBuffer slot(recordLength);
  if (ReadSlotAt(offset, slot) < 0) return -1;
  StoreLE32(slot.data(), -1);
  return WriteAt(slot.data(), offset, recordLength) == recordLength ? 0 : -1;
}

int SiteFixRecDB::SearchNextId(int id) const {
  if (!isOpen()) return -1;
  const auto count = static_cast<std::size_t>(headerWord1);
  for (std::size_t at = static_cast<std::size_t>(std::max(id, 0)); at < count; ++at) {
    at = slotIndex.SkipUnmade(at);
    if (at < count && slotIndex.at(at) != 0) return static_cast<int>(at);
  }
  return -1;
}

int SiteFixRecDB::Pack() {
  return isOpen() ? Guarded([&] { return PackSlots(); }) : -1;
}

int SiteFixRecDB::PackSlots() {
  PackFile packed(path);
  int slots = 0;
  bool isInOrder = inMemory && IsKnownType() && recordLength >= 4;
  if (packed.Open(kHeaderSize) < 0 || AppendLiveSlots(packed, slots, isInOrder) < 0) return -1;
  char head[kHeaderSize];
  StoreHeader(head, headerWord1, slots);
  if (packed.Finish({head, kHeaderSize}) < 0) return -1;
  if (!isInOrder || packed.hasTail()) return ReplaceBy(packed.path()) < 0 ? -1 : Open();
  FileImage kept;
  return ReplaceBy(packed.path(), &kept) < 0 ? -1 : OpenPacked(std::move(kept), slots);
}

// `isInOrder` becomes false where the slots do not lie in the order of their numbers.
int SiteFixRecDB::AppendLiveSlots(PackFile& packed, int& slots, bool& isInOrder) {
  const auto length = static_cast<std::size_t>(recordLength);
  std::int32_t last = 0;
  SlotBuffer copy(recordLength);
  const bool hasFailed = slotIndex.FindSet([&](std::size_t, std::int32_t offset) {
    isInOrder = isInOrder && offset > last;
    last = offset;
    const char* slot = recordLength >= 4 ? Bytes(offset, recordLength) : nullptr;
    const bool isLasting = slot != nullptr;
    if (!isLasting) {
      if (ReadSlotAt(offset, copy) < 0) return true;
      slot = copy.data();
    }
    if (!IsKnownType() || !IsAcceptable(LoadLE32(slot))) {
      isInOrder = false;  // it is left out
      return false;
    }
    ++slots;
    return packed.Append({slot, length}, isLasting) < 0;
  });
  return hasFailed ? -1 : 0;
}

// Opens the packed file without reading it: its slots are those of `kept`, moved together.
int SiteFixRecDB::OpenPacked(FileImage kept, int slots) {
  const auto length = static_cast<std::size_t>(recordLength);
  char* const bytes = kept.ChangeBytes(0, kept.size());
  std::int32_t end = kHeaderSize;
  slotIndex.ForEachSet([&](std::int32_t& offset) {
    const std::int32_t from = std::exchange(offset, end);
    if (from != offset) std::memmove(bytes + offset, bytes + from, length);
    end += recordLength;
  });
  headerWord2 = slots;
  freed_ = {};
  cursor_ = 0;
  sources_.Follow(0);
  return OpenOn(std::move(kept), static_cast<std::uint32_t>(end));
}

}  // namespace zvrsit
