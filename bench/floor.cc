// The floors under a rebuild: what it costs only to walk a folder tree, only to read its pages,
// only to scan them for '<', and only to tokenize them.
//
//   floor walk|read|scan|tokenize|document FOLDER [RUNS]
//
// Prints the median time of RUNS runs (default 5) and their median processor time in seconds, and
// what was counted. One thread;
// the first run warms the cache and is not counted. Every run must count the same.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "bench/counting_sink.h"
#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "util/file_type.h"

namespace {

enum class Depth { kWalk, kRead, kScan, kTokenize, kDocument };

struct Totals {
  long files = 0;
  long pages = 0;
  long long bytes = 0;
  long long found = 0;  // '<' or tokens

  bool operator==(const Totals&) const = default;
};

class Floor {
 public:
  explicit Floor(Depth depth) : depth_(depth) {}

  // Visits `folder` and everything below it with an explicit work list.
  Totals Run(const std::string& folder) {
    totals_ = {};
    std::vector<std::string> open{folder};
    while (!open.empty()) {
      const std::string next = std::move(open.back());
      open.pop_back();
      VisitFolder(next, open);
    }
    return totals_;
  }

 private:
  void VisitFolder(const std::string& folder, std::vector<std::string>& open) {
    DIR* search = opendir(folder.c_str());
    if (search == nullptr) return;
    while (const dirent* entry = readdir(search)) {
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      std::string path = folder + '/' + entry->d_name;
      struct stat status;
      if (stat(path.c_str(), &status) != 0) continue;
      if (S_ISDIR(status.st_mode)) {
        if (entry->d_type == DT_DIR) open.push_back(std::move(path));
      } else if (S_ISREG(status.st_mode)) {
        ++totals_.files;
        if (zvrsit::ClassifyFileType(path.c_str()) == zvrsit::FT_HTML) VisitPage(path);
      }
    }
    closedir(search);
  }

  void VisitPage(const std::string& path) {
    ++totals_.pages;
    if (depth_ == Depth::kWalk || !Read(path)) return;
    totals_.bytes += static_cast<long long>(size_);
    if (depth_ == Depth::kScan) totals_.found += Scan();
    if (depth_ == Depth::kTokenize) totals_.found += Tokenize();
    if (depth_ == Depth::kDocument) totals_.found += MakeDocument();
  }

  // One open, one fstat, and reads into a buffer that is kept from page to page.
  bool Read(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat status;
    size_ = 0;
    if (fstat(fd, &status) == 0) {
      const auto wanted = static_cast<std::size_t>(status.st_size);
      if (buffer_.size() < wanted + zvrsit::kTextPadding) {
        buffer_.resize(wanted + zvrsit::kTextPadding);
      }
      while (size_ < wanted) {
        const ssize_t count = read(fd, buffer_.data() + size_, wanted - size_);
        if (count <= 0) break;
        size_ += static_cast<std::size_t>(count);
      }
    }
    close(fd);
    return true;
  }

  long long Scan() const {
    long long count = 0;
    const char* at = buffer_.data();
    const char* const end = at + size_;
    while (at < end) {
      at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)));
      if (at == nullptr) break;
      ++count;
      ++at;
    }
    return count;
  }

  long long Tokenize() {
    std::memset(buffer_.data() + size_, 0, zvrsit::kTextPadding);
    return zvrsit::bench::CountTokens(buffer_.data(), size_);
  }

  // Decoded into the code page first where that is not the page's own, as a rebuild does.
  long long MakeDocument() {
    std::memset(buffer_.data() + size_, 0, zvrsit::kTextPadding);
    zvrsit::CodeConv conv;
    if (!conv.Import(buffer_.data(), size_, 0)) return 0;
    zvrsit::Document* document = dom_.createDocument("HTML");
    document->createNodesInPlace(conv.text(), static_cast<int>(conv.length()), true);
    const auto count = static_cast<long long>(document->elementCount());
    dom_.deleteDocument(document);
    return count;
  }

  Depth depth_;
  zvrsit::DOM dom_;
  Totals totals_;
  std::vector<char> buffer_;
  std::size_t size_ = 0;
};

bool ParseDepth(std::string_view word, Depth& depth) {
  if (word == "walk") return depth = Depth::kWalk, true;
  if (word == "read") return depth = Depth::kRead, true;
  if (word == "scan") return depth = Depth::kScan, true;
  if (word == "tokenize") return depth = Depth::kTokenize, true;
  if (word == "document") return depth = Depth::kDocument, true;
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  Depth depth;
  if (argc < 3 || argc > 4 || !ParseDepth(argv[1], depth)) {
    std::fprintf(stderr, "usage: floor walk|read|scan|tokenize|document FOLDER [RUNS]\n");
    return 2;
  }
  const int runs = argc == 4 ? std::max(1, std::atoi(argv[3])) : 5;
  Floor floor(depth);
  const Totals expected = floor.Run(argv[2]);
  std::vector<double> seconds;
  std::vector<double> processor;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t began = std::clock();
    const Totals totals = floor.Run(argv[2]);
    seconds.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    processor.push_back(static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC);
    if (!(totals == expected)) {
      std::fprintf(stderr, "floor: two runs counted differently\n");
      return 1;
    }
  }
  std::sort(seconds.begin(), seconds.end());
  std::sort(processor.begin(), processor.end());
  std::printf("%s %.4f s, cpu %.4f s, %ld files, %ld pages, %lld bytes, %lld found\n", argv[1],
              seconds[seconds.size() / 2], processor[processor.size() / 2], expected.files,
              expected.pages, expected.bytes, expected.found);
  return 0;
}
