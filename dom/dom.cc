#include "dom/dom.h"

#include <algorithm>
#include <string_view>

#include "dom/html_scan.h"

namespace zvrsit {
namespace {

// Idle documents whose memory is kept. The library uses one at a time, its application a few.
constexpr std::size_t kIdleDocuments = 4;

}  // namespace

DOM::DOM() = default;
DOM::~DOM() = default;

Document* DOM::createDocument(const char* type) {
  const std::string_view wanted = type != nullptr ? type : "";
  if (wanted.size() != 4 || !BeginsWithNoCase(type, type + 4, "html")) return nullptr;
  if (idle_.empty()) {
    live_.push_back(std::make_unique<Document>());
  } else {
    live_.push_back(std::move(idle_.back()));
    idle_.pop_back();
  }
  return live_.back().get();
}

int DOM::deleteDocument(Document* document) {
  const auto found = std::find_if(live_.begin(), live_.end(),
                                  [&](const auto& owned) { return owned.get() == document; });
  if (found == live_.end()) return -1;
  document->clear();
  if (idle_.size() < kIdleDocuments) idle_.push_back(std::move(*found));
  *found = std::move(live_.back());
  live_.pop_back();
  return 0;
}

}  // namespace zvrsit
