// What is decided without asking anybody.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>

#include "external/answer.h"
#include "external/kept_answers.h"
#include "external/own_network.h"
#include "external/robots.h"
#include "external/url.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

bool IsOwn(const std::string& text) {
  sockaddr_in6 v6{};
  v6.sin6_family = AF_INET6;
  sockaddr_in v4{};
  v4.sin_family = AF_INET;
  if (inet_pton(AF_INET6, text.c_str(), &v6.sin6_addr) == 1) {
    return IsOwnNetwork(reinterpret_cast<const sockaddr&>(v6));
  }
  EXPECT_EQ(inet_pton(AF_INET, text.c_str(), &v4.sin_addr), 1) << text;
  return IsOwnNetwork(reinterpret_cast<const sockaddr&>(v4));
}

// The first and last addresses of each block, and those next to it.
TEST(OwnNetwork, EndsWhereTheRegistriesSay) {
  for (const char* own : {"0.0.0.0",
                          "10.0.0.0",
                          "10.255.255.255",
                          "100.64.0.0",
                          "100.127.255.255",
                          "127.0.0.1",
                          "127.255.255.255",
                          "169.254.169.254",
                          "172.16.0.1",
                          "172.31.255.255",
                          "192.0.0.8",
                          "192.168.0.1",
                          "198.18.0.1",
                          "198.19.255.255",
                          "224.0.0.1",
                          "239.1.2.3",
                          "255.255.255.255",
                          "::",
                          "::1",
                          "fc00::1",
                          "fdff::1",
                          "fe80::1",
                          "febf::1",
                          "fec0::1",
                          "ff02::1",
                          "::ffff:127.0.0.1",
                          "::ffff:10.1.2.3",
                          "::10.0.0.1",
                          "64:ff9b::192.168.1.1",
                          "2002:7f00:1::",
                          "2001:db8::1"}) {
    EXPECT_TRUE(IsOwn(own)) << own;
  }
  for (const char* other :
       {"1.0.0.1",          "9.255.255.255", "11.0.0.0",        "100.63.255.255", "100.128.0.0",
        "126.255.255.255",  "128.0.0.1",     "169.253.255.255", "169.255.0.0",    "172.15.255.255",
        "172.32.0.0",       "192.0.1.1",     "192.167.255.255", "192.169.0.0",    "198.17.255.255",
        "198.20.0.0",       "223.255.1.1",   "2606:4700::1",    "2a00::1",        "::ffff:8.8.8.8",
        "64:ff9b::8.8.8.8", "2002:808:808::"}) {
    EXPECT_FALSE(IsOwn(other)) << other;
  }
}

TEST(Url, IsTakenApartAsBrowsersDo) {
  const auto base = ParseUrl("http://host:8080/dir/page?q");
  ASSERT_TRUE(base);
  const struct {
    const char* text;
    const char* url;  // empty: none
    const char* origin;
    const char* path;
  } rows[] = {
      {" HTTP://Example.ORG ", "http://example.org/", "http://example.org:80", "/"},
      {"https:\\\\a.b\\c d?e f#g", "https://a.b/c%20d?e%20f", "https://a.b:443", "/c%20d?e%20f"},
      {"https://u:p@a.b:443/x", "https://a.b/x", "https://a.b:443", "/x"},
      {"ht\ntp://a.b/\tx", "http://a.b/x", "http://a.b:80", "/x"},
      {"http://[::1]:80/", "http://[::1]/", "http://[::1]:80", "/"},
      {"//other/x", "http://other/x", "http://other:80", "/x"},
      {"/x", "http://host:8080/x", "http://host:8080", "/x"},
      {"x", "http://host:8080/dir/x", "http://host:8080", "/dir/x"},
      {"../x", "http://host:8080/x", "http://host:8080", "/x"},
      {"?r", "http://host:8080/dir/page?r", "http://host:8080", "/dir/page?r"},
      {"", "http://host:8080/dir/page?q", "http://host:8080", "/dir/page?q"},
      {"http://B\xC3\xBC"
       "cher.example/\xC3\xBC",
       "http://xn--bcher-kva.example/%C3%BC", "http://xn--bcher-kva.example:80", "/%C3%BC"},
      {"ftp://a.b/", "", "", ""},
      {"javascript:x", "", "", ""},
      {"http://", "", "", ""},
      {"http://a b/", "", "", ""},
      {"http://a\x01/", "", "", ""},
  };
  for (const auto& row : rows) {
    const auto parsed = ParseUrl(row.text, &*base);
    EXPECT_EQ(parsed ? parsed->url : "", row.url) << row.text;
    EXPECT_EQ(parsed ? parsed->origin : "", row.origin) << row.text;
    EXPECT_EQ(parsed ? parsed->path : "", row.path) << row.text;
  }
  EXPECT_EQ(ParseUrl("//h/")->url, "https://h/");
  EXPECT_EQ(ParseUrl("https://h/%23#a%20b")->fragment, "a%20b");
  EXPECT_EQ(ParseUrl("http://u%40:p%3a@h/")->user + ParseUrl("http://u%40:p%3a@h/")->password,
            "u@p:");
  EXPECT_FALSE(ParseUrl("/x"));
}

