#include "bench/site_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string_view>

namespace zvrsit::bench {
namespace {

constexpr unsigned kPagesPerFolder = 100;
constexpr std::array<std::string_view, 26> kWords = {
    "site",    "page",   "link",    "folder",   "table",   "record",    "string",
    "image",   "sheet",  "anchor",  "frame",    "server",  "profile",   "family",
    "rebuild", "author", "publish", "document", "element", "attribute", "value",
    "text",    "name",   "title",   "window",   "margin"};

// The standard's distributions differ from library to library; this does not.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  unsigned Below(unsigned limit) {
    return static_cast<unsigned>((static_cast<std::uint64_t>(engine_()) * limit) >> 32);
  }

 private:
  std::mt19937 engine_;
};

class Site {
 public:
  explicit Site(const SiteShape& shape) : shape_(shape), random_(shape.seed) {}

  bool Write() {
    std::filesystem::create_directories(shape_.folder);
    Put("style.css", "body { background: url(back.png) }\n");
    WriteIndex();
    for (unsigned number = 0; number < shape_.pages; ++number) WritePage(number);
    if (shape_.hub > 0) WriteHub();
    return good_;
  }

 private:
  void Put(const std::string& name, std::string_view text) {
    std::ofstream out(shape_.folder + '/' + name, std::ios::binary);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    good_ = good_ && out.flush().good();
  }

  void WriteIndex() {
    std::string text = "<title>Top</title>\n";
    for (unsigned number = 0; number < shape_.pages; number += kPagesPerFolder) {
      text += "<a href=\"" + PageName(number) + "\">" + std::to_string(number) + "</a>\n";
    }
    if (shape_.hub > 0) text += "<a href=\"hub.html\">hub</a>\n";
    Put("index.html", text);
  }

  void WritePage(unsigned number) {
    if (number % kPagesPerFolder == 0) {
      std::filesystem::create_directories(shape_.folder + '/' + PageName(number).substr(0, 5));
    }
    const unsigned filler = shape_.bytes / std::max(1U, shape_.links);
    std::string text = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Page " +
                       std::to_string(number) +
                       "</title>\n<link rel=\"stylesheet\" href=\"../style.css\"></head>\n<body>\n";
    for (unsigned link = 0; link < shape_.links; ++link) {
      const bool last = link + 1 == shape_.links;
      AppendParagraph(
          text, filler,
          last && number < shape_.backlinks ? "../" + PageName(0) : Target(number, link));
    }
    Put(PageName(number), text + "</body></html>\n");
  }

  // With a reach every page brings the same work, however many there are.
  unsigned TargetNumber(unsigned number) {
    const unsigned reach = std::min(shape_.reach, shape_.pages - 1);
    if (reach == 0) return random_.Below(shape_.pages);
    return (number + shape_.pages - reach + random_.Below(2 * reach + 1)) % shape_.pages;
  }

  std::string Target(unsigned number, unsigned link) {
    if (link % 10 == 9) return "https://example.org/" + std::to_string(random_.Below(1000));
    std::string name = "../" + PageName(TargetNumber(number));
    if (random_.Below(50) == 0) name.insert(name.size() - 5, "-gone");
    if (link % 5 == 0) name += "#s" + std::to_string(random_.Below(5));
    return name;
  }

  // One paragraph of about `length` bytes with one link.
  void AppendParagraph(std::string& text, unsigned length, const std::string& target) {
    const std::size_t end = text.size() + length;
    text += "<p class=\"entry\">";
    while (text.size() + target.size() + 24 < end) {
      text += kWords[random_.Below(kWords.size())];
      text += ' ';
    }
    text += "<a href=\"" + target + "\">more</a></p>\n";
  }

  void WriteHub() {
    std::string text = "<title>Hub</title>\n";
    for (unsigned link = 0; link < shape_.hub; ++link) {
      text += "<a href=\"" + PageName(random_.Below(shape_.pages)) + "\">l</a>\n";
    }
    Put("hub.html", text);
  }

  SiteShape shape_;
  Random random_;
  bool good_ = true;
};

}  // namespace

std::string PageName(unsigned number) {
  char name[40];
  std::snprintf(name, sizeof name, "d%04u/p%06u.html", number / kPagesPerFolder, number);
  return name;
}

bool WriteSite(const SiteShape& shape) {
  return Site(shape).Write();
}

}  // namespace zvrsit::bench
