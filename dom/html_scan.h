// The rarer constructs of HTML markup: comments, document types, CDATA sections and script text.
// Each scan starts inside its construct and is linear in what it passes over.
#pragma once

#include <string_view>

#include "dom/byte_search.h"

namespace zvrsit {

// Where the data of a construct ends, and where the text goes on after it.
struct Extent {
  const char* dataEnd;
  const char* next;
};

// From after "<!--" to after "-->", or to the end of the text.
Extent ScanComment(const char* from, const char* end);
// Anything else that begins like markup: up to the next ">".
Extent ScanBogusComment(const char* from, const char* end);
// From after "<![CDATA[" to after "]]>".
Extent ScanCdata(const char* from, const char* end);

// A document type. Fields that are not there are null views.
struct DoctypeToken {
  std::string_view name;
  std::string_view publicId;
  std::string_view systemId;
  bool forceQuirks = false;
};

// From after "<!DOCTYPE"; gives where the text goes on.
const char* ScanDoctype(const char* from, const char* end, DoctypeToken& doctype);

// Whether "</" at `from` begins the end tag of `name`, in any ASCII case. No name, no end tag.
bool IsEndTagOf(const char* from, const char* end, std::string_view name);

// The "</" that ends script text, or `end`. `name` is the element's name; text inside a comment
// with a nested script element does not end it.
const char* ScanScriptData(const char* from, const char* end, std::string_view name);

// Whether [from, end) begins with `lowerCase`, in any ASCII case.
bool BeginsWithNoCase(const char* from, const char* end, std::string_view lowerCase);

}  // namespace zvrsit
