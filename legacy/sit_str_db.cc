#include "legacy/sit_str_db.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr std::int64_t kHeaderSize = 8;
constexpr std::int64_t kHeadSize = 12;

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
  unsigned char bytes[kHeadSize];
  if (!scan.Take(bytes, sizeof bytes)) return false;
  head = {LoadLE32(bytes), LoadLE32(bytes + 4), LoadLE32(bytes + 8)};
  return true;
}

std::int32_t AddClamped(std::int32_t counter, std::int64_t length) {
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(counter + length, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

int SitStrDB::Open(const std::string& path) {
  Close();
  liveBytes_ = deadBytes_ = 0;
  end_ = kHeaderSize;
  if (file_.Open(path) < 0) return -1;
  Load();
  return 0;
}

void SitStrDB::Load() {
  std::int32_t live = 0;
  std::int32_t dead = 0;
  if (!file_.ReadWord(0, live) || !file_.ReadWord(4, dead)) return;
  liveBytes_ = std::max(live, 0);
  deadBytes_ = std::max(dead, 0);
  const std::int64_t size = file_.Size();
  SitFileScan scan(file_, kHeaderSize);
  Head head;
  std::int64_t bodyBytes = 0;
  while (TakeHead(scan, head)) {
    // A negative length would lead back into what has been read.
    if (head.length < 0 || scan.offset() + head.length > size) break;
    if (head.id >= 0) {
      entries_[head.id] = {static_cast<std::int32_t>(end_), head.length};
      used_.SetUsed(head.id);
    }
    bodyBytes += head.length;
    scan.Skip(head.length);
    end_ = scan.offset();
  }
  // The counters reach the file on closing only. After a crash they are 0 with strings behind them,
  // and 0 live bytes mean that the next string goes to the front of the file.
  if (liveBytes_ == 0) liveBytes_ = AddClamped(0, bodyBytes);
}

int SitStrDB::Close() {
  entries_.clear();
  used_.Clear();
  if (!file_.IsOpen()) return 0;
  const bool written = file_.WriteWord(0, liveBytes_) && file_.WriteWord(4, deadBytes_);
  return file_.Close() == 0 && written ? 0 : -1;
}

std::optional<std::string> SitStrDB::Get(int id) {
  const auto found = entries_.find(id);
  if (found == entries_.end() || found->second.length < 1) return std::nullopt;
  std::string body(static_cast<std::size_t>(found->second.length), '\0');
  if (!file_.ReadAt(found->second.offset + kHeadSize, body.data(), body.size())) {
    return std::nullopt;
  }
  body.resize(std::min(body.find('\0'), body.size()));
  return body;
}

bool SitStrDB::WriteEntry(const Entry& entry, int id, const std::string& body) {
  std::string bytes(kHeadSize, '\0');
  StoreHead({entry.offset, id, entry.length}, reinterpret_cast<unsigned char*>(bytes.data()));
  bytes += body;
  bytes += '\0';
  return file_.WriteAt(entry.offset, bytes.data(), bytes.size());
}

int SitStrDB::Add(const char* text, int wanted) {
  if (text == nullptr || !file_.IsOpen()) return -1;
  const std::string body = text;
  const std::int64_t length = static_cast<std::int64_t>(body.size()) + 1;
  if (end_ + kHeadSize + length > std::numeric_limits<std::int32_t>::max()) return -1;
  const int id = used_.Allocate(wanted);
  if (id < 0) return -1;
  const Entry entry{static_cast<std::int32_t>(end_), static_cast<std::int32_t>(length)};
  if (!WriteEntry(entry, id, body)) {
    used_.SetFree(id);
    return -1;
  }
  entries_[id] = entry;
  end_ += kHeadSize + length;
  liveBytes_ = AddClamped(liveBytes_, length);
  return id;
}

int SitStrDB::Delete(int id) {
  const auto found = entries_.find(id);
  if (found == entries_.end()) return -1;
  const Entry entry = found->second;
  if (entry.length < 1) {
    unsigned char head[kHeadSize];
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
  const std::int64_t size = file_.Size();
  SitFileScan scan(file_, kHeaderSize);
  Head head;
  std::string body;
  while (scan.offset() < end_ && TakeHead(scan, head)) {
    if (head.length < 0 || scan.offset() + head.length > size) break;
    if (head.id == -1) {
      scan.Skip(head.length);
      continue;
    }
    body.resize(static_cast<std::size_t>(head.length));
    if (!scan.Take(body.data(), body.size())) return false;
    unsigned char bytes[kHeadSize];
    StoreHead({static_cast<std::int32_t>(copy.offset()), head.id, head.length}, bytes);
    copy.Append(bytes, sizeof bytes);
    copy.Append(body.data(), body.size());
    bodyBytes += head.length;
  }
  return true;
}

int SitStrDB::Pack(bool reopen) {
  if (!file_.IsOpen()) return -1;
  SitPackWriter copy(path(), kHeaderSize);
  std::int64_t bodyBytes = 0;
  if (!copy.IsOpen() || !CopyLiveEntries(copy, bodyBytes)) return -1;
  unsigned char header[kHeaderSize];
  StoreLE32(header, static_cast<std::int32_t>(bodyBytes));
  StoreLE32(header + 4, 0);
  if (!copy.Finish(header, sizeof header)) return -1;
  Close();
  const bool replaced = copy.Replace();
  if (reopen && Open(std::string(path())) < 0) return -1;
  return replaced ? 0 : -1;
}

}  // namespace zvrsit
