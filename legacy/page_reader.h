// What a manager needs to read pages; made with the first page and kept from page to page.
#pragma once

#include <string>

#include "dom/code_conv.h"
#include "dom/dom.h"
#include "dom/mapped_file.h"
#include "links/extractor.h"
#include "links/target_resolver.h"

namespace zvrsit {

struct SitPageReader {
  DOM ownDom;  // for a manager that was given none
  MappedFile file;
  CodeConv conversion;
  PageRows rows;
  TargetResolver resolver;
  std::string target;  // scratch of RegisterTarget
};

}  // namespace zvrsit
