// Targets of a page at http://example.org/docs/a.htm, and where the URL Standard
// (url.spec.whatwg.org) has them lead.
#include <gtest/gtest.h>

#include <string>

#include "links/target_resolver.h"

namespace zvrsit {
namespace {

// A place: a path below the site, or one of these.
constexpr const char* kElsewhere = "elsewhere";   // another place, or no URL at all
constexpr const char* kNowhere = "nowhere";       // data: and its like
constexpr const char* kUnservable = "no server";  // a name that no file can have
constexpr const char* kPage = "\\docs\\a.htm";

struct Row {
  std::string target;
  std::string place;
};

const Row kRows[] = {
    // The page itself.
    {"", kPage},
    {"  \t", kPage},
    {"#", kPage},
    {"#/", kPage},
    {"#\\../x", kPage},
    {"?", kPage},
    {"?a=/../x", kPage},
    {"#x?y#z", kPage},
    {"?x#y", kPage},
    {"http:", kPage},
    {"http:#x", kPage},
    {"HTTP:?q", kPage},
    {"a.htm?x?y", kPage},
    {"./a.htm#?y", kPage},
    {"../docs/a.htm", kPage},
    // White space and controls.
    {" x ", "\\docs\\x"},
    {"\n/x\r", "\\x"},
    {"x\ty", "\\docs\\xy"},
    {"/foo\tbar", "\\foobar"},
    {"\x01 /x\x1f", "\\x"},
    {"\x0b/x", "\\x"},
    {"/a/ /c", "\\a\\ \\c"},
    {"x y", "\\docs\\x y"},
    {"\xC2\xA0x", "\\docs\\\xC2\xA0x"},
    {"/x\x7f", "\\x\x7f"},
    {".\t./x", "\\x"},
    // What looks like a scheme, and is none.
    {":a", "\\docs\\:a"},
    {":", "\\docs\\:"},
    {":#", "\\docs\\:"},
    {"::23", "\\docs\\::23"},
    {"/:23", "\\:23"},
    {"\t :foo.com \n", "\\docs\\:foo.com"},
    {"1x:a", "\\docs\\1x:a"},
    {"x_y:a", "\\docs\\x_y:a"},
    {"a b:c", "\\docs\\a b:c"},
    {"./x:y", "\\docs\\x:y"},
    {"\xC3\xA9:a", "\\docs\\\xC3\xA9:a"},
    {"%61:b", "\\docs\\a:b"},
    // Other schemes.
    {"a:\t foo.com", kElsewhere},
    {"x-y.z+1:a", kElsewhere},
    {"tel:1", kElsewhere},
    {"mailto:a@b", kElsewhere},
    {"c:\\x", kElsewhere},
    {"C|/x", "\\docs\\C|\\x"},
    {"file:///x", kElsewhere},
    {"foo:/", kElsewhere},
    {"ws://example.org/x", kElsewhere},
    {"ftp://example.org/x", kElsewhere},
    {"data:text/html,x#y", kNowhere},
    {"about:blank", kNowhere},
    {"j\navascript:x", kNowhere},
    {" JavaScript:x", kNowhere},
    {"blob:x", kNowhere},
    // The scheme of the page without a host.
    {"http:foo.com", "\\docs\\foo.com"},
    {"http:/example.org/x", "\\example.org\\x"},
    {"http:..", "\\"},
    {"hTTp:\\x", "\\x"},
    {"ht\ntp:x", "\\docs\\x"},
    // Another scheme of the web needs no slashes.
    {"https:foo.com", kElsewhere},
    {"https:example.org/x", "\\x"},
    {"https:/example.org/x", "\\x"},
    {"https:\\example.org", "\\"},
    {"https:////example.org/x", "\\x"},
    // Hosts.
    {"http://example.org", "\\"},
    {"http://EXAMPLE.org/X", "\\X"},
    {"//example.org/x", "\\x"},
    {"////example.org/x", "\\x"},
    {"///foo/x", kElsewhere},
    {"http:\\\\example.org\\x", "\\x"},
    {"\\\\example.org\\x", "\\x"},
    {"/\\example.org/x", "\\x"},
    {"\\/foo/x", kElsewhere},
    {"http:///example.org/x", "\\x"},
    {"http://example\t.\norg/x", "\\x"},
    {"http://ex%41mple.org/x", "\\x"},
    {"http://%65xample%2Eorg/x", "\\x"},
    {"http://example.org./x", kElsewhere},
    {"http://example.organic/x", kElsewhere},
    {"http://example.org%2Fx", kElsewhere},
    {"http://example.org?q", "\\"},
    {"//example.org#x", "\\"},
    {"http://foo", kElsewhere},
    {"http://", kElsewhere},
    {"//", kElsewhere},
    {"///", kElsewhere},
    {"http://?x", kElsewhere},
    {"http://[::1]/x", kElsewhere},
    // Ports.
    {"http://example.org:80/x", "\\x"},
    {"http://example.org:/x", "\\x"},
    {"http://example.org:0080/x", "\\x"},
    {"https://example.org:443/x", "\\x"},
    {"http://example.org:443/x", kElsewhere},
    {"https://example.org:80/x", kElsewhere},
    {"http://example.org:81/x", kElsewhere},
    {"http://example.org:c/x", kElsewhere},
    {"http://example.org:65616/x", kElsewhere},
    {"http://example.org:80:80/x", kElsewhere},
    // Users.
    {"http://me@example.org/x", "\\x"},
    {"http://me:p@example.org/x", "\\x"},
    {"http://@example.org/x", "\\x"},
    {"http://a@b@example.org/x", "\\x"},
    {"http://me@/x", kElsewhere},
    {"http://example.org@foo/x", kElsewhere},
    {"http://example.org:80@foo/x", kElsewhere},
    {"http://example.org\\@foo/x", "\\@foo\\x"},
    {"http://example.org/@foo", "\\@foo"},
    // Dots.
    {".", "\\docs\\"},
    {"./", "\\docs\\"},
    {"..", "\\"},
    {"../", "\\"},
    {"../..", "\\"},
    {"...", "\\docs\\..."},
    {"..;/x", "\\docs\\..;\\x"},
    {"x/.", "\\docs\\x\\"},
    {"x/..", "\\docs\\"},
    {"/foo/bar/..bar", "\\foo\\bar\\..bar"},
    {"/./.foo", "\\.foo"},
    {"/foo/bar/../ton/../../a", "\\a"},
    {"/foo/../../../ton", "\\ton"},
    {"/foo/%2e", "\\foo\\"},
    {"/foo/%2E%2e/x", "\\x"},
    {".%2e/x", "\\x"},
    {"%2e./x", "\\x"},
    {"/foo/%2e%2", "\\foo\\.%2"},
    {"/foo/%2e./%2e%2e/.%2e/%2e.bar", "\\..bar"},
    {"/%252e%252e/x", "\\%2e%2e\\x"},
    {"http://example.org/../../x", "\\x"},
    {"..\\x", "\\x"},
    {"x\\..\\y", "\\docs\\y"},
    // Empty segments.
    {"////../..", kElsewhere},
    {"x//..", "\\docs\\x\\"},
    {"/foo/bar//../..", "\\foo\\"},
    {"http://example.org//x", "\\x"},
    {"/.//x", "\\x"},
    {"/foo\\\\bar", "\\foo\\bar"},
    {"x//../../y", "\\docs\\y"},
    // Percent-encoding.
    {"/%20foo", "\\ foo"},
    {"/foo%", "\\foo%"},
    {"/foo%2zbar", "\\foo%2zbar"},
    {"/foo%41%7a", "\\fooAz"},
    {"/foo\t%9\n1", "\\foo\x91"},
    {"/(%28:%3A%29)", "\\((::))"},
    {"/@asdf%40", "\\@asdf@"},
    {"x%2523", "\\docs\\x%23"},
    {"%23%3Fx?y", "\\docs\\#?x"},
    {"%C3%BC.htm", "\\docs\\\xC3\xBC.htm"},
    {"/foo%00%51", kUnservable},
    {"/a%2fc", kUnservable},
    {"/a/%5C/c", kUnservable},
    {"x?%2F#%00", "\\docs\\x"},
    // Other characters.
    {";x?y", "\\docs\\;x"},
    {"x|y", "\\docs\\x|y"},
    {"/<x>\"`{}", "\\<x>\"`{}"},
    {"[x]", "\\docs\\[x]"},
};

TEST(UrlCases, LeadWhereBrowsersGo) {
  TargetResolver resolver{LinkRules::Web};
  resolver.SetLiveUrl("http://example.org/", "\\site\\");
  resolver.BeginPage("\\site\\", "\\site\\docs\\a.htm");
  for (const Row& row : kRows) {
    std::string place;
    switch (resolver.Resolve(row.target, place)) {
      case TargetKind::kLocal:
        place.erase(0, place.starts_with("\\site\\") ? 5 : 0);
        break;
      case TargetKind::kNone:
        place = kNowhere;
        break;
      case TargetKind::kUnservable:
        place = kUnservable;
        break;
      default:
        place = kElsewhere;
    }
    EXPECT_EQ(place, row.place) << row.target;
  }
}

}  // namespace
}  // namespace zvrsit
