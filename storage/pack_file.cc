#include "storage/pack_file.h"

#include <cstring>

#include "util/little_endian.h"

namespace zvrsit {

int PackFile::WriteWord(int offset, std::int32_t word) {
  char bytes[4];
  StoreLE32(bytes, word);
  return WriteAt(bytes, offset, 4) == 4 ? 0 : -1;
}

int PackFile::Finish(const char* headerBytes, std::int32_t word1, std::int32_t word2) {
  std::memcpy(magic, headerBytes, kMagicSize);
  headerWord1 = word1;
  headerWord2 = word2;
  dirty = true;
  return Close();
}

}  // namespace zvrsit
