// Addresses of the machine's own network, which a page from elsewhere must not make us ask.
#pragma once

#include <string>

struct sockaddr;

namespace zvrsit {

// Whether an address is none of the public internet: loopback, private, shared by a provider,
// link-local, unique local, unspecified, multicast, kept for tests or reserved; also where it is
// written within an IPv6 address (mapped, translated, 6to4). An address of another family is.
bool IsOwnNetwork(const sockaddr& address);

// The same of a host that is written as such an address, or named localhost, also with the dot of a
// full name. Asks nobody.
bool NamesOwnNetwork(const std::string& name);

// Whether a host lies there: by its name, or by one of the addresses that its name has. Asks for
// them, and waits.
bool LiesInOwnNetwork(const std::string& host);

}  // namespace zvrsit
