#include "storage/site_db.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "platform/file.h"
#include "storage/guarded.h"
#include "util/little_endian.h"

namespace zvrsit {

namespace {

constexpr char kMagic[] = "ZVR4.00-SITE0.01";
constexpr int kWord1 = 16;
constexpr int kWord2 = 20;
constexpr std::uint32_t kStep = 4096;
constexpr std::uint32_t kSmallFile = 1 << 20;
// A file system that keeps whole seconds or milliseconds may keep only every other second; one that
// keeps more takes the time from the system's clock, which ticks at least as often as this.
constexpr std::chrono::nanoseconds kCoarseFileTime = std::chrono::seconds(2);
constexpr std::chrono::nanoseconds kFineFileTime = std::chrono::milliseconds(32);
// The clock that file systems take times from ticks at most so often.
constexpr std::chrono::nanoseconds kShortestTick = std::chrono::milliseconds(1);
constexpr std::int64_t kLargestFile = std::numeric_limits<std::int32_t>::max();

std::chrono::nanoseconds Now() {
  return std::chrono::system_clock::now().time_since_epoch();
}

// Setting the modification time back is a change as well.
std::chrono::nanoseconds LastChange(const platform::FileStat& stat) {
  return std::chrono::nanoseconds(std::max(stat.modificationNanoseconds, stat.changeNanoseconds));
}

// What is set aside for a file of that size when it is opened.
constexpr std::uint32_t CapacityFor(std::uint32_t size) {
  return (size / kStep + 1) * kStep;
}

// Copies all of an open file of `size` bytes; the number of bytes written or -1.
int CopyOpenFile(int from, int to, std::uint32_t size) {
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[size]());
  if (bytes == nullptr) return -1;
  if (platform::Read(from, bytes.get(), size) <= 0) return -1;
  return static_cast<int>(platform::Write(to, bytes.get(), size));
}

// The destination is not shortened first, on purpose: a longer one keeps its tail.
int CopyFileTo(const std::string& source, const std::string& destination) {
  platform::FileStat stat;
  if (platform::Stat(source, stat) < 0 || stat.size > kLargestFile) return -1;
  const int from = platform::Open(source, platform::kOpenExisting);
  if (from < 0) return -1;
  const int to = platform::Open(destination, platform::kOpenDatabase);
  int result = -1;
  if (to >= 0) {
    result = CopyOpenFile(from, to, stat.size);
    platform::Close(to);
  }
  platform::Close(from);
  return result;
}

}  // namespace

SiteDB::SiteDB(std::string filePath, bool wholeFile)
    : path(std::move(filePath)), inMemory(wholeFile) {}

SiteDB::~SiteDB() {
  // In direct mode the descriptor stays open, on purpose.
  if (inMemory && fd >= 0) {
    dirty = false;
    SiteDB::Close();
  }
}

int SiteDB::Open() {
  if (path.empty()) return -1;
  return inMemory ? OpenWhole() : OpenDirect();
}

int SiteDB::OpenDescriptor() const {
  return platform::Open(path, readOnly_ ? platform::kOpenReadOnly : platform::kOpenDatabase);
}

int SiteDB::OpenWhole() {
  if (capacity != 0) return -1;
  platform::FileStat stat;
  const std::uint32_t fileSize = platform::Stat(path, stat) < 0 ? 0 : stat.size;
  fd = OpenDescriptor();
  if (fd < 0) return -1;
  dirty = false;
  size = 0;
  if (fileSize > kLargestFile || (readOnly_ && fileSize < kHeaderSize) ||
      !Reserve(CapacityFor(fileSize))) {
    Abandon();
    return -1;
  }
  // A file that was cut since it was asked for its size keeps that size, its end zero.
  const std::int64_t read = fileSize == 0 ? 0 : platform::Read(fd, buffer.get(), fileSize);
  if (read >= 0) size = fileSize;
  const auto known = static_cast<std::size_t>(std::max<std::int64_t>(read, 0));
  std::memset(buffer.get() + known, 0, capacity - known);
  if (read == fileSize) FollowChanges(stat);
  CompleteHeader();
  return 0;
}

