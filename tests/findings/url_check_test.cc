#include "findings/url_check.h"

#include <gtest/gtest.h>

namespace zvrsit::test {
namespace {

// What host and port may be, after the URL Standard (url.spec.whatwg.org).
TEST(FaultOfUrl, IsThatOfTheStandard) {
  const char* const kGood[] = {"http://example.org",
                               "HTTPS://Example.org:443/a?b#c",
                               "http:\\\\x:0/",
                               "http:///a",
                               "http://user:pa@ss@host/",
                               "http://[::1]:80/",
                               "http://[1::ffff:1.2.3.4]",
                               "http://a%62c/",
                               "http://h:00065535/",
                               "//host/x",
                               "ftp://h",
                               "http://ex_ample-.org/",
                               "mailto:",
                               "tel:1 2",
                               "x-other://[",
                               "http://h:/",
                               "http://caf\xC3\xA9/"};
  for (const char* url : kGood) EXPECT_EQ(FaultOfUrl(url), "") << url;
  const char* const kBad[] = {"http://",      "https://?q",     "http:#x",    "http://a b/",
                              "http://[x/",   "http://[::1",    "http://a<b", "http://h:65536/",
                              "http://h:8a/", "http://user@/x", "//",         "http://a%zz/",
                              "http://h:-1/", "ws://a|b",       "http://[]/", "http://h^/"};
  for (const char* url : kBad) EXPECT_NE(FaultOfUrl(url), "") << url;
}

}  // namespace
}  // namespace zvrsit::test
