// Pages that hold code for the server beside their HTML.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// Stands in the place of every byte of server code: no file name holds it, and no white space is
// taken for it.
inline constexpr char kServerCode = '\x7F';

// Overwrites the server code of a page with kServerCode, so that what is left can be read as HTML
// and every place stays where it was. Server code is
//   <? ... ?>  PHP, with its strings, comments and here-documents; if it has no end, the rest of
//              the page
//   <% ... %>  ASP and JSP, and <%-- ... --%>
//   ${...}, #{...}, {{...}}, {%...%}, {!!...!!}  expressions of templates, where they end
//   <x:y ...>  tags of tag libraries, except those of SVG
void HideServerCode(std::string& page);

// Whether the text holds server code: only the server knows what will stand there.
inline bool HoldsServerCode(std::string_view text) {
  return text.find(kServerCode) != std::string_view::npos;
}

}  // namespace zvrsit
