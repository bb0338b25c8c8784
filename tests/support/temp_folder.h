// Temporary folders, whole files, and bytes written as hex.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "platform/native_path.h"

namespace zvrsit::test {

// The whole file at a native path; empty when it cannot be read.
inline std::string ReadWhole(const std::string& nativePath) {
  std::ostringstream bytes;
  bytes << std::ifstream(nativePath, std::ios::binary).rdbuf();
  return std::move(bytes).str();
}

// Writes the file at a native path, and the folders above it that are missing.
inline void WriteWhole(const std::string& nativePath, std::string_view bytes) {
  std::ofstream out(nativePath, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::filesystem::create_directories(std::filesystem::path(nativePath).parent_path());
    out.open(nativePath, std::ios::binary | std::ios::trunc);
  }
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// The bytes of hex digits; whatever is no hex digit is skipped.
inline std::string FromHex(std::string_view hex) {
  std::string bytes;
  std::string digits;
  for (const char c : hex) {
    if (std::string_view("0123456789abcdefABCDEF").find(c) == std::string_view::npos) continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

// Lower-case hex, a space between two bytes.
inline std::string ToHex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!hex.empty()) hex += ' ';
    hex += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return hex;
}

// A little-endian 32-bit word.
inline std::string Word(std::uint32_t value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

// Where temporary folders are made: in memory where it has room, as the tests replace files many
// thousand times, for which some disks take a millisecond each.
inline std::filesystem::path TemporaryPlace() {
#if !defined(_WIN32)
  const std::filesystem::path memory = "/dev/shm";
  std::error_code missing;
  const bool hasRoom = std::filesystem::space(memory, missing).available >> 30 > 0;
  if (!missing && hasRoom) return memory;
#endif
  return std::filesystem::temp_directory_path();
}

// An empty folder of its own, removed with all that is in it at the end.
class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    std::filesystem::path folder;
    do {
      folder = TemporaryPlace() / ("zvrsit-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder));
    native_ = folder.string();
    platform::FromNativePath(native_, path_);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    if (!native_.empty()) std::filesystem::remove_all(native_, ignored);
  }

  // The folder itself, without a separator at its end.
  const std::string& native() const { return native_; }
  const std::string& path() const { return path_; }

  // A file below it: its native path from a native relative name, its `\` path from either kind.
  std::string native(const std::string& name) const { return native_ + "/" + name; }
  std::string path(const std::string& name) const {
    std::string relative = name;
    platform::FromNativePath(name, relative);
    // Where native names are `\` paths already, these still have the separators of the tests.
    std::replace(relative.begin(), relative.end(), '/', '\\');
    return path_ + "\\" + relative;
  }

  // Whole files by their native relative names.
  void write(const std::string& name, std::string_view bytes) const {
    WriteWhole(native(name), bytes);
  }
  std::string read(const std::string& name) const { return ReadWhole(native(name)); }
  bool has(const std::string& name) const { return std::filesystem::exists(native(name)); }
  void makeFolder(const std::string& name) const {
    std::filesystem::create_directories(native(name));
  }

 private:
  std::string native_;
  std::string path_;
};

}  // namespace zvrsit::test
