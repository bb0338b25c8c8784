#include "storage/file_image.h"

#include <cassert>
#include <chrono>
#include <cstring>
#include <functional>

namespace zvrsit {

namespace {

using std::chrono::nanoseconds;

constexpr std::uint32_t kStep = 4096;
// A smaller file is written whole: that costs about as much as asking for its times.
constexpr std::uint32_t kSmallFile = 1 << 20;
// How long the time of a file may stay the same. A file system that keeps times in whole
// milliseconds or seconds may keep only every other second. Any other one takes its times from the
// system's clock, and that ticks more often than this.
constexpr nanoseconds kCoarseStep = std::chrono::seconds(2);
constexpr nanoseconds kFineStep = std::chrono::milliseconds(32);
// The system's clock ticks at most as often as this.
constexpr nanoseconds kShortestTick = std::chrono::milliseconds(1);
// What the test writes of NoteSaved write again.
constexpr std::size_t kTestBytes = 24;

nanoseconds Now() {
  return std::chrono::system_clock::now().time_since_epoch();
}

nanoseconds LastChange(const platform::FileStat& stat) {
  return nanoseconds(std::max(stat.modificationNanoseconds, stat.changeNanoseconds));
}

// The last step ends one byte beyond the longest file.
constexpr std::uint32_t Limited(std::uint32_t capacity) {
  return std::min(capacity, static_cast<std::uint32_t>(FileImage::kLargestFile));
}

// How much is reserved when a file of that size is opened.
constexpr std::uint32_t CapacityFor(std::uint32_t size) {
  return Limited((size / kStep + 1) * kStep);
}

}  // namespace

int FileImage::Load(int fd, const platform::FileStat& onDisk, bool maps) {
  Drop();
  if (maps && onDisk.size >= kSmallFile && Map(fd, onDisk)) return 0;
  if (!Reserve(CapacityFor(onDisk.size))) {
    Drop();
    return -1;
  }
  const std::int64_t read = onDisk.size == 0 ? 0 : platform::Read(fd, bytes_.get(), onDisk.size);
  if (read >= 0) size_ = onDisk.size;
  const auto known = static_cast<std::size_t>(std::max<std::int64_t>(read, 0));
  std::memset(bytes_.get() + known, 0, capacity_ - known);
  if (read == onDisk.size) NoteLoaded(onDisk);
  return 0;
}

bool FileImage::Map(int fd, const platform::FileStat& onDisk) {
  constexpr std::uint32_t kRoomToGrow = 4 << 20;
  const std::uint32_t capacity = CapacityFor(onDisk.size);
  if (capacity > kLargestFile - kRoomToGrow ||
      !bytes_.Map(fd, onDisk.size, capacity + kRoomToGrow)) {
    return false;
  }
  size_ = onDisk.size;
  capacity_ = capacity;
  NoteLoaded(onDisk);
  return true;
}

// The image is what the file was at these times. They are noted when their step is over: any write
// from now on gets another time.
void FileImage::NoteLoaded(const platform::FileStat& onDisk) {
  const nanoseconds written = LastChange(onDisk);
  const bool isCoarse = written % std::chrono::milliseconds(1) == nanoseconds(0);
  const bool isOver = Now() - written > (isCoarse ? kCoarseStep : kFineStep);
  noted_ = onDisk;
  changed_.Follow(isOver && size_ >= kSmallFile ? size_ : 0);
}

// The file was saved just now, so the step of its times is not over. They are noted where the file
// system gives every write a time of its own, as some do for a file whose times were asked for
// since its last write. That is seen from two test writes: each gets a time between what the clock
// says right before and right after it. A time that only changes with the ticks of a clock could
// lie there by chance once, but not twice between two ticks.
void FileImage::NoteSaved(int fd) {
  if (size_ < kSmallFile) return;
  const nanoseconds start = Now();
  nanoseconds after = start;
  platform::FileStat stat;
  if (platform::StatOpen(fd, stat) != 0 || LastChange(stat) > start) return;
  for (int test = 0; test < 2; ++test) {
    const nanoseconds before = Now();
    if (Write(fd, 0, kTestBytes) < 0 || platform::StatOpen(fd, stat) != 0) return;
    after = Now();
    if (LastChange(stat) < before || LastChange(stat) > after) return;
  }
  if (after - start >= kShortestTick || stat.size != size_) return;
  noted_ = stat;
  changed_.Follow(size_);
}

bool FileImage::IsAsNoted(int fd) const {
  platform::FileStat now;
  return platform::StatOpen(fd, now) == 0 && now.size == noted_.size &&
         now.modificationNanoseconds == noted_.modificationNanoseconds &&
         now.changeNanoseconds == noted_.changeNanoseconds;
}

int FileImage::Save(int fd) {
  assert(isHeld());
  const int result = ForEachChange(
      fd, [this, fd](std::size_t from, std::size_t to) { return Write(fd, from, to); });
  changed_.Follow(0);
  if (result == 0) isChanged_ = false;
  return result;
}

int FileImage::Write(int fd, std::size_t from, std::size_t to) const {
  assert(from <= to && to <= size_);
  if (platform::Seek(fd, static_cast<std::int64_t>(from)) < 0) return -1;
  const std::int64_t written = platform::Write(fd, bytes_.get() + from, to - from);
  return written == static_cast<std::int64_t>(to - from) ? 0 : -1;
}

void FileImage::Drop() {
  isChanged_ = false;
  bytes_.reset();
  size_ = 0;
  capacity_ = 0;
  changed_.Follow(0);
}

void FileImage::CutToSaved(std::uint32_t size) {
  assert(isHeld() && size <= size_);
  isChanged_ = false;
  size_ = size;
  capacity_ = CapacityFor(size);
  bytes_.Shrink(capacity_);
  changed_.Follow(0);
}

bool FileImage::HasInMemory(std::string_view bytes) const {
  const std::less_equal<const char*> before;
  return bytes_.get() != nullptr && !bytes.empty() && before(bytes_.get(), bytes.data()) &&
         before(bytes.data(), bytes_.get() + bytes_.length());
}

// MakeRoom beyond what is reserved, or with a gap.
char* FileImage::Extend(std::int32_t offset, std::int32_t length) {
  const std::int64_t end = std::int64_t{offset} + length;
  if (!isHeld() || offset < 0 || length < 0 || end > kLargestFile) return nullptr;
  if (!Reserve(static_cast<std::uint32_t>(end))) return nullptr;
  char* const place = bytes_.get() + offset;
  if (offset > static_cast<std::int64_t>(size_)) {
    const std::int64_t gap = offset - static_cast<std::int64_t>(size_);
    std::memset(place - gap, 0, static_cast<std::size_t>(gap));
  }
  size_ = std::max(size_, static_cast<std::uint32_t>(end));
  NoteChange(offset, length);
  return place;
}

// `capacity_` grows in steps, but the memory itself doubles: so many small writes to a growing file
// cost linear time. A failure leaves `capacity_` raised.
bool FileImage::Reserve(std::uint32_t end) {
  if (end > capacity_)
    capacity_ = Limited(capacity_ + (end - capacity_ + kStep - 1) / kStep * kStep);
  if (end <= bytes_.length()) return true;
  // A process of 32 bits may have room for what is needed, but not for double the memory.
  return bytes_.Grow(std::max<std::size_t>(capacity_, bytes_.length() * 2)) ||
         bytes_.Grow(capacity_);
}

}  // namespace zvrsit
