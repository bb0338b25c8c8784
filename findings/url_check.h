// Whether the URL of another site can be one.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// What is wrong with a URL, in words; empty for one that the URL Standard (url.spec.whatwg.org)
// lets pass, and for schemes other than http, https, ws, wss and ftp. Nothing is looked up.
std::string FaultOfUrl(std::string_view url);

}  // namespace zvrsit
