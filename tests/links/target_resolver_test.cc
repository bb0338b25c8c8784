// Where targets lead, and as which text; url_cases_test.cc has more of them.
#include "links/target_resolver.h"

#include <gtest/gtest.h>

#include "support/code_page_scope.h"

namespace zvrsit {
namespace {

struct Case {
  const char* target;
  const char* place;  // a path, a URL, or one of the two below
};
constexpr const char* kNothing = "(nothing)";
constexpr const char* kNoFile = "(no file)";

std::string Place(TargetResolver& resolver, const std::string& target) {
  std::string out;
  switch (resolver.Resolve(target, out)) {
    case TargetKind::kNone:
      return kNothing;
    case TargetKind::kUnservable:
    case TargetKind::kUnresolvable:
      return kNoFile;
    default:
      return out;
  }
}

void ExpectPlaces(TargetResolver& resolver, std::initializer_list<Case> cases) {
  for (const Case& c : cases) EXPECT_EQ(Place(resolver, c.target), c.place) << c.target;
}

class TargetResolverTest : public testing::Test {
 protected:
  TargetResolverTest() { resolver_.BeginPage("\\site", "\\site\\docs\\a.htm"); }

  TargetResolver resolver_{LinkRules::Web};
};

TEST_F(TargetResolverTest, NamesFilesOfTheSite) {
  ExpectPlaces(resolver_, {
                              {"b.htm", "\\site\\docs\\b.htm"},
                              {"../b.htm", "\\site\\b.htm"},
                              {"/b.htm", "\\site\\b.htm"},
                              {"x//y///b.htm", "\\site\\docs\\x\\y\\b.htm"},
                              // An empty segment is one that ".." takes away.
                              {"x//../b.htm", "\\site\\docs\\x\\b.htm"},
                              {"x//..//../b.htm", "\\site\\docs\\x\\b.htm"},
                              {"x///../../../b.htm", "\\site\\docs\\b.htm"},
                              {"/.//../b.htm", "\\site\\b.htm"},
                              {"/", "\\site\\"},
                              {"a:b/c.htm", "a:b/c.htm"},
                              // The scheme of a web page, without a host, says nothing new.
                              {"http:b.htm#x", "\\site\\docs\\b.htm"},
                              {"HTTPS:/b.htm", "\\site\\b.htm"},
                              {"http:..\\b.htm", "\\site\\b.htm"},
                              {"https:?q", "\\site\\docs\\a.htm"},
                          });
}

TEST_F(TargetResolverTest, StopsAtTheRoot) {
  ExpectPlaces(resolver_, {{"../../../../b.htm", "\\site\\b.htm"},
                           {"/../b.htm", "\\site\\b.htm"},
                           {"/../../x/../..", "\\site\\"}});
  resolver_.BeginPage("\\site\\", "\\elsewhere\\deep\\a.htm");
  ExpectPlaces(resolver_, {{"../b.htm", "\\elsewhere\\b.htm"},
                           {"../../../../b.htm", "\\b.htm"},
                           {"/b.htm", "\\site\\b.htm"}});
}

TEST_F(TargetResolverTest, DecodesAFileNameOnce) {
  ExpectPlaces(resolver_, {{"a%20b%2520.htm", "\\site\\docs\\a b%20.htm"},
                           {"%E3%81%82.htm", "\\site\\docs\\\xE3\x81\x82.htm"},
                           {"%4", "\\site\\docs\\%4"},
                           {"x/a%2Fb/../../y%00/../b.htm", "\\site\\docs\\b.htm"},
                           {"a%2Fb/c%5Cd/../e.htm", kNoFile},
                           {"a%2Fb/..", "\\site\\docs\\"}});
}

TEST_F(TargetResolverTest, TellsOtherPlacesApart) {
  ExpectPlaces(resolver_, {{"https://h/x#y", "https://h/x#y"},
                           {"\x01 HTTPS://h/x\n", "HTTPS://h/x"},
                           {"//h/x", "//h/x"},
                           {"\\\\h\\x", "\\\\h\\x"},
                           {"http:\\/h/x", "http:\\/h/x"},
                           {"ftp:b.htm", "ftp:b.htm"},
                           {"mailto:a@b", "mailto:a@b"},
                           {"c:\\x.htm", "c:\\x.htm"},
                           {"x+y-1.z:b", "x+y-1.z:b"},
                           {"x_y:b", "\\site\\docs\\x_y:b"},
                           {"about:blank", kNothing}});
}

TEST_F(TargetResolverTest, FollowsALocalBase) {
  resolver_.SetBase("../other/page.htm?q#f");
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\other\\b.htm"},
                           {"../../b.htm", "\\site\\b.htm"},
                           {"/b.htm", "\\site\\b.htm"},
                           {"#x", "\\site\\other\\page.htm"},
                           {"https://h/", "https://h/"}});
  // Its empty segments are ones that ".." takes away.
  const std::string plain = resolver_.baseText();
  resolver_.SetBase("/other//page.htm");
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\other\\b.htm"},
                           {"../b.htm", "\\site\\other\\b.htm"},
                           {"../../b.htm", "\\site\\b.htm"}});
  EXPECT_NE(resolver_.baseText(), plain);
  resolver_.SetBase("/x//.");
  ExpectPlaces(resolver_, {{"../b.htm", "\\site\\x\\b.htm"}});
  resolver_.BeginPage("\\site\\", "\\site\\a.htm");
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\b.htm"}});
  for (const char* useless : {"javascript:x", "data:,x", "a%00", "", "http://", "//?x"})
    resolver_.SetBase(useless);
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\b.htm"}, {"#x", "\\site\\a.htm"}});
}

