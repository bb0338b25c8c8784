// SitePathDB: the local files of a site (entries of kind 2), found by their path.
//
// Paths are compared byte by byte: two that differ in letter case are two entries.
#pragma once

#include <cstdint>
#include <vector>

#include "tables/named_table.h"

namespace zvrsit {

class SitePathDB : public NamedTable<SitePathRec> {
 public:
  // As NamedTable::Delete, and the list of the record is deleted first. Its block goes; its names
  // keep their references.
  [[nodiscard]] int Delete(int number);
  int Clear() = delete;  // would leave the lists behind

  // Reads only the publishing-membership word; 0 or -1.
  [[nodiscard]] int ReadMembership(int number, std::int32_t& marks) const {
    return IsNumber(number) ? records_->ReadWord(number, SitePathRec::kMembershipAt, marks) : -1;
  }

  // The list of a record holds the string ids of the page's anchor names, as one raw block. The
  // next two change `record` only; the caller writes it back. SetList puts `ids` in place of the
  // old list and gives the names of that back. An empty `ids` means no list. 0 or -1.
  [[nodiscard]] int SetList(SitePathRec& record, const std::vector<std::int32_t>& ids);
  [[nodiscard]] int GetList(const SitePathRec& record, std::vector<std::int32_t>& ids) const;
  // Gives back the names and the block of the list; 0 or -1.
  [[nodiscard]] int ClearList(SitePathRec& record);
  // Gives back the list and every text but the name, and unsets them in `record`; 0, or -1 when
  // the list could not be given back.
  [[nodiscard]] int ReleaseTexts(SitePathRec& record);
};

}  // namespace zvrsit
