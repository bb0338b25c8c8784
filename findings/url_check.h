// Whether the URL of another site can be one.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// What is wrong with a URL, in words. Empty for a URL that is valid by the URL Standard
// (url.spec.whatwg.org), and for schemes other than http, https, ws, wss and ftp. No name is looked
// up.
std::string FaultOfUrl(std::string_view url);

}  // namespace zvrsit
