// The meaning of a part of HTML source, in the code page of the process: character references are
// decoded, line ends made one, NULs replaced. Everything is appended to `out`.
#pragma once

#include <string>
#include <string_view>

#include "dom/document.h"

namespace zvrsit {

void AppendText(std::string& out, std::string_view raw, TextKind kind);
void AppendAttributeValue(std::string& out, std::string_view raw);
// Comments, and the identifiers of document types.
void AppendPlain(std::string& out, std::string_view raw);
// Names of tags, attributes and document types, in lower case.
void AppendName(std::string& out, std::string_view raw);

// Appends what the bytes at the front of `raw`, which is not empty, stand for; how many they are.
std::size_t AppendFirstOfText(std::string& out, std::string_view raw, TextKind kind);
std::size_t AppendFirstOfAttribute(std::string& out, std::string_view raw);

// Whether decoding an attribute value or a text could change it. `raw` is a part of a document's
// text, so kTextPadding bytes after it are readable.
bool NeedsDecoding(std::string_view raw);

}  // namespace zvrsit
