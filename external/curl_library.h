// libcurl, loaded when it is first used: with the thirty libraries that it needs, it would add 6 ms
// to the start of every command.
#pragma once

#include <curl/curl.h>

namespace zvrsit {

// The functions that are used, without "curl_".
// clang-format off
#define ZVRSIT_CURL_FUNCTIONS(F)                                                             \
  F(easy_cleanup) F(easy_getinfo) F(easy_init) F(easy_reset) F(easy_setopt) F(easy_strerror) \
  F(easy_unescape) F(free) F(global_cleanup) F(global_init) F(multi_add_handle)              \
  F(multi_cleanup) F(multi_info_read) F(multi_init) F(multi_perform) F(multi_poll)           \
  F(multi_remove_handle) F(multi_setopt) F(share_cleanup) F(share_init) F(share_setopt)      \
  F(url) F(url_cleanup) F(url_get) F(url_set)
// clang-format on

struct CurlLibrary {
// NOLINTNEXTLINE(bugprone-macro-parentheses): it is the name of a member
#define ZVRSIT_CURL_POINTER(name) decltype(&::curl_##name) name = nullptr;
  ZVRSIT_CURL_FUNCTIONS(ZVRSIT_CURL_POINTER)
#undef ZVRSIT_CURL_POINTER
};

// Why libcurl cannot be used here, in the words of the system; null when it can.
const char* WhyNoCurl();
// Must be called only where WhyNoCurl gave null. It stays loaded.
const CurlLibrary& Curl();

}  // namespace zvrsit