// After the examples of RFC 9309 and what the servers of this world write.
TEST(Robots, FollowsTheLongestRule) {
  const char* const kText =
      "\xEF\xBB\xBFUser-Agent: other\nDisallow: /\n\n"
      "user-agent: ZVRSIT # us\nUser-agent: more\r\n\r\nDisallow: /a\nAllow: /a/b\nDisallow:\n"
      "disallow: /*.gif$\nDisallow: /x*y*z\nAllow: /same\nDisallow: /same\nSitemap: /s\n"
      "User-agent: *\nDisallow: /all\n";
  const Robots own(kText, "zvrsit/1.0 (x)");
  for (const char* path : {"/", "/b", "/a/b", "/a/bc", "/x.gif?", "/same", "/xz", "/X/y/z"}) {
    EXPECT_TRUE(own.Allows(path)) << path;
  }
  for (const char* path : {"/a", "/ab", "/a/c", "/x.gif", "/d/x.gif", "/x/y/z", "/xyz?"}) {
    EXPECT_FALSE(own.Allows(path)) << path;
  }
  EXPECT_FALSE(Robots(kText, "other").Allows("/b"));
  EXPECT_FALSE(Robots(kText, "stranger").Allows("/all/x"));
  EXPECT_TRUE(Robots(kText, "stranger").Allows("/a"));
  EXPECT_TRUE(Robots().Allows("/"));
  // A rule that matches nowhere, and would take long if every way were tried.
  std::string hostile = "User-agent: *\nDisallow: /";
  for (int i = 0; i < 2000; ++i) hostile += "*a";
  EXPECT_TRUE(Robots(hostile + "b\n", "x").Allows("/" + std::string(20000, 'a')));
}

TEST(KeptAnswers, OfTwoRunsDoNotWaitForEachOther) {
  const TempFolder folder;
  const std::string file = folder.native("kept");
  const Answer good{std::time(nullptr), 200, {}, "", "", "", false, {}};
  const Answer gone{std::time(nullptr), 404, {}, "", "", "", false, {}};
  {
    KeptAnswers one(file), other(file);
    one.Keep("http://a/", good);
    other.Keep("http://b/", gone);
    other.WriteSometimes();
    one.Keep("http://b/", good);
    EXPECT_EQ(one.fault() + other.fault(), "");
    EXPECT_EQ(one.Find("http://b/").value_or(Answer()).status, 404);
  }
  EXPECT_EQ(KeptAnswers(file).Find("http://b/").value_or(Answer()).status, 200);
}

TEST(Answer, GrowsStaleAfterItsKind) {
  ExternalSettings settings;
  settings.okAge = settings.movedAge = std::chrono::seconds(100);
  settings.brokenAge = std::chrono::seconds(50);
  settings.unsureAge = std::chrono::seconds(10);
  const struct {
    Answer answer;
    int age;
  } rows[] = {
      {{0, 200, {}, "", "", "", false, {}}, 100},
      {{0, 200, {}, "", "http://m/", "http://m/", false, {}}, 100},
      {{0, 404, {}, "", "", "", false, {}}, 50},
      {{0, 503, {}, "", "", "", false, {}}, 10},
      {{0, 200, {}, "", "", "http://login/", true, {}}, 10},
      {{0, 0, ExternalFault::kUnknownHost, "", "", "", false, {}}, 10},
      {{0, 0, ExternalFault::kTimeout, "", "", "", false, {}}, 10},
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(IsStale(row.answer, settings, row.age - 1)) << row.age;
    EXPECT_TRUE(IsStale(row.answer, settings, row.age)) << row.age;
    EXPECT_TRUE(IsStale(row.answer, settings, -1)) << "the clock was wrong";
  }
}

}  // namespace
}  // namespace zvrsit::test
