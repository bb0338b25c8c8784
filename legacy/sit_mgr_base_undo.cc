// Taking back steps: the walk, and a handler for each kind of store.
#include <array>
#include <iterator>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "legacy/word_record.h"

namespace zvrsit {

namespace {

// Under which new ids the texts of deleted strings were restored.
struct RestoredString {
  int oldId = -1;  // -1: the slot is free
  int newId = -1;
};

constexpr int kRemapSlots = 16;

// One for all managers, a bank for the links and one for the relations.
std::array<RestoredString, kRemapSlots> remapBanks[2];
int remapCount = 0;  // slots in use; one count for both banks, which is meant

// True when the slot was put to use below the count.
bool EnterRestored(std::array<RestoredString, kRemapSlots>& bank, int oldId, int newId) {
  for (int i = 0; i < kRemapSlots; ++i) {
    RestoredString& slot = bank[static_cast<std::size_t>(i)];
    if (i >= remapCount) {
      remapCount = i + 1;
      slot = {oldId, newId};
      return false;
    }
    if (slot.oldId == -1) {
      slot = {oldId, newId};
      return true;
    }
  }
  return false;
}

// Replaces the id by the one that its text now has and frees the slot; false when it is in none.
bool Remap(std::array<RestoredString, kRemapSlots>& bank, std::int32_t& id) {
  if (id < 0) return false;
  for (int i = 0; i < remapCount; ++i) {
    RestoredString& slot = bank[static_cast<std::size_t>(i)];
    if (slot.oldId != id) continue;
    id = slot.newId;
    slot.oldId = -1;
    return true;
  }
  return false;
}

// Where the record of a cell stands now: in its slot, or, when it was deleted and added again in
// between, in the last one of its pair. -1 when it is gone.
int SlotNow(SitPairDB& store, const SitPairRec& record) {
  const auto current = store.Read(record.id);
  const bool samePair = current && current->from == record.from && current->to == record.to;
  if (record.id >= 0 && !samePair) return -1;
  if (samePair && current->id == record.id) return record.id;
  const std::vector<int> ids = store.Matching(record.from, record.to);
  return ids.empty() ? -1 : ids.back();
}

// Each of these is true when a cell of the reversal is to be dropped.

bool UndoPairAdd(SitPairDB& store, const SitPairRec& old) {
  SitPairRec record = old;
  record.id = SlotNow(store, old);
  if (record.refCount < 1 || record.id < 0) return false;
  return store.Delete(record, false) == 0;
}

bool UndoPairDelete(SitPairDB& store, int bank, SitPairRec old) {
  const int added = store.Add(old.from, old.to);
  auto found = store.Find(old.from, old.to);
  // The search may have met another record of the pair, or the end of an enumeration.
  if (!found || found->id != added) found = store.Read(added);
  if (found && Remap(remapBanks[bank], old.asIsUrlId)) {
    found->linkType = old.linkType;
    found->asIsUrlId = old.asIsUrlId;
    found->imgAltId = old.imgAltId;
  }
  // A link that had no text of its own comes back as a new one, of type 1 and without strings.
  remapCount = 0;
  if (found) store.Write(*found);
  return true;
}

bool UndoPairRewrite(SitPairDB& store, int bank, SitPairRec old) {
  // Only this string follows its text; the alternative text's id is written back as it was. Meant.
  Remap(remapBanks[bank], old.asIsUrlId);
  remapCount = 0;
  old.id = SlotNow(store, old);
  return old.id >= 0 && store.Write(old) > 0;
}

template <class Rec>
int UndoProf(SitProf<Rec>* store, SitHist& history, HistProc* step, const HistCell& cell) {
  if (store == nullptr) return 0;
  Rec record;
  const bool hasRecord = WordsFromText(cell.data, record);
  bool done = false;
  switch (cell.code & kOpMask) {
    case kOpStringAdd:
      done = store->GetString(cell.value) && store->DeleteString(cell.value) == 0;
      break;
    case kOpStringDelete:
      // Later changes have been taken back, so the id is free and the text gets it again.
      done = store->RestoreString(cell.value, cell.data) >= 0;
      break;
    case kOpRewrite:
      done = hasRecord && store->Write(cell.value, record) == 0;
      break;
    case kOpAdd:
      done = store->TakeBackAdd(cell.value) == 0;
      break;
    case kOpDelete:
      done = hasRecord && store->TakeBackDelete(cell.value, record) == 0;
      break;
    default:
      break;
  }
  if (done) history.DropLastCell(step);
  return 0;
}

}  // namespace

int SitMgrBase::Undo() {
  const int before = inside_->FailedWrites();
  int depth = 0;
  do {
    HistProc* step = inside_->history->LastStep();
    if (step == nullptr) break;
    if (step->groupMark == kGroupEnd) ++depth;
    if (step->groupMark == kGroupBegin) --depth;
    inside_->UndoCells(step);
    inside_->history->DropLastStep();
  } while (depth > 0);
  inside_->Written(before);
  return 0;
}

int SitMgrBase::UndoWithAlternatives() {
  inside_->keepsTextNumbers = true;
  Undo();
  inside_->keepsTextNumbers = false;
  return 0;
}

void SitMgrBase::Inside::UndoCells(HistProc* step) {
  if (step->cells.empty()) return;
  for (auto cell = std::prev(step->cells.end());;) {
    // The handler may drop this cell, never one before it.
    const bool first = cell == step->cells.begin();
    const auto before = first ? cell : std::prev(cell);
    UndoCell(step, &*cell);
    if (first) return;
    cell = before;
  }
}

void SitMgrBase::Inside::UndoCell(HistProc* step, HistCell* cell) {
  switch (cell->code & kTagMask) {
    case kTagLink:
    case kTagRel:
      manager.UndoLinkDB(step, cell);
      break;
    case kTagUrl:
    case kTagJunk:
    case kTagFolder:
      manager.UndoUrlDB(step, cell);
      break;
    case kTagSiteProf:
      manager.UndoSiteProf(step, cell);
      break;
    case kTagServProf:
      manager.UndoServProf(step, cell);
      break;
    default:
      break;
  }
}

int SitMgrBase::UndoLinkDB(HistProc* step, HistCell* cell) {
  const std::uint32_t tag = cell->code & kTagMask;
  if (tag != kTagLink && tag != kTagRel) return -1;
  SitPairDB* store = tag == kTagLink ? inside_->linkDB.get() : inside_->relDB.get();
  if (store == nullptr || !inside_->history->IsOfOpenFiles(*step)) return 0;
  const int bank = tag == kTagLink ? 0 : 1;
  SitPairRec record;
  const bool hasRecord = WordsFromText(cell->data, record);
  bool drop = false;
  switch (cell->code & kOpMask) {
    case kOpStringAdd:
      drop = store->GetString(cell->value) && store->DeleteString(cell->value) == 0;
      break;
    case kOpStringDelete: {
      const int restored =
          store->AddString(cell->data.c_str(), inside_->keepsTextNumbers ? cell->value : 0);
      // Where the count is raised for it, the cell of the reversal stays. Meant.
      drop = EnterRestored(remapBanks[bank], cell->value, restored);
      break;
    }
    case kOpRewrite:
      drop = hasRecord && UndoPairRewrite(*store, bank, record);
      break;
    case kOpAdd:
      drop = hasRecord && UndoPairAdd(*store, record);
      break;
    case kOpDelete:
      drop = hasRecord && UndoPairDelete(*store, bank, record);
      break;
    default:
      break;
  }
  if (drop) inside_->history->DropLastCell(step);
  return 0;
}

int SitMgrBase::UndoUrlDB(HistProc* step, HistCell* cell) {
  const std::uint32_t tag = cell->code & kTagMask;
  if (tag != kTagUrl && tag != kTagJunk && tag != kTagFolder) return -1;
  SitBlockDB* store = (tag == kTagUrl    ? inside_->urlDB
                       : tag == kTagJunk ? inside_->junkDB
                                         : inside_->folderDB)
                          .get();
  if (store == nullptr || !inside_->history->IsOfOpenFiles(*step)) return 0;
  SitUrlRec record;
  if (!DecodeUrlRec(cell->data.data(), cell->data.size(), record)) return 0;
  bool done = false;
  switch (cell->code & kOpMask) {
    case kOpAdd:
      done = store->TakeBackAdd(cell->value) == 0;
      break;
    case kOpDelete:
      done = store->TakeBackDelete(cell->value, record) == 0;
      break;
    case kOpRewrite:
      done = store->Write(cell->value, record) == kSitOk;
      break;
    default:
      break;
  }
  if (done) inside_->history->DropLastCell(step);
  return 0;
}

int SitMgrBase::UndoSiteProf(HistProc* step, HistCell* cell) {
  if ((cell->code & kTagMask) != kTagSiteProf) return -1;
  return UndoProf(inside_->siteProf.get(), *inside_->history, step, *cell);
}

int SitMgrBase::UndoServProf(HistProc* step, HistCell* cell) {
  if ((cell->code & kTagMask) != kTagServProf) return -1;
  return UndoProf(inside_->servProf.get(), *inside_->history, step, *cell);
}

}  // namespace zvrsit
