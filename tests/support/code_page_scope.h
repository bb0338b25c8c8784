// A code page for the length of a test.
#pragma once

#include <string>
#include <string_view>

#include "platform/code_page_text.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace zvrsit::test {

// The code page that the names of files are in.
inline unsigned PageOfFileNames() {
#if defined(_WIN32)
  return ::GetACP();
#else
  return platform::kUtf8;
#endif
}

// A text of the test in the code page in force; what it lacks is "?".
inline std::string InCodePage(std::string_view utf8) {
  std::string text;
  platform::ConvertToCodePage(utf8, "utf-8", text);
  return text;
}

class CodePageScope {
 public:
  explicit CodePageScope(unsigned codePage)
      : before_(platform::CodePage()), known_(platform::SetCodePage(codePage) == 0) {}
  CodePageScope(const CodePageScope&) = delete;
  CodePageScope& operator=(const CodePageScope&) = delete;
  ~CodePageScope() { platform::SetCodePage(before_); }

  bool known() const { return known_; }

 private:
  unsigned before_;
  bool known_;
};

}  // namespace zvrsit::test
