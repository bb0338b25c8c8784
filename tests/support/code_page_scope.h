// A code page for the length of a test.
#pragma once

#include "platform/code_page.h"

namespace zvrsit::test {

class CodePageScope {
 public:
  explicit CodePageScope(unsigned codePage) : known_(platform::SetCodePage(codePage) == 0) {}
  CodePageScope(const CodePageScope&) = delete;
  CodePageScope& operator=(const CodePageScope&) = delete;
  ~CodePageScope() { platform::SetCodePage(platform::kUtf8); }

  bool known() const { return known_; }

 private:
  bool known_;
};

}  // namespace zvrsit::test
