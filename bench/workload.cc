#include "bench/workload.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <random>
#include <stdexcept>

namespace zvrsit::bench {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSeed = 20260701;
constexpr int kLinksPerPage = 50;
constexpr int kPagesPerFolder = 100;

unsigned Below(std::mt19937& random, unsigned limit) {
  return static_cast<unsigned>((static_cast<std::uint64_t>(random()) * limit) >> 32);
}

}  // namespace

TempFolder::TempFolder() {
  path_ = (fs::temp_directory_path() / "zvrsit-bench-XXXXXX").string();
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder");
}

TempFolder::~TempFolder() {
  std::error_code error;
  fs::remove_all(path_, error);
}

void TempFolder::Clear() {
  for (const auto& entry : fs::directory_iterator(path_)) fs::remove_all(entry.path());
}

void TempFolder::CopyFrom(const TempFolder& other) {
  Clear();
  fs::copy(other.path(), path_);
}

std::vector<std::string> MakePaths(int count) {
  std::vector<std::string> paths;
  paths.reserve(static_cast<std::size_t>(count));
  for (int number = 0; number < count; ++number) {
    char path[64];
    std::snprintf(path, sizeof path, "\\srv\\www\\handbook\\d%05d\\page%07d.html",
                  number / kPagesPerFolder, number);
    paths.emplace_back(path);
  }
  return paths;
}

int PagesOf(int count) {
  return std::max(1, count / kLinksPerPage);
}

std::vector<Link> MakeLinks(int count) {
  std::mt19937 random(kSeed);
  const int pages = PagesOf(count);
  std::vector<Link> links;
  links.reserve(static_cast<std::size_t>(count));
  for (int number = 0; number < count; ++number) {
    // A page has each fragment number once, so that no two links are equal.
    const int to = static_cast<int>(Below(random, static_cast<unsigned>(pages)));
    char text[64];
    std::snprintf(text, sizeof text, "../d%05d/page%07d.html#s%d", to / kPagesPerFolder, to,
                  number % kLinksPerPage);
    links.push_back({std::min(number / kLinksPerPage, pages - 1), to, text});
  }
  return links;
}

std::vector<int> Shuffled(int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  std::mt19937 random(kSeed);
  for (int left = count; left > 1; --left) {
    std::swap(numbers[static_cast<std::size_t>(left - 1)],
              numbers[Below(random, static_cast<unsigned>(left))]);
  }
  return numbers;
}

std::string MakePage(int bytes) {
  std::mt19937 random(kSeed);
  std::string page = "<!DOCTYPE html><html><head><title>Page</title></head><body>\n";
  while (page.size() < static_cast<std::size_t>(bytes)) {
    const unsigned number = Below(random, 100000);
    page += "<p class=\"entry\" id=e" + std::to_string(number) +
            ">Some words of text &amp; a reference, as pages have them, before the link to "
            "<a href=\"../folder/page" +
            std::to_string(number) + ".html#part\">the next page</a> and after it.</p>\n";
    if (number % 8 == 0) page += "<!-- a comment -->\n";
    if (number % 16 == 0) {
      page += "<table><tr><td>one</td><td><img src=\"i.png\"></td></tr></table>\n";
    }
  }
  return page + "</body></html>\n";
}

}  // namespace zvrsit::bench
