// What the page of a report is made of: the files of web/view, as web/embed.py has joined them.
#pragma once

#include <string_view>

namespace zvrsit {

struct ViewTexts {
  std::string_view page;        // with marks such as <!--data-->
  std::string_view style;       // of a STYLE element
  std::string_view styleHash;   // for a content security policy: "sha256-..."
  std::string_view script;      // of a SCRIPT element, a module
  std::string_view scriptHash;  // likewise
  std::string_view overlay;     // a script that marks findings in the pages of a site
};
extern const ViewTexts kView;

}  // namespace zvrsit
