// Sets the code page for one test and takes it back afterwards.
#pragma once

#include "platform/code_page.h"

namespace zvrsit {

class CodePageGuard {
 public:
  explicit CodePageGuard(unsigned codePage) : before_(platform::CodePage()) {
    platform::SetCodePage(codePage);
  }
  ~CodePageGuard() { platform::SetCodePage(before_); }
  CodePageGuard(const CodePageGuard&) = delete;
  CodePageGuard& operator=(const CodePageGuard&) = delete;

 private:
  unsigned before_;
};

}  // namespace zvrsit
