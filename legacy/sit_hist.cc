#include "legacy/sit_hist.h"

#include <utility>

namespace zvrsit {

HistProc* SitHist::NewStep() {
  HistProc& step = steps_.emplace_back();
  step.session = session_;
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

}  // namespace zvrsit