// Writing only the changed parts of a file is right where the rest of it is on disk as it was when
// the image was last equal to it. Whether that holds is told by the file's size and times:
//   1. When the image is equal to the file, the times are noted (FollowChanges, FollowWritten).
//   2. Every later write by anybody gives the file a new change time. A program can set the
//      modification time back, but that sets the change time as well.
//   3. So if size and both times are as noted when the image is to be written, nobody has written.
//   4. Times have steps. A write in the same step as the noted time would not show. So times are
//      noted only when their step is over, or where the file system was seen to give each change a
//      time of its own. A file that has no noted times is written whole.
// What this leaves open: somebody who writes between the last look at the times and our write, or
// between the two test changes of FollowWritten; a clock that was set back and comes to the very
// time that was noted; a file system that tells times late, as over a network, or keeps no change
// time while another program sets the modification time back; and a disk written without the
// system. Two programs that change one site at once need a lock around both.

// The image is what the file has now. A small file is written whole all the same, and so is one
// that was written a moment ago: another change could get the same time.
void SiteDB::FollowChanges(const platform::FileStat& onDisk) {
  const std::chrono::nanoseconds written = LastChange(onDisk);
  const bool isCoarse = written % std::chrono::milliseconds(1) == std::chrono::nanoseconds(0);
  const bool isSettled = Now() - written > (isCoarse ? kCoarseFileTime : kFineFileTime);
  onDisk_ = onDisk;
  changed_.Follow(isSettled && onDisk.size == size && size >= kSmallFile ? size : 0);
}

// The file was written just now, and is what the image is. It is followed on where every change of
// a file that was asked for its time since its last change gets a time of its own: seen from two
// changes within one tick of the clock. Somebody who writes between those is not noticed.
void SiteDB::FollowWritten() {
  if (size < kSmallFile) return;
  const std::chrono::nanoseconds start = Now();
  std::chrono::nanoseconds after = start;
  platform::FileStat stat;
  if (platform::StatOpen(fd, stat) != 0 || LastChange(stat) > start) return;
  for (int change = 0; change < 2; ++change) {
    const std::chrono::nanoseconds before = Now();
    if (WriteBytes(0, kHeaderSize) < 0 || platform::StatOpen(fd, stat) != 0) return;
    after = Now();
    if (LastChange(stat) < before || LastChange(stat) > after) return;
  }
  if (after - start >= kShortestTick || stat.size != size) return;
  onDisk_ = stat;
  changed_.Follow(size);
}

// Whether nobody else has written the file since.
bool SiteDB::IsAsLeft() const {
  platform::FileStat now;
  return platform::StatOpen(fd, now) == 0 && now.size == onDisk_.size &&
         now.modificationNanoseconds == onDisk_.modificationNanoseconds &&
         now.changeNanoseconds == onDisk_.changeNanoseconds;
}

// A word of which a part is missing is 0; what lies behind the end of the file is so by now.
void SiteDB::CompleteHeader() {
  const std::uint32_t known = size;
  size = SizeWithHeader(known);
  dirty = size != known;
  if (known < kMagicSize) std::memcpy(buffer.get(), kMagic, kMagicSize);
  if (known < kWord2) StoreLE32(buffer.get() + kWord1, 0);
  if (known < kHeaderSize) StoreLE32(buffer.get() + kWord2, 0);
  std::memcpy(magic, buffer.get(), kMagicSize);
  CheckHeader();
  headerWord1 = LoadLE32(buffer.get() + kWord1);
  headerWord2 = LoadLE32(buffer.get() + kWord2);
}

