// The parts of reading a page: its tokens, its document, its targets.
#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/counting_sink.h"
#include "bench/workload.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "links/site_url.h"
#include "links/target_resolver.h"

namespace zvrsit::bench {
namespace {

constexpr int kPageBytes = 100000;

long CountChar(const std::string& text, char wanted) {
  long count = 0;
  const char* at = text.data();
  const char* const end = at + text.size();
  while ((at = static_cast<const char*>(
              std::memchr(at, wanted, static_cast<std::size_t>(end - at)))) != nullptr) {
    ++count;
    if (++at == end) break;
  }
  return count;
}

// The floor under the two that follow.
void BenchScan(benchmark::State& state) {
  const std::string page = MakePage(kPageBytes);
  for (auto _ : state) benchmark::DoNotOptimize(CountChar(page, '<'));
  state.SetBytesProcessed(state.iterations() * static_cast<long>(page.size()));
}
BENCHMARK(BenchScan)->Name("page/scan");

void BenchTokenize(benchmark::State& state) {
  std::string page = MakePage(kPageBytes);
  const std::size_t length = page.size();
  page.append(kTextPadding, '\0');
  long long tokens = 0;
  for (auto _ : state) tokens = CountTokens(page.data(), length);
  // Every "<" begins a token here; texts lie between them.
  if (tokens <= CountChar(page, '<') || tokens > 2 * CountChar(page, '<') + 1) {
    state.SkipWithError("wrong number of tokens");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(length));
}
BENCHMARK(BenchTokenize)->Name("page/tokenize");

void BenchDocument(benchmark::State& state) {
  const std::string page = MakePage(kPageBytes);
  DOM dom;
  std::size_t links = 0;
  for (auto _ : state) {
    Document* document = dom.createDocument("HTML");
    document->createNodes(page.data(), static_cast<int>(page.size()), nullptr, true);
    links = document->elementsOf(Tag::kA).size();
    dom.deleteDocument(document);
  }
  std::size_t written = 0;
  for (auto at = page.find("<a "); at != page.npos; at = page.find("<a ", at + 1)) ++written;
  if (links != written) state.SkipWithError("wrong number of links");
  state.SetBytesProcessed(state.iterations() * static_cast<long>(page.size()));
}
BENCHMARK(BenchDocument)->Name("page/document");

// Items are targets. All lead to files of the same site.
template <class Resolve>
void BenchResolve(benchmark::State& state, Resolve resolve) {
  constexpr int kCount = 10000;
  const std::vector<Link> links = MakeLinks(kCount);
  const std::vector<std::string> paths = MakePaths(PagesOf(kCount));
  std::string found;
  for (auto _ : state) {
    for (const Link& link : links) {
      const bool local = resolve(link.text, found);
      if (!local || found != paths[static_cast<std::size_t>(link.to)]) {
        return state.SkipWithError("wrong path");
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

const std::string kRoot = "\\srv\\www\\handbook\\";
const std::string kPage = "\\srv\\www\\handbook\\d00000\\page0000000.html";

void BenchResolver(benchmark::State& state, LinkRules rules) {
  TargetResolver resolver(rules);
  resolver.BeginPage(kRoot, kPage);
  BenchResolve(state, [&](const std::string& target, std::string& out) {
    return resolver.Resolve(target, out) == TargetKind::kLocal;
  });
}
BENCHMARK_CAPTURE(BenchResolver, web, LinkRules::Web)->Name("resolve/web");
BENCHMARK_CAPTURE(BenchResolver, classic, LinkRules::Classic)->Name("resolve/classic");

void BenchSiteUrl(benchmark::State& state) {
  BenchResolve(state, [](const std::string& target, std::string& out) {
    return SiteUrl(kRoot, kPage, target).GetLocalPath(out) == 0;
  });
}
BENCHMARK(BenchSiteUrl)->Name("resolve/SiteUrl");

}  // namespace
}  // namespace zvrsit::bench

BENCHMARK_MAIN();
