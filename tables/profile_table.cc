#include "tables/profile_table.h"

#include <algorithm>

#include "storage/guarded.h"
#include "tables/table_files.h"
#include "util/hash.h"
#include "util/server_fields.h"

namespace zvrsit {

namespace {

// Calls text(word) for every text word of a profile but its name.
template <class Text>
void ForEachText(SiteSiteRec& record, Text text) {
  text(record.topFile);
  text(record.defaultUrl);
  text(record.servProf);
  for (std::int32_t& folder : record.folders) text(folder);
  for (const SiteTableFile& file : kSiteTableFiles) text(record.*file.word);
}

template <class Text>
void ForEachText(SiteServRec& record, Text text) {
  ForEachServerField<SiteServRec>([&](ServerField kind, std::int32_t SiteServRec::*field) {
    if (kind != ServerField::kNumber) text(record.*field);
  });
}

}  // namespace

template <class Rec>
int ProfileTable<Rec>::Open(const std::string& path, int mode) {
  if (this->wasOpened()) return -1;
  if (OpenOnce(path) < 0) {
    if (mode != kOpenRestore || Restore(path) < 0 || OpenOnce(path) < 0) return -1;
  }
  // An empty table, perhaps one that was cut to nothing, must not take the place of a good backup.
  if ((mode == kOpenBackUp || mode == kOpenRestore) && this->Count() > 0) {
    // The table is open and sound, with a new backup or without.
    static_cast<void>(this->records_->Backup());
    static_cast<void>(this->strings_->Backup());
  }
  return 0;
}

template <class Rec>
int ProfileTable<Rec>::OpenOnce(const std::string& path) {
  return this->OpenNamed(path, Rec::kSlotLength, Rec::kRecordType, wholeFile_);
}

// The two files belong together, so both are restored even where only one is damaged.
template <class Rec>
int ProfileTable<Rec>::Restore(const std::string& path) {
  return Guarded([&] {
    SiteVarRecDB strings(TextFileOf(path), wholeFile_);
    SiteFixRecDB records(path, Rec::kSlotLength, Rec::kRecordType, wholeFile_);
    return strings.Restore() < 0 || records.Restore() < 0 ? -1 : 0;
  });
}

template <class Rec>
int ProfileTable<Rec>::Delete(int number) {
  Rec record;
  std::string name;
  if (this->Get(number, record) < 0 || this->Name(number, name) < 0) return -1;
  int result = NamedTableBase::Delete(number);
  Rec left;
  if (result < 0 && this->Get(number, left) == 0) return -1;
  ForgetName(name, number);
  ForEachText(record, [this, &result](std::int32_t word) {
    if (this->ReleaseText(word) < 0) result = -1;
  });
  return result;
}

// Every byte is folded, even the second byte of a double-byte character. So some unequal names get
// the same hash, which does no harm.
template <class Rec>
std::size_t ProfileTable<Rec>::HashButForCase::operator()(const std::string& name) const {
  std::string folded = name;
  for (char& byte : folded) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  }
  return static_cast<std::size_t>(HashBytes(folded));
}

// Made when a name is first needed: a single new profile need not read all names.
template <class Rec>
void ProfileTable<Rec>::MakeNames() {
  names_.clear();
  for (int number = this->NextNumber(0); number >= 0; number = this->NextNumber(number + 1)) {
    names_.emplace(this->NameView(number), number);
  }
  namesMade_ = true;
}

template <class Rec>
void ProfileTable<Rec>::ForgetName(const std::string& name, int number) {
  const auto forget = [&] {
    const auto [first, last] = names_.equal_range(name);
    const auto known =
        std::find_if(first, last, [number](const auto& entry) { return entry.second == number; });
    if (known != last) names_.erase(known);
    return 0;
  };
  if (Guarded(forget) < 0) namesMade_ = false;
}

template <class Rec>
bool ProfileTable<Rec>::IsTaken(std::string_view name, int except) {
  if (!namesMade_) MakeNames();
  const auto [first, last] = names_.equal_range(std::string(name));
  return std::any_of(first, last, [except](const auto& entry) { return entry.second != except; });
}

template <class Rec>
int ProfileTable<Rec>::AddProfile(std::string_view name, Rec& record) {
  const int number = this->AddRecord(name, record);
  if (number >= 0) NoteName(name, number);
  return number;
}

template <class Rec>
void ProfileTable<Rec>::NoteName(std::string_view name, int number) {
  const auto note = [&] {
    if (namesMade_) names_.emplace(name, number);
    return 0;
  };
  if (Guarded(note) < 0) namesMade_ = false;
}

template <class Rec>
int ProfileTable<Rec>::StoreRenamed(Rec& record, std::string_view name) {
  std::string oldName;
  if (this->Name(record.id, oldName) < 0) return -1;
  const std::int32_t old = record.name;
  this->index_->MakeRoom(name.size());
  const int added = this->strings_->AddString(name);
  if (added < 0) return -1;
  record.name = added;
  if (this->Update(record) < 0) return -1;
  this->index_->Remove(oldName);
  this->EnterName(name, record);
  ForgetName(oldName, record.id);
  NoteName(name, record.id);
  return this->ReleaseText(old);
}

template <class Rec>
void ProfileTable<Rec>::ShareTexts(Rec& record) {
  ForEachText(record, [this](std::int32_t& word) {
    std::string text;
    word = this->Text(word, text) < 0 ? -1 : this->strings_->AddString(text);
  });
}

template class ProfileTable<SiteSiteRec>;
template class ProfileTable<SiteServRec>;

}  // namespace zvrsit
