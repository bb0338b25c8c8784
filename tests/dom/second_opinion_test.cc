// The same elements with the same attributes as another parser finds, on generated pages.
#include <gtest/gtest.h>
#include <gumbo.h>

#include <algorithm>
#include <iterator>
#include <random>

#include "dom/html_text.h"
#include "dom/page.h"

namespace zvrsit::test {
namespace {

struct Found {
  std::size_t offset;
  std::string name;
  bool html;
  std::vector<std::string> attributes;

  bool operator==(const Found&) const = default;
  friend void PrintTo(const Found& found, std::ostream* out) {
    *out << found.offset << " " << found.name << (found.html ? "" : " (foreign)");
    for (const std::string& attribute : found.attributes) *out << " " << attribute;
  }
};

std::string Lower(std::string_view name) {
  std::string lower;
  AppendName(lower, name);
  return lower;
}

// What the other parser implied, cloned or moved has no start tag of its own.
constexpr int kNotWritten = GUMBO_INSERTION_IMPLIED |
                            GUMBO_INSERTION_RECONSTRUCTED_FORMATTING_ELEMENT |
                            GUMBO_INSERTION_ADOPTION_AGENCY_CLONED;

Found FromGumbo(const GumboElement& element) {
  GumboStringPiece name = element.original_tag;
  gumbo_tag_from_original_text(&name);
  Found found{element.start_pos.offset,
              Lower({name.data, name.length}),
              element.tag_namespace == GUMBO_NAMESPACE_HTML,
              {}};
  for (unsigned i = 0; i < element.attributes.length; ++i) {
    const auto* attribute = static_cast<const GumboAttribute*>(element.attributes.data[i]);
    const GumboStringPiece written = attribute->original_name;
    found.attributes.push_back(Lower({written.data, written.length}) + "=" + attribute->value);
  }
  return found;
}

std::vector<Found> GumboElements(const std::string& html) {
  std::vector<Found> all;
  GumboOutput* output = gumbo_parse_with_options(&kGumboDefaultOptions, html.data(), html.size());
  std::vector<const GumboNode*> open{output->root};
  while (!open.empty()) {
    const GumboNode* node = open.back();
    open.pop_back();
    if (node->type != GUMBO_NODE_ELEMENT && node->type != GUMBO_NODE_TEMPLATE) continue;
    const GumboElement& element = node->v.element;
    if (element.original_tag.length != 0 && (node->parse_flags & kNotWritten) == 0) {
      all.push_back(FromGumbo(element));
    }
    for (unsigned i = 0; i < element.children.length; ++i) {
      open.push_back(static_cast<const GumboNode*>(element.children.data[i]));
    }
  }
  gumbo_destroy_output(&kGumboDefaultOptions, output);
  std::sort(all.begin(), all.end(),
            [](const Found& a, const Found& b) { return a.offset < b.offset; });
  return all;
}

std::vector<Found> OurElements(const std::string& html) {
  Page page(html);
  std::vector<Found> all;
  for (std::uint32_t i = 0; i < page->elementCount(); ++i) {
    const Element element = page->element(i);
    Found found{element.offset(), Lower(element.name()), element.isHtml(), {}};
    for (std::size_t k = 0; k < element.attributes().size(); ++k) {
      const Attribute attribute = element.attributes().item(k);
      const std::string name = Lower(attribute.name());
      const auto same = [&](const std::string& other) { return other.starts_with(name + "="); };
      if (std::any_of(found.attributes.begin(), found.attributes.end(), same)) continue;
      found.attributes.push_back(name + "=" + attribute.value());
    }
    all.push_back(std::move(found));
  }
  return all;
}

// A page whose start tags all become elements in any parser, with the syntax in every variation.
std::string GeneratePage(unsigned seed) {
  std::mt19937 random(seed);
  const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
  const char* const pieces[] = {
      "<p>",
      "<div class=a>",
      "</div>",
      "<b>",
      "</b>",
      "<i id='x'>",
      "text &amp; &lt;more ",
      "<br/>",
      "<img src=a.gif alt='&quot;q&quot;'>",
      "<A HREF=\"b.htm?x=1&y=2&copy;\">",
      "</a >",
      "<!-- <a href=c> -->",
      "<!doctype x>",
      "<?php <b> ?>",
      "</ nothing>",
      "<script>a<b</script>",
      "<style>p > b {}</style>",
      "<textarea><i></textarea>",
      "<span a = 1 b= '2' c =\"3\" a=4 d>",
      "< no tag",
      "<svg viewBox='0 0 1 1'><path d='M0'/><image xlink:href=e.svg /></svg>",
      "<math><mi>x</mi><mo>+</mo></math>",
      "<table><tr><td background=f.gif>1</td></tr></table>",
      "<ul><li>1<li>2</ul>",
      "<h1 title='a>b'>",
      "</h1>",
      "&#x41;&#0;",
      "<input value=a/b type=image>",
      "<object data=g><param name=h value=i></object>",
      "<iframe src=j><b></iframe>",
      "\r\n",
      "<svg><foreignObject><p><a href=k></a></p></foreignObject><a xlink:href=l></a></svg>",
      "<svg><desc><b>1</b></desc><title>t</title><g></g></svg>",
      "<em/><code =x y/z>",
  };
  std::string page =
      "<!DOCTYPE html><html lang=en><head><meta charset=utf-8><title>T &amp; t</title>"
      "<link rel=stylesheet href=s.css><base href='/x/'></head><body bgcolor=white>";
  for (int i = 0; i < 60; ++i) page += pick(pieces);
  return page;
}

TEST(SecondOpinion, FindsTheSameElementsOnGeneratedPages) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    const std::string html = GeneratePage(seed);
    const std::vector<Found> ours = OurElements(html);
    ASSERT_GT(ours.size(), 10u);
    ASSERT_EQ(ours, GumboElements(html)) << "seed " << seed << "\n" << html;
  }
}

}  // namespace
}  // namespace zvrsit::test
