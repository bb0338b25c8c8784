// What the two families of profile operations have in common.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string>

#include "legacy/sit_error.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_prof.h"
#include "util/scramble.h"

namespace zvrsit {

enum class ProfText { kPlain, kScrambled };

// The operations on one profile store, made for one call of the manager. Each sets the manager's
// last error.
template <class Rec>
class ProfEditor {
 public:
  // A field, named by its member in the record or by its word.
  using Field = std::int32_t Rec::*;
  struct Place {
    Place(int number) : word(number) {}
    Place(Field field) : word(WordOf(field)) {}
    int word;
  };
  static int WordOf(Field field) {
    const Rec record;
    return static_cast<int>(&(record.*field) - reinterpret_cast<const std::int32_t*>(&record));
  }

  // `store` may be null.
  ProfEditor(SitProf<Rec>* store, SitHist& history, int& lastError)
      : store_(store), history_(history), lastError_(lastError) {}

  int Num() {
    if (store_ == nullptr) return Fail(kSitNoStore);
    const int count = store_->Num();
    return count < 0 ? Fail(kSitNoProfile) : Succeed(count);
  }

  // A new string; null for a deleted record (15), past the last slot (16), without a store (7).
  std::string* Name(int number) {
    if (store_ == nullptr) return FailText(kSitNoStore);
    if (number < 0 || number >= store_->Slots()) return FailText(kSitPastEnd);
    Rec record;
    if (store_->Read(number, record) < 0) return FailText(kSitNotFound);
    const auto name = store_->GetString(record.name);
    if (!name) return FailText(kSitNotFound);
    lastError_ = kSitOk;
    return new std::string(*name);
  }

  int GetID(const std::string& name) {
    if (store_ == nullptr) return Fail(kSitNoStore);
    Rec record;
    int number = -1;
    return store_->Find(name, record, &number) < 0 ? Fail(kSitNoProfile) : Succeed(number);
  }

  // Adds an empty record under a new name; 0 or -1.
  int Add(const std::string& name) {
    history_.NewStep();
    if (store_ == nullptr) return Fail(kSitNoStore);
    Rec taken;
    if (name.empty() || store_->Find(name, taken) == 0) return Fail(kSitBadArgument);
    Rec record;
    record.name = store_->AddString(name);
    return record.name < 0 || store_->Add(record) < 0 ? Fail(kSitWriteFailed) : Succeed();
  }

  int Del(const std::string& name) {
    history_.NewStep();
    const int number = GetID(name);
    if (number < 0) return -1;
    return store_->Delete(number) < 0 ? Fail(kSitDeleteFailed) : Succeed();
  }

  // A new record under `to` with the fields of `from`; 0 or -1.
  int Copy(const std::string& from, const std::string& to) {
    history_.NewStep();
    const int source = GetID(from);
    if (source < 0) return -1;
    Rec record;
    Rec taken;
    if (store_->Read(source, record) < 0) return Fail(kSitNotFound);
    if (to.empty() || store_->Find(to, taken) == 0) return Fail(kSitBadArgument);
    for (std::int32_t* string : record.strings()) {
      const auto text = string == &record.name ? to : store_->GetString(*string);
      *string = text ? store_->AddString(*text) : -1;
    }
    return store_->Add(record) < 0 ? Fail(kSitWriteFailed) : Succeed();
  }

  // Gives a profile another name.
  int Move(const std::string& from, const std::string& to) {
    history_.NewStep();
    const int number = GetID(from);
    if (number < 0) return -1;
    Rec record;
    Rec taken;
    if (to.empty() || store_->Find(to, taken) == 0) return Fail(kSitBadArgument);
    if (store_->Read(number, record) < 0) return Fail(kSitNotFound);
    store_->DeleteString(record.name);
    record.name = store_->AddString(to);
    return store_->Write(number, record) < 0 ? Fail(kSitWriteFailed) : Succeed();
  }

  std::string* GetText(int number, Place field, ProfText kind = ProfText::kPlain) {
    Rec record;
    if (!ReadChecked(number, record)) return nullptr;
    const auto text = store_->GetString(Word(record, field.word));
    if (!text) return FailText(kSitNoValue);
    lastError_ = kSitOk;
    return new std::string(kind == ProfText::kScrambled ? Unscramble(*text) : *text);
  }

  int GetNumber(int number, Place field) {
    Rec record;
    return ReadChecked(number, record) ? Succeed(Word(record, field.word)) : -1;
  }

  // 0 when the record could be read, even if the last write fails. This is meant.
  int SetText(int number, Place field, const std::string& text, ProfText kind = ProfText::kPlain) {
    const int word = field.word;
    if (text.empty() || !HasWord(word)) return Fail(kSitBadArgument);
    Rec record;
    if (!ReadChecked(number, record)) return -1;
    history_.NewStep();
    if (Word(record, word) >= 0) store_->DeleteString(Word(record, word));
    SetWord(record, word, store_->AddString(kind == ProfText::kScrambled ? Scramble(text) : text));
    store_->Write(number, record);
    return Succeed();
  }

  int SetNumber(int number, Place field, int value) {
    Rec record;
    if (!ReadChecked(number, record)) return -1;
    history_.NewStep();
    SetWord(record, field.word, value);
    store_->Write(number, record);
    return Succeed();
  }

 private:
  static constexpr int kWords = static_cast<int>(sizeof(Rec) / 4);
  using RecordWords = std::array<std::int32_t, kWords>;

  static bool HasWord(int word) { return word >= 0 && word < kWords; }
  static std::int32_t Word(const Rec& record, int word) {
    return HasWord(word) ? std::bit_cast<RecordWords>(record)[static_cast<std::size_t>(word)] : -1;
  }
  static void SetWord(Rec& record, int word, std::int32_t value) {
    auto words = std::bit_cast<RecordWords>(record);
    words[static_cast<std::size_t>(word)] = value;
    record = std::bit_cast<Rec>(words);
  }

  bool ReadChecked(int number, Rec& record) {
    lastError_ = kSitNoStore;
    if (store_ == nullptr) return false;
    lastError_ = kSitNoProfile;
    if (number < 0 || number >= store_->Num()) return false;
    lastError_ = kSitNotFound;
    if (store_->Read(number, record) < 0) return false;
    lastError_ = kSitOk;
    return true;
  }

  int Fail(int error) {
    lastError_ = error;
    return -1;
  }
  std::string* FailText(int error) {
    lastError_ = error;
    return nullptr;
  }
  int Succeed(int result = 0) {
    lastError_ = kSitOk;
    return result;
  }

  SitProf<Rec>* store_;
  SitHist& history_;
  int& lastError_;
};

}  // namespace zvrsit
