#include "legacy/sit_prof.h"

#include <algorithm>
#include <type_traits>

#include "legacy/word_record.h"
#include "util/server_fields.h"

namespace zvrsit {

namespace {

constexpr std::int64_t kProfileHeaderSize = 8;
static_assert(sizeof(SiteRec) == 88 && sizeof(ServRec) == 68);

template <class Rec>
constexpr std::uint32_t kProfTag = std::is_same_v<Rec, SiteRec> ? kTagSiteProf : kTagServProf;

template <class Rec>
std::int64_t SlotOffset(int number) {
  return kProfileHeaderSize + static_cast<std::int64_t>(sizeof(Rec)) * number;
}

}  // namespace

std::array<std::int32_t*, 19> SiteRec::strings() {
  return {&name,   &topFile, &dir[0],   &dir[1], &dir[2],     &dir[3],   &dir[4],
          &dir[5], &dir[6],  &dir[7],   &dir[8], &dir[9],     &servProf, &urlDB,
          &junkDB, &linkDB,  &folderDB, &relDB,  &lastUsedDir};
}

std::array<std::int32_t*, 12> ServRec::strings() {
  std::array<std::int32_t*, 12> texts{&name};
  std::size_t count = 1;
  ForEachServerField<ServRec>([&](ServerField kind, std::int32_t ServRec::*field) {
    if (kind != ServerField::kNumber) texts[count++] = &(this->*field);
  });
  return texts;
}

template <class Rec>
SitProf<Rec>::SitProf(const std::string& path, SitHist* history) : history_(history) {
  file_.Open(path);
  strings_.Open(path + "_S");
  std::int32_t word = 0;
  if (file_.IsOpen() && file_.Size() == 0) {
    file_.WriteWord(0, word);
    file_.WriteWord(4, word);
  }
}

template <class Rec>
SitProf<Rec>::~SitProf() = default;

template <class Rec>
int SitProf<Rec>::Num() {
  std::int32_t count = -1;
  return file_.ReadWord(0, count) ? count : -1;
}

template <class Rec>
int SitProf<Rec>::Slots() {
  const std::int64_t inFile =
      (file_.Size() - kProfileHeaderSize) / static_cast<std::int64_t>(sizeof(Rec));
  return static_cast<int>(std::clamp<std::int64_t>(Num(), 0, std::max<std::int64_t>(inFile, 0)));
}

template <class Rec>
int SitProf<Rec>::Read(int number, Rec& record) {
  WordBytes<Rec> bytes;
  if (number < 0 || !file_.ReadAt(SlotOffset<Rec>(number), bytes.data(), bytes.size())) return -1;
  record = LoadWords<Rec>(bytes.data());
  return 0;
}

template <class Rec>
int SitProf<Rec>::Find(const std::string& name, Rec& record, int* number) {
  const int slots = Slots();
  for (int i = 0; i < slots; ++i) {
    Rec candidate;
    if (Read(i, candidate) < 0) return -1;
    if (GetString(candidate.name) != name) continue;
    record = candidate;
    if (number != nullptr) *number = i;
    return 0;
  }
  return -1;
}

template <class Rec>
bool SitProf<Rec>::WriteSlot(int number, const Rec& record) {
  if (number < 0) return false;
  const WordBytes<Rec> bytes = StoreWords(record);
  return file_.WriteAt(SlotOffset<Rec>(number), bytes.data(), bytes.size());
}

template <class Rec>
int SitProf<Rec>::Write(int number, const Rec& record) {
  Rec old;
  if (Read(number, old) == 0) RecordChange(kOpRewrite, number, old);
  return WriteSlot(number, record) ? 0 : -1;
}

template <class Rec>
void SitProf<Rec>::RecordChange(std::uint32_t operation, int number, const Rec& record) {
  if (history_ != nullptr) {
    history_->Record(kProfTag<Rec> | operation, number, WordsAsText(record));
  }
}

template <class Rec>
void SitProf<Rec>::ChangeLiveCount(int by) {
  std::int32_t live = 0;
  if (file_.ReadWord(4, live)) {
    file_.WriteWord(4,
                    static_cast<std::int32_t>(std::max<std::int64_t>(std::int64_t{live} + by, 0)));
  }
}

template <class Rec>
int SitProf<Rec>::Add(Rec& record) {
  const int number = Slots();
  record.number = number;
  if (!WriteSlot(number, record) || !file_.WriteWord(0, number + 1)) return -1;
  ChangeLiveCount(1);
  RecordChange(kOpAdd, number, record);
  return number;
}

template <class Rec>
int SitProf<Rec>::Delete(int number) {
  Rec old;
  if (Read(number, old) < 0 || old.number < 0) return -1;
  RecordChange(kOpDelete, number, old);
  Rec marked = old;
  marked.number = -1;
  for (std::int32_t* string : marked.strings()) *string = -1;
  if (!WriteSlot(number, marked)) return -1;
  ChangeLiveCount(-1);
  for (const std::int32_t* string : old.strings()) {
    if (*string >= 0) DeleteString(*string);
  }
  return 0;
}

template <class Rec>
int SitProf<Rec>::TakeBackAdd(int number) {
  Rec record;
  if (Read(number, record) < 0) return -1;
  RecordChange(kOpDelete, number, record);
  if (number == Slots() - 1) {
    if (!file_.WriteWord(0, number)) return -1;
  } else {
    record.number = -1;
    for (std::int32_t* string : record.strings()) *string = -1;
    if (!WriteSlot(number, record)) return -1;
  }
  ChangeLiveCount(-1);
  return 0;
}

template <class Rec>
int SitProf<Rec>::TakeBackDelete(int number, const Rec& record) {
  if (!WriteSlot(number, record)) return -1;
  ChangeLiveCount(1);
  RecordChange(kOpAdd, number, record);
  return 0;
}

template <class Rec>
std::optional<std::string> SitProf<Rec>::GetString(int id) {
  return strings_.Get(id);
}

template <class Rec>
int SitProf<Rec>::AddString(const std::string& text) {
  return RestoreString(0, text);
}
template <class Rec>
int SitProf<Rec>::DeleteString(int id) {
  std::optional<std::string> old = strings_.Get(id);
  if (old && history_ != nullptr) {
    history_->Record(kProfTag<Rec> | kOpStringDelete, id, std::move(*old));
  }
  return strings_.Delete(id);
}

template <class Rec>
int SitProf<Rec>::RestoreString(int id, const std::string& text) {
  const int added = strings_.Add(text.c_str(), id);
  if (added >= 0 && history_ != nullptr) history_->Record(kProfTag<Rec> | kOpStringAdd, added, {});
  return added;
}

template class SitProf<SiteRec>;
template class SitProf<ServRec>;

}  // namespace zvrsit
