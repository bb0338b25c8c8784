#include "tables/named_table.h"

#include <memory>

#include "storage/guarded.h"

namespace zvrsit {

int NamedTableBase::OpenNamed(const std::string& path, int recordLength, int recordType,
                              bool wholeFile) {
  if (OpenFiles(path, recordLength, recordType, wholeFile) < 0) return -1;
  if (Guarded([&] { return MakeIndex(); }) == 0) return 0;
  index_.reset();
  DropFiles();
  return -1;
}

int NamedTableBase::MakeIndex() {
  index_ = std::make_unique<NameIndex>(*strings_, records_->liveCount());
  index_->PutAll([this](auto put) {
    for (int number = NextNumber(0); number >= 0; number = NextNumber(number + 1)) {
      const std::string_view name = NameView(number);
      if (!name.empty()) put(name, number);
    }
  });
  return 0;
}

int NamedTableBase::AddName(std::string_view name) {
  if (name.empty()) return -1;
  const FoundString guess{SiteVarRecDB::HashOf(name)};
  if (index_ != nullptr) {
    index_->FetchFor(guess.hash);
    index_->MakeRoom(name.size());
  }
  return strings_->AddString(name, strings_->Search(name, guess));
}

void NamedTableBase::EnterName(std::string_view name, const SiteNodeRec& record) {
  if (index_ == nullptr) return;
  // That in the string store if it can be read, so that the index need not copy it.
  const std::string_view stored = TextView(record.name);
  index_->Put(stored.empty() ? name : stored, record.id);
}

int NamedTableBase::Find(std::string_view name) const {
  return index_ == nullptr ? -1 : index_->Find(name);
}

std::string_view NamedTableBase::NameView(int number) const {
  SiteNodeRec record;
  if (!isOpen() || number < 0 || number >= Count()) return {};
  return records_->Get(number, &record) < 0 ? std::string_view() : TextView(record.name);
}

int NamedTableBase::Name(int number, std::string& name) const {
  const std::string_view text = NameView(number);
  if (text.empty()) return -1;
  return Guarded([&] {
    name.assign(text);
    return 0;
  });
}

int NamedTableBase::Delete(int number) {
  SiteNodeRec record;
  std::string name;
  if (number < 0 || !isOpen() || records_->Get(number, &record) < 0) return -1;
  if (record.name < 0 || Text(record.name, name) < 0) return -1;
  if (records_->Delete(number) < 0) return -1;
  if (index_ != nullptr) index_->Remove(name);
  return strings_->ReleaseString(record.name);
}

int NamedTableBase::Clear() {
  if (!isOpen()) return -1;
  for (int number = NextNumber(0); number >= 0; number = NextNumber(number + 1)) {
    SiteNodeRec record;
    if (records_->Get(number, &record) < 0 || TextView(record.name).empty()) continue;
    if (records_->Delete(number) < 0) continue;
    static_cast<void>(strings_->ReleaseStringUnindexed(record.name));  // a damaged text stays
  }
  index_->Clear();
  return Guarded([&] { return MakeIndex(); });
}

}  // namespace zvrsit
