#include "tables/table_check.h"

#include <algorithm>

#include "storage/records.h"
#include "storage/site_db.h"
#include "util/hash.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

std::string Number(std::int64_t number) {
  return std::to_string(number);
}

// One of many things that may be equal, with the hash of its key.
struct Keyed {
  std::uint64_t hash;
  std::int32_t place;
};

// The places, ascending, of those that equal one that comes before them.
template <class IsEqual>
std::vector<std::int32_t> FindRepeated(std::vector<Keyed>& all, IsEqual isEqual) {
  std::sort(all.begin(), all.end(), [](const Keyed& a, const Keyed& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.place < b.place;
  });
  std::vector<std::int32_t> repeated;
  for (std::size_t i = 1; i < all.size(); ++i) {
    if (all[i].hash == all[i - 1].hash && isEqual(all[i - 1].place, all[i].place)) {
      repeated.push_back(all[i].place);
    }
  }
  std::sort(repeated.begin(), repeated.end());
  return repeated;
}

}  // namespace

void TableCheck::TellAt(const std::string& file, std::int64_t offset, const std::string& what,
                        bool isWaste) {
  ++(isWaste ? faults_.wastes : faults_.damages);
  if (++toldHere_ <= TableFaults::kMostOfTable) {
    faults_.told.push_back({file, offset, what, isWaste});
  }
}

void TableCheck::TellOf(std::int32_t number, const std::string& what) {
  TellAt(table_.recordFile(), table_.records().OffsetOf(SlotOf(number)),
         "record " + Number(number) + " " + what);
}

void TableCheck::Check() {
  const bool hasRecords = table_.ReadRecords();
  const bool hasTexts = table_.ReadTexts();
  if (!hasRecords) Tell("the file is not there, or cannot be read");
  if (!hasTexts) TellAt(table_.textFile(), 0, "the file is not there, or cannot be read");
  if (hasRecords && CheckHeader(table_.records(), table_.recordFile())) CheckSlots();
  if (!hasTexts || !CheckHeader(table_.texts(), table_.textFile())) return;
  CheckEntries();
  uses_.Reset(static_cast<std::size_t>(table_.texts().ids()));
  ForEachRecord([this](std::int32_t number, const char* slot) { CheckWords(number, slot); });
  CheckUses();
  CheckEqualTexts();
  CheckKeys();
}

bool TableCheck::CheckHeader(const RawFile& file, const std::string& name) {
  if (!file.hasHeader()) {
    TellAt(name, 0, "the file ends in its header, after " + Number(file.size()) + " bytes");
    return false;
  }
  if (!file.hasMagic()) TellAt(name, 0, "the file does not begin as a file of a table does");
  if (file.idCount() != file.ids()) {
    TellAt(name, 16, "its count of numbers, " + Number(file.idCount()) + ", cannot be");
  }
  return true;
}

void TableCheck::CheckSlots() {
  const RawRecords& records = table_.records();
  const std::int32_t slots = records.slots();
  if (records.slotCount() != slots) {
    TellAt(table_.recordFile(), 20,
           "the header tells of " + Number(records.slotCount()) +
               " records, but there is room for " + Number(slots));
  } else if (slots > records.ids()) {
    TellAt(table_.recordFile(), 20, "there are more records than numbers were handed out");
  }
  slots_.Reset(static_cast<std::size_t>(records.ids()));
  for (std::int32_t slot = 0; slot < slots; ++slot) CheckSlot(slot);
}

void TableCheck::CheckSlot(std::int32_t slot) {
  const RawRecords& records = table_.records();
  const char* const bytes = records.Slot(slot);
  const std::int32_t number = LoadLE32(bytes);
  if (number == -1) return;
  const auto tell = [&](const std::string& what) {
    TellAt(table_.recordFile(), records.OffsetOf(slot), what);
  };
  if (!records.IsNumber(number)) return tell("no record can have the number " + Number(number));
  if (LoadLE32(bytes + records.slotLength() - 4) != 0) {
    tell("the last bytes of record " + Number(number) + " are not zero");
  }
  std::int32_t& known = slots_.slot(static_cast<std::size_t>(number));
  if (known != 0) tell("there is another record " + Number(number) + " before this one");
  if (known == 0) ++live_;
  known = slot + 1;
}

void TableCheck::CheckEntries() {
  const RawTexts& texts = table_.texts();
  const std::string file = table_.textFile();
  if (!texts.hasEnd()) return TellAt(file, 24, "the file has no end offset");
  if (texts.endOffset() < RawTexts::kFirstEntry || texts.endOffset() > texts.size()) {
    TellAt(file, 24, "its end offset, " + Number(texts.endOffset()) + ", cannot be");
  }
  std::int32_t entries = 0;
  texts.ForEachEntry([&](const RawTexts::Entry& entry) {
    ++entries;
    CheckEntry(entry);
  });
  if (table_.walked() < texts.end()) {
    TellAt(file, table_.walked(),
           entries == texts.entryCount()
               ? "there is more after the last text that the header tells of"
               : "no text can be read from here on");
  } else if (entries != texts.entryCount()) {
    TellAt(file, 20,
           "the header tells of " + Number(texts.entryCount()) + " texts, but there are " +
               Number(entries));
  }
}