int SiteDB::OpenDirect() {
  fd = OpenDescriptor();
  if (fd < 0) return -1;
  if (ReadHeader() < 0) {
    Abandon();
    return -1;
  }
  return 0;
}

int SiteDB::ReadHeader() {
  if (platform::Seek(fd, 0) < 0) return -1;
  if (platform::Read(fd, magic, kMagicSize) < kMagicSize) {
    std::memcpy(magic, kMagic, kMagicSize);
    if (WriteAt(magic, 0, kMagicSize) != kMagicSize) return -1;
  } else {
    CheckHeader();
  }
  return ReadHeaderWord(headerWord1, kWord1) < 0 || ReadHeaderWord(headerWord2, kWord2) < 0 ? -1
                                                                                            : 0;
}

int SiteDB::ReadHeaderWord(std::int32_t& word, int offset) {
  char bytes[4] = {};
  if (platform::Read(fd, bytes, 4) < 4) {
    std::memset(bytes, 0, sizeof bytes);
    if (WriteAt(bytes, offset, 4) != 4) return -1;
  }
  word = LoadLE32(bytes);
  return 0;
}

int SiteDB::Close(Image* kept) {
  if (fd < 0) return 0;
  return inMemory ? CloseWhole(kept) : CloseDirect();
}

int SiteDB::CloseDirect() {
  if (!readOnly_) {
    if (platform::Seek(fd, 0) < 0) return -1;
    if (WriteHeader() < 0) {
      platform::FlushAll();
      return -1;
    }
  }
  platform::Close(fd);
  fd = -1;
  return 0;
}

int SiteDB::WriteHeader() {
  char words[8];
  StoreLE32(words, headerWord1);
  StoreLE32(words + 4, headerWord2);
  const bool complete = platform::Write(fd, magic, kMagicSize) == kMagicSize &&
                        platform::Write(fd, words, 4) == 4 &&
                        platform::Write(fd, words + 4, 4) == 4;
  return complete ? 0 : -1;
}

int SiteDB::CloseWhole(Image* kept) {
  const int result = dirty ? WriteImage() : 0;
  if (kept != nullptr) *kept = {std::move(buffer), size};
  Abandon();
  return result;
}

void SiteDB::StoreHeader(char* bytes, std::int32_t word1, std::int32_t word2) const {
  std::memcpy(bytes, magic, kMagicSize);
  StoreLE32(bytes + kWord1, word1);
  StoreLE32(bytes + kWord2, word2);
}

int SiteDB::WriteImage() {
  if (readOnly_) return -1;
  StoreHeader(buffer.get(), headerWord1, headerWord2);
  changed_.Mark(0, kHeaderSize);
  // In parts only where that leaves the same bytes as writing it all.
  const bool inParts = changed_.AreFew(size) && IsAsLeft();
  const int result =
      inParts
          ? changed_.ForEachPart(size, [this](auto from, auto to) { return WriteBytes(from, to); })
          : WriteBytes(0, size);
  changed_.Follow(0);
  platform::FlushAll();
  return result;
}

int SiteDB::WriteBytes(std::size_t from, std::size_t to) {
  if (platform::Seek(fd, static_cast<std::int64_t>(from)) < 0) return -1;
  const std::int64_t written = platform::Write(fd, buffer.get() + from, to - from);
  return written == static_cast<std::int64_t>(to - from) ? 0 : -1;
}

int SiteDB::ReplaceBy(const std::string& other, Image* kept) {
  if (inMemory) {
    platform::Close(fd);  // an open file cannot be removed everywhere
    fd = -1;
  } else if (CloseDirect() < 0) {
    return -1;
  }
  const int removed = platform::Unlink(path);
  if (removed < 0 && dirty) {
    fd = platform::Open(path, platform::kOpenDatabase);
    if (fd >= 0) WriteImage();
  }
  if (kept != nullptr) *kept = {std::move(buffer), size};
  Abandon();
  return removed < 0 ? -1 : platform::Rename(other, path);
}

