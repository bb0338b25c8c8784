// Double-byte code pages, for a tokenizer that knows single bytes.
#pragma once

#include <cstddef>

namespace zvrsit {

// Copies `length` bytes of text in the code page of the process, each trail byte made 0x80: a byte
// that means nothing to HTML. Trail bytes may equal letters, brackets and `\`, in code page 1361
// also "<", "=" and ">". A lead byte before a byte that cannot be a trail byte stands alone.
void MaskTrailBytes(const char* text, std::size_t length, char* masked);

}  // namespace zvrsit
