#include "tables/raw_table.h"

#include <utility>

#include "storage/records.h"
#include "tables/table_files.h"

namespace zvrsit {
namespace {

constexpr int kNameAt = 4;  // in the slots of all records that have one

template <class Rec>
constexpr TableShape kShapeOf{Rec::kRecordType, Rec::kSlotLength};

}  // namespace

TableShape ShapeOf(TableKind kind) {
  constexpr TableShape kShapes[] = {
      kShapeOf<SiteUrlRec>, kShapeOf<SitePathRec>, kShapeOf<SiteLinkRec>, kShapeOf<SiteNodeRec>,
      kShapeOf<SiteRelRec>, kShapeOf<SiteSiteRec>, kShapeOf<SiteServRec>};
  return kShapes[static_cast<std::size_t>(kind)];
}

RawTable::RawTable(TableKind kind, std::string recordFile)
    : kind_(kind), recordFile_(std::move(recordFile)), records_(ShapeOf(kind).slotLength) {}

std::string RawTable::textFile() const {
  return TextFileOf(recordFile_);
}

bool RawTable::ReadTexts() {
  if (!texts_.Read(textFile())) return false;
  entries_.Reset(static_cast<std::size_t>(texts_.ids()));
  walked_ = texts_.ForEachEntry([this](const RawTexts::Entry& entry) {
    if (!texts_.IsNumber(entry.id)) return;
    entries_.slot(static_cast<std::size_t>(entry.id)) = static_cast<std::int32_t>(entry.offset);
  });
  return true;
}

bool RawTable::FindEntry(std::int32_t id, RawTexts::Entry& entry) const {
  if (id < 0 || static_cast<std::size_t>(id) >= entries_.size()) return false;
  return texts_.ReadEntry(entries_.at(static_cast<std::size_t>(id)), entry);
}

bool RawTable::FindText(std::int32_t id, std::string_view& text) const {
  RawTexts::Entry entry;
  if (!FindEntry(id, entry) || !entry.isString()) return false;
  text = entry.text();
  return true;
}

std::string_view RawTable::NameOf(const char* slot) const {
  std::string_view name;
  FindText(LoadLE32(slot + kNameAt), name);
  return name;
}

}  // namespace zvrsit
