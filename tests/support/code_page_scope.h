// A code page for the length of a test.
#pragma once

#include "platform/code_page.h"

namespace zvrsit::test {

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
