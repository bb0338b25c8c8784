#include "tables/site_table.h"

#include <utility>

#include "platform/native_path.h"
#include "platform/single_byte.h"
#include "storage/guarded.h"
#include "tables/table_files.h"

namespace zvrsit {
namespace {

bool IsOneFile(std::string_view path, std::string_view other) {
  return platform::kNamesIgnoreCase ? platform::EqualButForCase(path, other) : path == other;
}

}  // namespace

SiteTable::~SiteTable() = default;

int SiteTable::OpenFiles(const std::string& path, int recordLength, int recordType,
                         bool wholeFile) {
  if (path.empty() || wasOpened_) return -1;
  const auto open = [&] { return MakeFiles(path, recordLength, recordType, wholeFile); };
  wasOpened_ = Guarded(open) == 0;
  if (!wasOpened_) DropFiles();
  return wasOpened_ ? 0 : -1;
}

int SiteTable::MakeFiles(const std::string& path, int recordLength, int recordType,
                         bool wholeFile) {
  if (IsOneFile(path, TextFileOf(path))) return -1;
  records_ = std::make_unique<SiteFixRecDB>(path, recordLength, recordType, wholeFile);
  strings_ = std::make_unique<SiteVarRecDB>(TextFileOf(path), wholeFile);
  for (SiteDB* const file :
       {static_cast<SiteDB*>(records_.get()), static_cast<SiteDB*>(strings_.get())}) {
    if (readOnly_) file->SetReadOnly();
    if (maps_) file->SetMapped();
    if (isDurable_) file->SetDurable();
    file->SetUndo(undo_);
  }
  return records_->Open() < 0 || strings_->Open() < 0 ? -1 : 0;
}

// In direct mode the destructor does not close the descriptor, so the file is closed first.
void SiteTable::DropFiles() {
  if (records_ != nullptr && !records_->isInMemory()) static_cast<void>(records_->Close());
  if (strings_ != nullptr && !strings_->isInMemory()) static_cast<void>(strings_->Close());
  records_.reset();
  strings_.reset();
}

int SiteTable::Close() {
  if (records_ != nullptr) {
    if (records_->Close() < 0) return -1;
    records_.reset();
  }
  if (strings_ != nullptr) {
    if (CloseStrings() < 0) return -1;
    strings_.reset();
  }
  return 0;
}

// The names of the index lie in the bytes of the store, so the index takes these bytes over.
int SiteTable::CloseStrings() {
  if (index_ == nullptr) return strings_->Close();
  FileImage bytes;
  const int result = strings_->Close(&bytes);
  if (!strings_->isOpen()) index_->Keep(std::move(bytes));
  return result;
}

int SiteTable::Flush() {
  if (!isOpen()) return -1;
  const int records = records_->Flush();
  const int strings = strings_->Flush();
  return records < 0 || strings < 0 ? -1 : 0;
}

void SiteTable::NoteChanges(UndoLog& log) const {
  if (records_ != nullptr) records_->NoteChanges(log);
  if (strings_ != nullptr) strings_->NoteChanges(log);
}

int SiteTable::Pack() {
  if (!isOpen()) return -1;
  const auto copyNames = [&] {
    if (index_ != nullptr) index_->CopyNames();
    return 0;
  };
  if (Guarded(copyNames) < 0) return -1;
  return records_->Pack() < 0 || strings_->Pack() < 0 ? -1 : 0;
}

bool SiteTable::IsWorthPacking() const {
  if (!isOpen()) return false;
  const std::int64_t records = std::int64_t{records_->slotCount()} * records_->recordBytes();
  const std::int64_t strings = strings_->endOffset();
  return records_->deadBytes() * 4 > records || strings_->deadBytes() * 4 > strings;
}

bool SiteTable::IsFull() const {
  return isOpen() && (records_->isFull() || strings_->isFull());
}

int SiteTable::Count() const {
  return records_ == nullptr ? -1 : records_->idCount();
}

int SiteTable::NextNumber(int number) const {
  return records_ == nullptr ? -1 : records_->NextId(number);
}

int SiteTable::Text(int reference, std::string& text) const {
  return strings_ == nullptr ? -1 : strings_->GetString(reference, text);
}

std::string_view SiteTable::TextView(int reference) const {
  return strings_ == nullptr ? std::string_view() : strings_->View(reference);
}

int SiteTable::ReleaseText(int reference) {
  return reference < 0 ? 0 : strings_->ReleaseString(reference);
}

}  // namespace zvrsit
