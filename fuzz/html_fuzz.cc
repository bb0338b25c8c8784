// A page: decoding, the document, and the rows of both sets of link rules; and the same text as a
// file that is no page.
#include <cstdlib>
#include <string>

#include "dom/code_conv.h"
#include "dom/document.h"
#include "fuzz/target.h"
#include "links/extractor.h"
#include "links/redirect_rules.h"
#include "links/site_data.h"
#include "links/target_resolver.h"
#include "platform/code_page.h"

namespace zvrsit::fuzz {
namespace {

void ResolveAll(const PageRows& rows, LinkRules rules) {
  TargetResolver resolver(rules);
  std::string place;
  for (const LinkRow& row : rows.links) {
    resolver.BeginPage("\\site\\", "\\site\\sub\\page.htm");
    rows.parts.ForEachBase(row.base, [&](const std::string& href) { resolver.SetBase(href); });
    const TargetKind kind = resolver.Resolve(row.target, place);
    if (kind == TargetKind::kLocal && place.empty()) std::abort();
  }
}

void ReadPage(std::string_view bytes) {
  CodeConv conversion;
  if (!conversion.Import(bytes.data(), bytes.size(), 0)) return;
  Document document;
  if (document.createNodes(conversion.text(), static_cast<int>(conversion.length()), nullptr,
                           true) != 0) {
    std::abort();
  }
  PageRows rows;
  for (const LinkRules rules : {LinkRules::Classic, LinkRules::Web}) {
    ExtractPage(document, rules, rows);
    for (const LinkRow& row : rows.links) {
      if (row.offset > conversion.length()) std::abort();
    }
    ResolveAll(rows, rules);
  }
  for (const char* path : {"app.webmanifest", "sitemap.xml", "robots.txt", "_redirects"}) {
    ExtractFile(path, document, LinkRules::Web, rows);
    for (const LinkRow& row : rows.links) {
      if (row.offset > conversion.length()) std::abort();
    }
  }
  TargetResolver resolver(LinkRules::Web);
  resolver.BeginPage("\\site\\", "\\site\\_redirects");
  std::string to;
  const std::string_view text(conversion.text(), conversion.length());
  RedirectRules(text, resolver).Match("\\site\\a\\b", "x=1", false, to);
  for (std::uint32_t i = 0; i < document.elementCount(); ++i) {
    const Element element = document.element(i);
    if (element.offset() >= conversion.length()) std::abort();
    element.firstChild().asText().data(true);
    const AttributeList attributes = element.attributes();
    for (std::size_t k = 0; k < attributes.size(); ++k) attributes.item(k).value();
  }
}

// The first byte chooses the code page.
void ReadHtml(std::string_view input) {
  if (input.empty()) return;
  platform::SetCodePage(input[0] % 2 == 0 ? platform::kUtf8 : 932);
  ReadPage(input.substr(1));
}

std::vector<std::string> HtmlSeeds() {
  using namespace std::string_literals;
  return {
      "0<!DOCTYPE html><title>A &amp; B</title><meta name=Keywords content='a,b'><base href=sub/>"
      "<meta http-equiv=refresh content=\"0; url='x.htm'\"><a name=n href='b.htm?q=1#top'>b</a>"
      "<img src=a.gif ismap mapfile=a.map alt='x&#65;'><img srcset='a.png 1x, b.png 2x,' "
      "src=c.gif>",
      "0<body background=/b.gif><table><tr><td background=../../c.gif><form action=f.cgi>"
      "<input src=i.gif alt=go><applet code=A.class codebase=classes/ archive=a.jar></applet>"
      "<map><area href='%41%2F.htm'></map><frame src=f.htm><embed src=e.mid><script src=s.js>"
      "if (a < b) '</scr' </script><noscript><a href=n.htm></noscript>",
      "1<meta charset=shift_jis><a "
      "href='\x83\x5c.htm'>\x83</a><textarea>&notit;&#x110000;</textarea>"
      "<!-- <a href=c.htm> --!><svg><a xlink:href=s.htm><title><a href=t.htm></title><image "
      "href=i.png>"
      "<![CDATA[<a href=x>]]></svg><math><mi><template><a href=no.htm></template>",
      "0\xFE\xFF\0<\0a\0 \0h\0r\0e\0f\0=\0x\0>"s,
      "0<link rel=stylesheet href=a.css><link rel='next' href=b.htm><style>a{b:url(c)}</style>"
      "<p style='background:url(&quot;d.gif&quot;)'><plaintext><a href=never.htm>",
      "0<img src=a.gif><base href=x/><iframe srcdoc='<base href=y/><iframe srcdoc=&quot;&lt;a "
      "href=b&gt;&quot;>'></iframe><div><template shadowrootmode=open><a href=c ping='d e'>"
      "</template></div><form action=f><form action=g>",
      "0<script type=application/ld+json>{\"url\": [\"\\u00e9/\\ud83d\\ude00\", {\"@id\": \"/x\"}]}"
      "</script><meta property=og:image content=i.png><q cite=c>",
      "0{\"start_url\": \".\", \"icons\": [{\"src\": \"i\\/.png\", \"n\": -1.5e3}, true, null]}",
      "0<?xml?><urlset><loc> a&amp;b </loc><x:loc><![CDATA[c]]></x:loc><link href=d/></urlset>",
      "0Sitemap: /a # b\n/a/* x=:y /b/:splat/:y 301!\n/:p/b http://h/:p 302 Language=fr\n/c /d",
  };
}

}  // namespace

const Target kHtmlTarget = {"html", &ReadHtml, &HtmlSeeds};

}  // namespace zvrsit::fuzz