TEST_F(TargetResolverTest, JoinsToAnExternalBase) {
  resolver_.SetBase("https://h:8/x/y/z.htm?q#f");
  ExpectPlaces(resolver_, {{"b.htm?r#s", "https://h:8/x/y/b.htm?r#s"},
                           {"../b.htm", "https://h:8/x/b.htm"},
                           {"../../../b.htm", "https://h:8/b.htm"},
                           {"..", "https://h:8/x/"},
                           {"./", "https://h:8/x/y/"},
                           {"/a/./b", "https://h:8/a/b"},
                           {"?r", "https://h:8/x/y/z.htm?r"},
                           {"#s", "https://h:8/x/y/z.htm?q#s"},
                           {"//g/x", "https://g/x"},
                           {"ftp://g/x", "ftp://g/x"},
                           {"HTTPS:b.htm", "https://h:8/x/y/b.htm"},
                           {"https:#s", "https://h:8/x/y/z.htm?q#s"},
                           {"http:b.htm", "http:b.htm"},
                           {"v//../b.htm", "https://h:8/x/y/v/b.htm"},
                           {"javascript:x", kNothing}});
  resolver_.BeginPage("\\site\\", "\\site\\a.htm");
  resolver_.SetBase("//h");
  ExpectPlaces(resolver_, {{"b.htm", "//h/b.htm"}, {"/b.htm", "//h/b.htm"}});
}

TEST_F(TargetResolverTest, TakesTheLiveAddressForTheSite) {
  resolver_.SetLiveUrl("https://Example.org", "\\site\\");
  resolver_.BeginPage("\\site", "\\site\\docs\\a.htm");
  ExpectPlaces(resolver_, {{"https://example.org", "\\site\\"},
                           {"http://EXAMPLE.org:80/docs/b%20c.htm?q#x", "\\site\\docs\\b c.htm"},
                           {"//example.org:443/x/../b.htm", "\\site\\b.htm"},
                           {"http://example.org:443/b", "http://example.org:443/b"},
                           {"https://www.example.org/b", "https://www.example.org/b"},
                           {"ftp://example.org/b", "ftp://example.org/b"},
                           {"../../b.htm", "\\site\\b.htm"}});
  resolver_.SetBase("http://example.org/other/");
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\other\\b.htm"}});
  resolver_.SetBase("http://elsewhere.org/x/");
  ExpectPlaces(resolver_, {{"//example.org/b.htm", "\\site\\b.htm"}});
  resolver_.SetBase("https://example.org/other/");
  ExpectPlaces(resolver_, {{"b.htm", "\\site\\other\\b.htm"},
                           {"https:c.htm", "\\site\\other\\c.htm"},
                           {"http:c.htm", "http:c.htm"}});
}

