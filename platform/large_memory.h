// Memory for what grows large: file images and hash tables. It comes in large pages where the
// system has them. So reads at many distant places need few address translations.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace zvrsit::platform {

// Blocks below this size come from the ordinary heap.
inline constexpr std::size_t kLargeBlock = std::size_t{1} << 20;

// A block of at least `bytes` bytes with any content, or null. FreeLarge frees it.
void* AllocateLarge(std::size_t bytes);
// Makes a block of `oldBytes` bytes `newBytes` long; gives its place, which may be another one. The
// bytes that both lengths have are kept. Null when there is no memory; the old block is then
// unchanged.
void* ResizeLarge(void* block, std::size_t oldBytes, std::size_t newBytes);
// The same in new memory whatever the old block is made of.
void* CopyLarge(void* block, std::size_t oldBytes, std::size_t newBytes);
// Frees a block of that length; null is allowed.
void FreeLarge(void* block, std::size_t bytes);

// Maps the first `fileBytes` bytes of the open file `fd` to the begin of a block of `bytes` bytes,
// which is at least kLargeBlock and as long; what follows is zero. Changes of the block do not
// change the file. All of the file was read when this returns. FreeLarge frees the block;
// ResizeLarge does not take it. Null where the system does not do this, or where the file could not
// be read. A file that is cut while it is mapped ends the process (SIGBUS).
void* MapLarge(int fd, std::size_t fileBytes, std::size_t bytes);

// A block that grows and is owned by one object.
class LargeBuffer {
 public:
  LargeBuffer() = default;
  ~LargeBuffer() { FreeLarge(block_, length_); }
  LargeBuffer(LargeBuffer&& other) noexcept { swap(other); }
  LargeBuffer& operator=(LargeBuffer&& other) noexcept {
    reset();
    swap(other);
    return *this;
  }

  // Null until it has grown.
  char* get() const { return static_cast<char*>(block_); }
  std::size_t length() const { return length_; }
  // Makes it longer; what it held is kept. Without memory it stays as it is and gives false.
  bool Grow(std::size_t bytes) {
    void* const grown =
        isMapped_ ? CopyLarge(block_, length_, bytes) : ResizeLarge(block_, length_, bytes);
    if (grown == nullptr) return false;
    block_ = grown;
    length_ = bytes;
    isMapped_ = false;
    return true;
  }
  // Instead of what it held: MapLarge. False, and empty, where that cannot be done.
  bool Map(int fd, std::size_t fileBytes, std::size_t bytes) {
    reset();
    block_ = MapLarge(fd, fileBytes, bytes);
    isMapped_ = block_ != nullptr;
    length_ = isMapped_ ? bytes : 0;
    return isMapped_;
  }
  // Gives back what lies after the first `bytes` bytes, where that can be done.
  void Shrink(std::size_t bytes) {
    if (bytes < length_ && !isMapped_) Grow(bytes);
  }
  void swap(LargeBuffer& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(length_, other.length_);
    std::swap(isMapped_, other.isMapped_);
  }
  void reset() {
    FreeLarge(block_, length_);
    block_ = nullptr;
    length_ = 0;
    isMapped_ = false;
  }

 private:
  void* block_ = nullptr;
  std::size_t length_ = 0;
  bool isMapped_ = false;
};

// For the containers of the standard library.
template <class T>
struct LargeAllocator {
  using value_type = T;

  LargeAllocator() = default;
  template <class U>
  LargeAllocator(const LargeAllocator<U>&) {}

  T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_alloc();
    void* const block = AllocateLarge(count * sizeof(T));
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t count) { FreeLarge(block, count * sizeof(T)); }

  friend bool operator==(const LargeAllocator&, const LargeAllocator&) { return true; }
};

}  // namespace zvrsit::platform