int SiteDB::OpenOn(Image image) {
  fd = platform::Open(path, platform::kOpenDatabase);
  if (fd < 0) return -1;
  buffer = std::move(image.bytes);
  size = image.size;
  capacity = CapacityFor(size);
  buffer.Shrink(capacity);
  StoreHeader(buffer.get(), headerWord1, headerWord2);
  dirty = false;
  changed_.Follow(0);
  return 0;
}

void SiteDB::Abandon() {
  buffer.reset();
  changed_.Follow(0);
  onDisk_ = {};
  size = 0;
  capacity = 0;
  if (fd >= 0) platform::Close(fd);
  fd = -1;
}

int SiteDB::Flush() {
  if (fd < 0) return 0;
  if (!inMemory) return platform::FlushAll();
  if (!dirty) return 0;
  if (WriteImage() < 0) return -1;
  dirty = false;
  FollowWritten();
  return 0;
}

int SiteDB::ReadFile(void* destination, std::int32_t offset, std::int32_t length) {
  if (fd < 0 || length < 0 || offset < 0) return -1;
  if (inMemory || platform::Seek(fd, offset) < 0) return -1;
  return static_cast<int>(platform::Read(fd, destination, static_cast<std::size_t>(length)));
}

int SiteDB::WriteFile(const void* source, std::int32_t offset, std::int32_t length) {
  if (fd < 0 || length < 0 || offset < 0) return -1;
  if (inMemory) {
    char* bytes = MakeRoom(offset, length);
    if (bytes == nullptr) return -1;
    std::memcpy(bytes, source, static_cast<std::size_t>(length));
    return length;
  }
  if (std::int64_t{offset} + length > kLargestFile) return -1;
  if (platform::Seek(fd, offset) < 0) return -1;
  const std::int64_t written = platform::Write(fd, source, static_cast<std::size_t>(length));
  platform::FlushAll();
  return static_cast<int>(written);
}

// MakeRoom beyond what is set aside, or with a gap.
char* SiteDB::Extend(std::int32_t offset, std::int32_t length) {
  const std::int64_t end = std::int64_t{offset} + length;
  if (buffer.get() == nullptr || offset < 0 || length < 0 || end > kLargestFile) return nullptr;
  if (!Reserve(static_cast<std::uint32_t>(end))) return nullptr;
  char* const place = buffer.get() + offset;
  if (offset > static_cast<std::int64_t>(size)) {
    const std::int64_t gap = offset - static_cast<std::int64_t>(size);
    std::memset(place - gap, 0, static_cast<std::size_t>(gap));
  }
  size = std::max(size, static_cast<std::uint32_t>(end));
  dirty = true;
  changed_.Mark(offset, length);
  return place;
}

// `capacity` counts in steps; what is really allocated doubles, so that a file that grows by many
// small writes costs linear time. A failure leaves `capacity` raised.
bool SiteDB::Reserve(std::uint32_t end) {
  if (end > capacity) capacity += (end - capacity + kStep - 1) / kStep * kStep;
  if (end <= buffer.length()) return true;
  // A process of 32 bits may have room for what is needed, but not for twice of what there is.
  return buffer.Grow(std::max<std::size_t>(capacity, buffer.length() * 2)) || buffer.Grow(capacity);
}

std::int64_t SiteDB::Length() const {
  if (inMemory) return size;
  const std::int64_t length = platform::SeekEnd(fd);
  return length <= kLargestFile ? length : -1;
}

int SiteDB::Backup() {
  return path.empty() ? -1 : Guarded([&] { return CopyFileTo(path, path + "_bak"); });
}

int SiteDB::Restore() {
  if (path.empty() || fd >= 0) return -1;
  return Guarded([&] { return CopyFileTo(path + "_bak", path); });
}

int SiteDB::Delete() {
  return fd >= 0 ? -1 : platform::Unlink(path);
}

}  // namespace zvrsit
