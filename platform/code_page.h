// The ANSI code page of the process: the encoding of every narrow string of the library.
#pragma once

#include <string>
#include <string_view>

#include "platform/api.h"

namespace zvrsit::platform {

inline constexpr unsigned kUtf8 = 65001;

// Sets the code page: 65001 (UTF-8, where POSIX begins), 932, 936, 949, 950, 1361, or a single-byte
// page (1250 to 1258, 874, 437, 850, 28591 to 28605, 20866, 21866). 0, or -1 for a page that is not
// known. On Windows the system's own page is used until this is called, and names of files are
// always in that page. Other pages with one or two bytes a character are known there if the system
// has them.
ZVRSIT_API int SetCodePage(unsigned codePage);
ZVRSIT_API unsigned CodePage();

// Text of the code page in UTF-8, for programs that print.
ZVRSIT_API std::string ToUtf8(std::string_view text);

}  // namespace zvrsit::platform
