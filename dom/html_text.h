// What a slice of HTML source says: character references decoded, line ends made one, NULs
// replaced, in the code page of the process. Everything is appended to `out`.
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

// Whether reading an attribute value or a text could change it. `raw` is a part of a document's
// text, so that kTextPadding bytes behind it are readable.
bool NeedsDecoding(std::string_view raw);

}  // namespace zvrsit
