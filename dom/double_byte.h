// Double-byte code pages, for a tokenizer that knows single bytes.
#pragma once

#include <cstddef>

namespace zvrsit {

// Copies `length` bytes of text in the code page of the process, with each trail byte replaced by
// 0x80, which means nothing to HTML. A trail byte may equal a letter, a bracket or `\`, in code
// page 1361 also "<", "=" or ">". A lead byte before a byte that cannot be a trail byte is a
// character by itself.
void MaskTrailBytes(const char* text, std::size_t length, char* masked);

}  // namespace zvrsit
