// Whether the URL of another site can be one.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// What is wrong with a URL, in words. Empty for a URL that is valid by the URL Standard
// (url.spec.whatwg.org), and for schemes other than http, https, ws, wss and ftp. No name is looked
// up.
std::string FaultOfUrl(std::string_view url);

// Whether it is a URL of http or https, with a host; also when it begins with "//".
bool IsWebUrl(std::string_view url);

// The URL without its user and password, as it may be shown. Unchanged when it has none, or is no
// URL. Names of files and references are shown so too: to the classic rules "https:" is a folder.
std::string WithoutCredentials(std::string_view url);

// The host of a URL, in lower case, with its port; empty for none.
std::string HostOfUrl(std::string_view url);

}  // namespace zvrsit
