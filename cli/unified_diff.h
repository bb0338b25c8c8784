// Changes of files as people and `patch` read them.
#pragma once

#include <string>
#include <string_view>

#include "repair/file_edits.h"

namespace zvrsit::cli {

// The unified diff of one file with three lines of context, headed as git does it, so that
// `git apply` takes it. `from` and `to` are the names before and after; `edits`, which may be null
// for a file that is only renamed, were planned for `bytes`. A page in UTF-16 stands there as
// it is, byte for byte: `git apply` and `patch` take that too.
std::string UnifiedDiff(const std::string& from, const std::string& to, std::string_view bytes,
                        const FileEdits* edits);

// The same of a file that is removed, with `bytes` and the mode that git has for it ("100644"). Of
// one with NUL bytes, such as an image, it is only said that it goes.
std::string RemovalDiff(const std::string& name, std::string_view bytes, const char* mode);

}  // namespace zvrsit::cli
