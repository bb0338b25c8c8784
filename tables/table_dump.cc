#include "tables/table_dump.h"

#include "storage/record_words.h"
#include "tables/raw_table.h"

namespace zvrsit {
namespace {

void AddText(const RawTable& table, std::int32_t id, DumpedWord& dumped) {
  std::string_view text;
  if (table.FindText(id, text)) {
    dumped.texts.emplace_back(text);
  } else {
    dumped.isThere = false;
  }
}

// `mayList`: of how many texts lists may still tell. A sound file has each list once, but in a
// damaged one all records may have the same.
void AddTexts(const RawTable& table, std::int32_t id, DumpedWord& dumped, std::int64_t& mayList) {
  RawTexts::Entry block;
  dumped.isThere = table.FindEntry(id, block) && !block.isString();
  const std::size_t count = dumped.isThere ? block.data.size() / 4 : 0;
  mayList -= static_cast<std::int64_t>(count);
  if (mayList < 0) dumped.isThere = false;
  for (std::size_t i = 0; i < count && mayList >= 0; ++i) {
    AddText(table, LoadLE32(block.data.data() + i * 4), dumped);
  }
}

DumpedWord Dump(const RawTable& table, const RecordWord& word, const char* slot,
                std::int64_t& mayList) {
  using Kind = DumpedWord::Kind;
  DumpedWord dumped;
  dumped.name = word.name;
  const std::int32_t value = LoadLE32(slot + word.at);
  dumped.number =
      word.kind == WordKind::kUnsigned ? std::int64_t{LoadLEU32(slot + word.at)} : value;
  if (word.kind == WordKind::kEnd) {
    dumped.kind = Kind::kEnd;
    dumped.end = {value, LoadLE32(slot + word.at + 4)};
  } else if (word.kind == WordKind::kList) {
    dumped.kind = Kind::kTexts;
    if (value != -1) AddTexts(table, value, dumped, mayList);
  } else if (word.isText()) {
    dumped.kind = word.kind == WordKind::kSecret ? Kind::kSecret : Kind::kText;
    if (value != -1) AddText(table, value, dumped);
    if (dumped.kind == Kind::kSecret) dumped.texts.clear();
  }
  return dumped;
}

// Adds what keeps the records from being read to their end.
void TellWhereRecordsStop(const RawTable& table, bool isRead, std::vector<TableFault>& stopped) {
  const RawRecords& records = table.records();
  const auto tell = [&](std::int64_t offset, const char* what) {
    stopped.push_back({table.recordFile(), offset, what, false});
  };
  if (!isRead) return tell(0, "the file is not there, or cannot be read");
  if (!records.hasHeader()) return tell(records.size(), "the file ends in its header");
  if (records.slotCount() > records.slots()) {
    tell(records.OffsetOf(records.slots()), "the file ends before its last record");
  } else if (records.slotCount() < 0) {
    tell(20, "the header tells of less than no records");
  }
}

void TellWhereTextsStop(const RawTable& table, bool isRead, std::vector<TableFault>& stopped) {
  const auto tell = [&](std::int64_t offset, const char* what) {
    stopped.push_back({table.textFile(), offset, what, false});
  };
  if (!isRead) return tell(0, "the file is not there, or cannot be read");
  if (!table.texts().hasEnd()) return tell(table.texts().size(), "the file ends in its header");
  if (table.walked() != table.texts().endOffset()) {
    tell(table.walked(), "no text is read from here on");
  }
}

}  // namespace

void DumpRecords(TableKind kind, const std::string& recordFile, bool dead, DumpHook hook,
                 void* context, std::vector<TableFault>& stopped) {
  RawTable table(kind, recordFile);
  const bool hasRecords = table.ReadRecords();
  const bool hasTexts = table.ReadTexts();
  const RawRecords& records = table.records();
  std::int64_t mayList = table.texts().size() / 4;
  for (std::int32_t slot = 0; slot < records.slots(); ++slot) {
    const char* const bytes = records.Slot(slot);
    DumpedRecord record{LoadLE32(bytes), records.OffsetOf(slot), {}};
    if (record.number == -1 && !dead) continue;
    for (const RecordWord& word : WordsOf(ShapeOf(kind).recordType)) {
      if (word.kind != WordKind::kCount) record.words.push_back(Dump(table, word, bytes, mayList));
    }
    hook(record, context);
  }
  TellWhereRecordsStop(table, hasRecords, stopped);
  TellWhereTextsStop(table, hasTexts, stopped);
}

}  // namespace zvrsit