// A site below the root of its server is left by "/" and by "..", and entered again by its folder.
TEST_F(TargetResolverTest, TakesTheFolderOfTheLiveAddressForTheSite) {
  resolver_.SetLiveUrl("http://h:8080/%7Eann/www", "\\site\\");
  resolver_.BeginPage("\\site\\", "\\site\\50% #1\\a.htm");
  ExpectPlaces(resolver_, {{"http://H:8080/~ann/www/b.htm", "\\site\\b.htm"},
                           {"http://h:8080/~ann/www", "\\site\\"},
                           {"http://h:8080/~ann/www2/b.htm", "http://h:8080/~ann/www2/b.htm"},
                           {"http://h/~ann/www/b.htm", "http://h/~ann/www/b.htm"},
                           {"/~ann/www/b.htm#x", "\\site\\b.htm"},
                           {"/b.htm?q", "http://h:8080/b.htm?q"},
                           {"b.htm", "\\site\\50% #1\\b.htm"},
                           {"x/../b.htm", "\\site\\50% #1\\b.htm"},
                           {"%62.htm", "\\site\\50% #1\\b.htm"},
                           {"../b.htm", "\\site\\b.htm"},
                           {"../../b.htm", "http://h:8080/%7Eann/b.htm"},
                           {"../../www/b.htm", "\\site\\b.htm"},
                           {"#x", "\\site\\50% #1\\a.htm"}});
  resolver_.SetBase("x//y.htm");
  ExpectPlaces(resolver_, {{"../b.htm", "\\site\\50% #1\\x\\b.htm"}});
  // With a document root, "/" is that.
  resolver_.SetLiveUrl("http://h/www/", "\\root\\www\\");
  resolver_.BeginPage("\\root\\", "\\root\\www\\a.htm");
  ExpectPlaces(resolver_, {{"http://h/www/b.htm", "\\root\\www\\b.htm"},
                           {"/b.htm", "\\root\\b.htm"},
                           {"../b.htm", "\\root\\b.htm"}});
}

TEST(LiveAddress, IsAnAbsoluteUrlOfAFolder) {
  for (const char* url : {"http://h", "HTTPS://h:65535/x/y/", "http://[::1]/", "http://h/x%20y"}) {
    EXPECT_TRUE(LiveAddress(url).isSet()) << url;
  }
  for (const char* url :
       {"", "foo", "h.org/x", "//h/x", "http:", "http://", "http:///x", "http:/h/", "ftp://h/",
        "http://me@h/", "http://h/?q", "http://h/#x", "http://:80/", "http://h:x/", "http://h:0/",
        "http://h:65536/", "http://h/x y"}) {
    EXPECT_FALSE(LiveAddress(url).isSet()) << url;
  }
}

TEST(TargetOfFolder, IsNotTheWayToNameThePageItself) {
  for (const char* own : {"", "#x", "?q", " b.htm", "http:", "http:#x", "ht\ntp:?q", "http:\n#x"}) {
    EXPECT_FALSE(IsTargetOfFolder(own)) << own;
  }
  for (const char* shared : {"b.htm", "b.htm#x", "/", "http:b.htm", "https://h/?q", "mailto:a"}) {
    EXPECT_TRUE(IsTargetOfFolder(shared)) << shared;
  }
}

TEST_F(TargetResolverTest, LeavesDoubleByteCharactersWhole) {
  const test::CodePageScope shiftJis(932);
  const std::string name = "\x95\x5C";  // one character whose trail byte is a backslash
  resolver_.BeginPage("\\s\\", "\\s\\" + name + "\\a.htm");
  EXPECT_EQ(Place(resolver_, name + ".htm"), "\\s\\" + name + "\\" + name + ".htm");
  EXPECT_EQ(Place(resolver_, "../b.htm"), "\\s\\b.htm");
  EXPECT_EQ(Place(resolver_, "%95%5C.htm"), "\\s\\" + name + "\\" + name + ".htm");
  // The same character in UTF-8, as a browser sends it.
  EXPECT_EQ(Place(resolver_, "%E8%A1%A8.htm"), "\\s\\" + name + "\\" + name + ".htm");
  EXPECT_EQ(Place(resolver_, name + "%E8%A1%A8.htm"), "\\s\\" + name + "\\" + name + name + ".htm");
  // A lead byte alone would swallow the separator after it.
  EXPECT_EQ(Place(resolver_, "%95/b.htm"), kNoFile);
  EXPECT_EQ(Place(resolver_, "a%5Cb.htm"), kNoFile);
  // Half of a surrogate pair is no character in UTF-8: these are the bytes of the name.
  EXPECT_EQ(Place(resolver_, "%ED%A0%80.htm"), "\\s\\" + name + "\\\xED\xA0\x80.htm");
}

TEST_F(TargetResolverTest, TakesLinearTime) {
  std::string climb;
  std::string deep;
  for (int i = 0; i < 300000; ++i) {
    climb += "../";
    deep += "a/";
  }
  EXPECT_EQ(Place(resolver_, deep + climb + "b.htm"), "\\site\\docs\\b.htm");
  resolver_.SetBase(deep);
  EXPECT_EQ(Place(resolver_, climb + climb + "b.htm"), "\\site\\b.htm");
  EXPECT_EQ(Place(resolver_, "b.htm").size(), 11 + 2 * 300000 + 5);
}

}  // namespace
}  // namespace zvrsit
