#include "external/own_network.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace zvrsit {
namespace {

using Bytes = std::span<const std::uint8_t>;

// The addresses that begin with the first `bits` of `bytes`.
struct Block {
  std::array<std::uint8_t, 16> bytes;
  int bits;
};

// After the registries of special-purpose addresses (RFC 6890) and of multicast.
constexpr Block kOwn4[] = {
    {{0}, 8},        {{10}, 8},         {{100, 64}, 10},      {{127}, 8},         {{169, 254}, 16},
    {{172, 16}, 12}, {{192, 0, 0}, 24}, {{192, 168}, 16},     {{198, 18}, 15},    {{224}, 4},
    {{240}, 4},      {{192, 0, 2}, 24}, {{198, 51, 100}, 24}, {{203, 0, 113}, 24}};
constexpr Block kOwn6[] = {{{0}, 127},  // ::
                           {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 128},
                           {{0xFC}, 7},
                           {{0xFE, 0x80}, 10},
                           {{0xFE, 0xC0}, 10},
                           {{0xFF}, 8},
                           {{0x01}, 8},
                           {{0x20, 0x01, 0x0D, 0xB8}, 32}};
// Where an IPv4 address stands within, from that byte on.
struct Carrier {
  Block block;
  std::size_t at;
};
constexpr Carrier kCarriers[] = {
    {{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF}, 96}, 12},
    {{{0}, 96}, 12},
    {{{0x00, 0x64, 0xFF, 0x9B}, 96}, 12},
    {{{0x00, 0x64, 0xFF, 0x9B, 0x00, 0x01}, 48}, 12},
    {{{0x20, 0x02}, 16}, 2},
};

bool IsIn(Bytes address, const Block& block) {
  const auto whole = static_cast<std::size_t>(block.bits / 8);
  if (!std::equal(address.begin(), address.begin() + static_cast<std::ptrdiff_t>(whole),
                  block.bytes.begin())) {
    return false;
  }
  const int left = block.bits % 8;
  return left == 0 || (address[whole] ^ block.bytes[whole]) >> (8 - left) == 0;
}

bool IsOwn4(Bytes address) {
  return std::ranges::any_of(kOwn4, [&](const Block& block) { return IsIn(address, block); });
}

bool IsOwn6(Bytes address) {
  if (std::ranges::any_of(kOwn6, [&](const Block& block) { return IsIn(address, block); })) {
    return true;
  }
  return std::ranges::any_of(kCarriers, [&](const Carrier& carrier) {
    return IsIn(address, carrier.block) && IsOwn4(address.subspan(carrier.at, 4));
  });
}

struct AddressFreer {
  void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

}  // namespace

bool IsOwnNetwork(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    sockaddr_in v4;
    std::memcpy(&v4, &address, sizeof v4);
    std::array<std::uint8_t, 4> bytes;
    std::memcpy(bytes.data(), &v4.sin_addr, bytes.size());
    return IsOwn4(bytes);
  }
  if (address.sa_family != AF_INET6) return true;
  sockaddr_in6 v6;
  std::memcpy(&v6, &address, sizeof v6);
  return IsOwn6(v6.sin6_addr.s6_addr);
}

bool NamesOwnNetwork(const std::string& name) {
  const std::string host = name.substr(0, name.size() - (name.ends_with('.') ? 1 : 0));
  if (host == "localhost" || host.ends_with(".localhost")) return true;
  std::array<std::uint8_t, 16> bytes;
  if (inet_pton(AF_INET, host.c_str(), bytes.data()) == 1) return IsOwn4(bytes);
  if (host.size() < 2 || host.front() != '[') return false;
  std::string inner = host.substr(1, host.size() - 2);
  inner.resize(std::min(inner.find('%'), inner.size()));  // without a zone
  return inet_pton(AF_INET6, inner.c_str(), bytes.data()) == 1 && IsOwn6(bytes);
}

bool LiesInOwnNetwork(const std::string& host) {
  if (NamesOwnNetwork(host)) return true;
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (host.starts_with('[') || getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0)
    return false;
  const std::unique_ptr<addrinfo, AddressFreer> list(found);
  for (const addrinfo* one = found; one != nullptr; one = one->ai_next) {
    if (IsOwnNetwork(*one->ai_addr)) return true;
  }
  return false;
}

}  // namespace zvrsit
