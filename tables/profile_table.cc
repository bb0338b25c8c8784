#include "tables/profile_table.h"

#include "util/site_name.h"

namespace zvrsit {

namespace {

// Calls text(word) for every text word of a profile but its name.
template <class Text>
void ForEachText(SiteSiteRec& record, Text text) {
  text(record.topFile);
  text(record.defaultUrl);
  text(record.servProf);
  for (std::int32_t& folder : record.folders) text(folder);
  text(record.urlFile);
  text(record.pathFile);
  text(record.linkFile);
  text(record.folderFile);
  text(record.relFile);
}

template <class Text>
void ForEachText(SiteServRec& record, Text text) {
  text(record.host);
  text(record.user);
  text(record.password);
  text(record.dir);
  text(record.firewallHost);
  text(record.firewallUser);
  text(record.firewallPassword);
  text(record.initRemoteDir);
  text(record.mruDirRemote);
  text(record.mruDirLocal);
  text(record.asciiSuffix);
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
    this->records_->Backup();
    this->strings_->Backup();
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
  SiteVarRecDB strings(SiteTable::StringPath(path), wholeFile_);
  SiteFixRecDB records(path, Rec::kSlotLength, Rec::kRecordType, wholeFile_);
  return strings.Restore() < 0 || records.Restore() < 0 ? -1 : 0;
}

template <class Rec>
int ProfileTable<Rec>::Delete(int number) {
  Rec record;
  if (this->Get(number, record) < 0 || NamedTableBase::Delete(number) < 0) return -1;
  int result = 0;
  ForEachText(record, [this, &result](std::int32_t word) {
    if (this->ReleaseText(word) < 0) result = -1;
  });
  return result;
}

template <class Rec>
int ProfileTable<Rec>::FindButForCase(std::string_view name, int except) const {
  for (int number = this->NextNumber(0); number >= 0; number = this->NextNumber(number + 1)) {
    if (number != except && EqualIgnoringCase(this->NameView(number), name)) return number;
  }
  return -1;
}

template <class Rec>
int ProfileTable<Rec>::StoreRenamed(Rec& record, std::string_view name) {
  std::string oldName;
  if (this->Name(record.id, oldName) < 0) return -1;
  const std::int32_t old = record.name;
  const int added = this->strings_->AddString(name);
  if (added < 0) return -1;
  record.name = added;
  if (this->Update(record) < 0) return -1;
  this->index_->Remove(oldName);
  this->EnterName(name, record);
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
