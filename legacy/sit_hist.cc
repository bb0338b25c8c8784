#include "legacy/sit_hist.h"

#include <utility>

#include "util/little_endian.h"

namespace zvrsit {

HistProc* SitHist::NewStep() {
  HistProc& step = steps_.emplace_back();
  step.files = files_;
  return &step;
}

HistCell* SitHist::NewCell() {
  return steps_.empty() ? nullptr : &steps_.back().cells.emplace_back();
}

void SitHist::Record(std::uint32_t code, std::int32_t value, std::string data) {
  HistCell* cell = NewCell();
  if (cell == nullptr) return;
  cell->code = code;
  cell->value = value;
  cell->data = std::move(data);
}

void SitHist::DropLastCell(HistProc* step) {
  if (step != nullptr && !step->cells.empty()) step->cells.pop_back();
}

void SitHist::DropLastStep() {
  if (!steps_.empty()) steps_.pop_back();
}

void SitHist::Clear() {
  steps_.clear();
}

HistProc* SitHist::LastStep() {
  return steps_.empty() ? nullptr : &steps_.back();
}

void SitHist::EnterFiles(const std::string& stamp) {
  const auto left = left_.find(stamp);
  files_ = left != left_.end() ? left->second : ++lastFiles_;
}

void SitHist::LeaveFiles(const std::string& stamp) {
  std::erase_if(left_, [this](const auto& left) { return left.second == files_; });
  left_[stamp] = files_;
  files_ = 0;
}

void SitHist::RenumberPairs(std::uint32_t storeTag, const std::vector<std::int32_t>& numbers) {
  constexpr std::uint32_t kOfRecords = kOpAdd | kOpDelete | kOpRewrite;
  for (HistProc& step : steps_) {
    if (!IsOfOpenFiles(step)) continue;
    for (HistCell& cell : step.cells) {
      if ((cell.code & kTagMask) != storeTag || (cell.code & kOfRecords) == 0) continue;
      // The number of a record is its first word.
      const auto old = static_cast<std::uint32_t>(LoadLE32(cell.data.data()));
      StoreLE32(cell.data.data(), old < numbers.size() ? numbers[old] : -1);
    }
  }
}

}  // namespace zvrsit
