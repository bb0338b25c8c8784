#include "tables/site_path_db.h"

#include <string>

#include "storage/guarded.h"
#include "util/little_endian.h"

namespace zvrsit {

int SitePathDB::Delete(int number) {
  SitePathRec record;
  std::string name;
  if (number < 0 || !isOpen() || records_->Get(number, &record) < 0) return -1;
  if (record.name < 0 || Text(record.name, name) < 0) return -1;
  if (record.listCount > 0) {
    if (record.listData >= 0 && strings_->DeleteData(record.listData) < 0) return -1;
    record.listCount = 0;
    record.listData = -1;
    if (Update(record) < 0) return -1;
  }
  return NamedTable::Delete(number);
}

int SitePathDB::SetList(SitePathRec& record, const std::vector<std::int32_t>& ids) {
  if (!isOpen()) return -1;
  SitePathRec old = record;
  const auto addBlock = [&] {
    std::string block(ids.size() * 4, '\0');
    for (std::size_t i = 0; i < ids.size(); ++i) StoreLE32(&block[i * 4], ids[i]);
    return strings_->AddData(block.data(), static_cast<int>(block.size()));
  };
  const int added = ids.empty() ? -1 : Guarded(addBlock);
  if (added < 0 && !ids.empty()) return -1;
  record.listData = added;
  record.listCount = static_cast<std::int32_t>(ids.size());
  return ClearList(old);
}

int SitePathDB::GetList(const SitePathRec& record, std::vector<std::int32_t>& ids) const {
  ids.clear();
  if (!isOpen()) return -1;
  if (record.listCount <= 0) return 0;
  const std::string_view block = strings_->ViewData(record.listData);
  const auto count = static_cast<std::size_t>(record.listCount);
  if (block.size() / 4 < count) return -1;
  return Guarded([&] {
    ids.resize(count);
    for (std::size_t i = 0; i < count; ++i) ids[i] = LoadLE32(block.data() + i * 4);
    return 0;
  });
}

int SitePathDB::ClearList(SitePathRec& record) {
  if (!isOpen()) return -1;
  if (record.listCount <= 0) return 0;
  std::vector<std::int32_t> ids;
  // A list that cannot be read gives back no name, and a damaged name stays.
  if (GetList(record, ids) < 0) ids.clear();
  for (const std::int32_t id : ids) static_cast<void>(ReleaseText(id));
  if (record.listData >= 0 && strings_->DeleteData(record.listData) < 0) return -1;
  record.listCount = 0;
  record.listData = -1;
  return 0;
}

int SitePathDB::ReleaseTexts(SitePathRec& record) {
  if (ClearList(record) < 0) return -1;
  for (std::int32_t* text :
       {&record.title, &record.lastModified, &record.expires, &record.generator, &record.keywords,
        &record.description, &record.contentType, &record.metaText}) {
    static_cast<void>(ReleaseText(*text));  // a damaged text stays
    *text = -1;
  }
  return 0;
}

}  // namespace zvrsit
