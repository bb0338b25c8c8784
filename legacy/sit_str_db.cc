#include "legacy/sit_str_db.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr std::int64_t kStringHeaderSize = 8;
constexpr std::int64_t kStringHeadSize = 12;
// How often a damaged file is gone back in; hostile ones would take long to read otherwise.
constexpr int kMostReturns = 100;

struct Head {
  std::int32_t offset;
  std::int32_t id;
  std::int32_t length;
};

void StoreHead(const Head& head, unsigned char* bytes) {
  StoreLE32(bytes, head.offset);
  StoreLE32(bytes + 4, head.id);
  StoreLE32(bytes + 8, head.length);
}

bool TakeHead(SitFileScan& scan, Head& head) {
  unsigned char bytes[kStringHeadSize];
  if (!scan.Take(bytes, sizeof bytes)) return false;
  head = {LoadLE32(bytes), LoadLE32(bytes + 4), LoadLE32(bytes + 8)};
  return true;
}

// Whether a head, read at `at`, begins an entry that ends within `size` bytes.
bool IsEntry(const Head& head, std::int64_t at, std::int64_t size) {
  return head.offset == at && head.length >= 0 && at + kStringHeadSize + head.length <= size;
}

std::int32_t AddClamped(std::int32_t counter, std::int64_t length) {
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(counter + length, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

int SitStrDB::Open(const std::string& path) {
  Close();
  liveBytes_ = deadBytes_ = 0;
  whole_ = false;
  if (!file_.Open(path)) return -1;
  const std::int64_t size = file_.Size();
  if (size < 0) {
    Discard();
    return -1;
  }
  end_ = std::max(size, kStringHeaderSize);
  Load(size);
  return 0;
}

void SitStrDB::Load(std::int64_t size) {
  std::int32_t live = 0;
  std::int32_t dead = 0;
  whole_ = size == 0;
  if (!file_.ReadWord(0, live) || !file_.ReadWord(4, dead)) return;
  whole_ = true;
  liveBytes_ = std::max(live, 0);
  deadBytes_ = std::max(dead, 0);
  const std::int64_t bodyBytes = LoadEntries(size);
  if (bodyBytes < live) whole_ = false;
  // The counters reach the file on closing only; after a crash they are too small.
  if (liveBytes_ == 0) liveBytes_ = AddClamped(0, bodyBytes);
}

// The length of all bodies.
std::int64_t SitStrDB::LoadEntries(std::int64_t size) {
  SitFileScan scan(file_, kStringHeaderSize);
  Head head;
  Entry dead{};
  Entry* last = nullptr;  // the entry before, which may be `dead`
  std::int64_t bodyBytes = 0;
  std::int64_t at = kStringHeaderSize;
  bool lost = false;
  int losses = 0;
  for (; TakeHead(scan, head); at = scan.offset()) {
    if (!IsEntry(head, at, size)) {
      // The length before it may be what is damaged: the next entry is looked for from there.
      const bool goBack = !lost && last != nullptr && ++losses <= kMostReturns;
      scan.Skip((goBack ? last->offset + kStringHeadSize : at + 1) - scan.offset());
      lost = true;
      whole_ = false;
      continue;
    }
    if (lost && last != nullptr && last->offset + kStringHeadSize + last->length > at) {
      last->length = static_cast<std::int32_t>(at - last->offset - kStringHeadSize);
    }
    lost = false;
    last = &(head.id >= 0 ? entries_[head.id] : dead);
    *last = {head.offset, head.length};
    if (head.id >= 0) used_.SetUsed(head.id);
    bodyBytes += head.length;
    scan.Skip(head.length);
  }
  if (at != size) whole_ = false;
  return bodyBytes;
}

int SitStrDB::Close() {
  if (!file_.IsOpen()) return Discard() ? 0 : -1;
  const bool written = file_.WriteWord(0, liveBytes_) && file_.WriteWord(4, deadBytes_);
  return Discard() && written ? 0 : -1;
}

bool SitStrDB::Discard() {
  entries_.clear();
  used_.Clear();
  return file_.Close();
}

std::optional<std::string> SitStrDB::Get(int id) {
  const auto found = entries_.find(id);
  if (found == entries_.end() || found->second.length < 1) return std::nullopt;
  std::string body(static_cast<std::size_t>(found->second.length), '\0');
  if (!file_.ReadAt(found->second.offset + kStringHeadSize, body.data(), body.size())) {
    return std::nullopt;
  }
  body.resize(std::min(body.find('\0'), body.size()));
  return body;
}

bool SitStrDB::WriteEntry(const Entry& entry, int id, const std::string& body) {
  std::string bytes(kStringHeadSize, '\0');
  StoreHead({entry.offset, id, entry.length}, reinterpret_cast<unsigned char*>(bytes.data()));
  bytes += body;
  bytes += '\0';
  return file_.WriteAt(entry.offset, bytes.data(), bytes.size());
}

int SitStrDB::Add(const char* text, int wanted) {
  if (text == nullptr) return -1;
  if (!file_.IsOpen()) {
    file_.RefuseWrite(file_.lastErrno());
    return -1;
  }
  const std::string body = text;
  const std::int64_t length = static_cast<std::int64_t>(body.size()) + 1;
  if (end_ + kStringHeadSize + length > std::numeric_limits<std::int32_t>::max()) {
    file_.RefuseWrite(EFBIG);
    return -1;
  }
  const int id = used_.Allocate(wanted);
  if (id < 0) return -1;
  const Entry entry{static_cast<std::int32_t>(end_), static_cast<std::int32_t>(length)};
  if (!WriteEntry(entry, id, body)) {
    used_.SetFree(id);
    return -1;
  }
  entries_[id] = entry;
  end_ += kStringHeadSize + length;
  liveBytes_ = AddClamped(liveBytes_, length);
  return id;
}

int SitStrDB::Delete(int id) {
  const auto found = entries_.find(id);
  if (found == entries_.end()) return -1;
  const Entry entry = found->second;
  if (entry.length < 1) {
    unsigned char head[kStringHeadSize];
    StoreHead({entry.offset, -1, entry.length}, head);
    file_.WriteAt(entry.offset, head, sizeof head);
  } else {
    WriteEntry(entry, -1, std::string(static_cast<std::size_t>(entry.length) - 1, '*'));
  }
  deadBytes_ = AddClamped(deadBytes_, entry.length);
  used_.SetFree(id);
  entries_.erase(found);
  return 0;
}

int SitStrDB::Update(int id, const char* text) {
  const auto found = entries_.find(id);
  if (text == nullptr || found == entries_.end()) return -1;
  const std::string body = text;
  if (static_cast<std::int64_t>(body.size()) + 1 > found->second.length) {
    Delete(id);
    return Add(text, id);
  }
  return WriteEntry(found->second, id, body) ? id : -1;
}

bool SitStrDB::CopyLiveEntries(SitPackWriter& copy, std::int64_t& bodyBytes) {
  SitFileScan scan(file_, kStringHeaderSize);
  Head head;
  std::string body;
  while (scan.offset() < end_) {
    const std::int64_t at = scan.offset();
    if (!TakeHead(scan, head) || !IsEntry(head, at, end_)) return false;
    if (head.id == -1) {
      scan.Skip(head.length);
      continue;
    }
    body.resize(static_cast<std::size_t>(head.length));
    if (!scan.Take(body.data(), body.size())) return false;
    unsigned char bytes[kStringHeadSize];
    StoreHead({static_cast<std::int32_t>(copy.offset()), head.id, head.length}, bytes);
    copy.Append(bytes, sizeof bytes);
    copy.Append(body.data(), body.size());
    bodyBytes += head.length;
  }
  return true;
}

int SitStrDB::Pack(bool reopen) {
  if (!file_.IsOpen() || !whole_) return -1;
  SitPackWriter copy(path(), kStringHeaderSize);
  std::int64_t bodyBytes = 0;
  if (!copy.IsOpen() || !CopyLiveEntries(copy, bodyBytes)) return -1;
  unsigned char header[kStringHeaderSize];
  StoreLE32(header, static_cast<std::int32_t>(bodyBytes));
  StoreLE32(header + 4, 0);
  if (!copy.Finish(header, sizeof header)) return -1;
  Discard();
  const bool replaced = copy.Replace();
  if (reopen && Open(std::string(path())) < 0) return -1;
  return replaced ? 0 : -1;
}

}  // namespace zvrsit