void TableCheck::CheckEntry(const RawTexts::Entry& entry) {
  if (entry.id == -1) return;
  const auto tell = [&](const std::string& what) { TellAt(table_.textFile(), entry.offset, what); };
  if (!table_.texts().IsNumber(entry.id)) {
    return tell("no text can have the number " + Number(entry.id));
  }
  RawTexts::Entry found;
  if (table_.FindEntry(entry.id, found) && found.offset != entry.offset) {
    tell("there is another text " + Number(entry.id) + " after this one");
  }
  if (entry.kind != 1 && entry.kind != 2) {
    tell("text " + Number(entry.id) + " is of the unknown kind " + Number(entry.kind));
  } else if (entry.isString() && (entry.data.size() < 2 || entry.data.back() != '\0')) {
    tell("text " + Number(entry.id) + " has no end");
  } else if (entry.isString() && entry.references < 1) {
    tell("text " + Number(entry.id) + " is there, but is used " + Number(entry.references) +
         " times");
  }
}

void TableCheck::CheckWords(std::int32_t number, const char* slot) {
  std::int32_t listed = 0;
  for (const RecordWord& word : WordsOf(ShapeOf(table_.kind()).recordType)) {
    const std::int32_t value = LoadLE32(slot + word.at);
    if (word.kind == WordKind::kCount) listed = value;
    if (word.kind == WordKind::kList) UseList(number, word, value, listed);
    if (word.isText()) UseText(number, word, value);
  }
  if (table_.kind() == TableKind::kLinks && LoadLE32(slot + SiteLinkRec::kCountAt) < 1) {
    TellOf(number, "occurs " + Number(LoadLE32(slot + SiteLinkRec::kCountAt)) + " times");
  }
}

void TableCheck::UseText(std::int32_t number, const RecordWord& word, std::int32_t id) {
  std::string_view text;
  if (table_.FindText(id, text)) {
    CountUse(id);
  } else if (id != -1 || word.kind == WordKind::kName) {
    TellOf(number, std::string("has text ") + Number(id) + " for its " + word.name +
                       ", which is not there");
  }
}

// A block is read for its first record only: a damaged file may name one block in all its records.
void TableCheck::UseList(std::int32_t number, const RecordWord& word, std::int32_t id,
                         std::int32_t count) {
  if (id == -1 && count == 0) return;
  RawTexts::Entry block;
  if (!table_.FindEntry(id, block) || block.isString() ||
      static_cast<std::int64_t>(block.data.size()) != std::int64_t{count} * 4) {
    return TellOf(number, std::string("has block ") + Number(id) + " for its " + Number(count) +
                              " " + word.name + ", which is not there or has another length");
  }
  if (uses_.at(static_cast<std::size_t>(id)) > 0) {
    return TellOf(number, std::string("has its ") + word.name + " from another record");
  }
  CountUse(id);
  for (std::int32_t i = 0; i < count; ++i) {
    UseText(number, {word.name, WordKind::kName}, LoadLE32(block.data.data() + i * 4));
  }
}

void TableCheck::CountUse(std::int32_t id) {
  ++uses_.slot(static_cast<std::size_t>(id));
}

void TableCheck::CheckUses() {
  table_.texts().ForEachEntry([this](const RawTexts::Entry& entry) {
    RawTexts::Entry found;
    if (!table_.FindEntry(entry.id, found) || found.offset != entry.offset) return;
    const std::int32_t uses = uses_.at(static_cast<std::size_t>(entry.id));
    const std::int32_t counted = entry.isString() ? entry.references : 1;
    if (counted == uses) return;
    const std::string what = "text " + Number(entry.id) + " is counted " + Number(counted) +
                             " times, but is used " + Number(uses) + " times";
    TellAt(table_.textFile(), entry.offset, what, counted > uses);
  });
}

void TableCheck::CheckEqualTexts() {
  std::vector<Keyed> all;
  table_.texts().ForEachEntry([&](const RawTexts::Entry& entry) {
    if (!entry.isString() || entry.id < 0) return;
    all.push_back({HashBytes(entry.text()), static_cast<std::int32_t>(entry.offset)});
  });
  const auto textAt = [this](std::int32_t offset) {
    RawTexts::Entry entry;
    return table_.texts().ReadEntry(offset, entry) ? entry.text() : std::string_view();
  };
  for (const std::int32_t offset :
       FindRepeated(all, [&](auto a, auto b) { return textAt(a) == textAt(b); })) {
    TellAt(table_.textFile(), offset, "the same text is there twice");
  }
}

// What no two records of a table have alike. Equal texts have equal numbers.
std::string TableCheck::KeyOf(const char* slot) const {
  constexpr int kEnds = SiteRelRec::kFromAt;
  switch (table_.kind()) {
    case TableKind::kRelations:
      return {slot + kEnds, 16};
    case TableKind::kLinks:
      return std::string(slot + kEnds, SiteLinkRec::kCountAt - kEnds)
          .append(slot + SiteLinkRec::kAlternativeAt, 4);
    case TableKind::kSites:
    case TableKind::kServers: {
      std::string name(table_.NameOf(slot));
      ToLowerMB(name);
      return name;
    }
    default:
      return std::string(table_.NameOf(slot));
  }
}

void TableCheck::CheckKeys() {
  std::vector<Keyed> all;
  ForEachRecord([&](std::int32_t number, const char* slot) {
    const std::string key = KeyOf(slot);
    if (!key.empty()) all.push_back({HashBytes(key), number});
  });
  for (const std::int32_t number :
       FindRepeated(all, [&](auto a, auto b) { return KeyOf(Slot(a)) == KeyOf(Slot(b)); })) {
    TellOf(number, "is equal to another one");
  }
}

}  // namespace zvrsit
