// The undo history of one manager: steps, oldest first, each a list of cells that say what a store
// has changed.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

namespace zvrsit {

// The store that wrote a cell: the low byte of its code.
inline constexpr std::uint32_t kTagLink = 2;
inline constexpr std::uint32_t kTagUrl = 4;
inline constexpr std::uint32_t kTagJunk = 8;
inline constexpr std::uint32_t kTagSiteProf = 16;
inline constexpr std::uint32_t kTagServProf = 32;
inline constexpr std::uint32_t kTagFolder = 64;
inline constexpr std::uint32_t kTagRel = 128;
inline constexpr std::uint32_t kTagMask = 0xFF;

// What it did: the bits 0x7F0000.
//
//   operation         data                                     value
//   kOpAdd            the record after the change              record number
//   kOpDelete         the record before it                     record number
//   kOpRewrite        the record before it                     record number
//   kOpStringAdd      -                                        the new string id
//   kOpStringDelete   the old text                             the old string id
//
// The pair stores need no record number: it stands in the record, and `value` stays 0.
inline constexpr std::uint32_t kOpAdd = 0x20000;
inline constexpr std::uint32_t kOpDelete = 0x40000;
inline constexpr std::uint32_t kOpRewrite = 0x80000;
inline constexpr std::uint32_t kOpStringAdd = 0x100000;
inline constexpr std::uint32_t kOpStringDelete = 0x200000;
inline constexpr std::uint32_t kOpMask = 0x7F0000;

inline constexpr std::uint32_t kGroupBegin = 0xC0000000;
inline constexpr std::uint32_t kGroupEnd = 0x80000000;

// One change.
struct HistCell {
  std::uint32_t code = 0;  // a tag and an operation
  std::string data;        // a record as its bytes in the file, or a text
  std::int32_t value = 0;
};

// One step.
struct HistProc {
  std::uint32_t groupMark = 0;  // 0, kGroupBegin or kGroupEnd
  // The files of the site that was open when the step was made (SitHist::EnterFiles); 0 for none.
  // The cells of a site's stores have a meaning only while these files are open.
  int files = 0;
  std::list<HistCell> cells;  // oldest first
};

class SitHist {
 public:
  SitHist() = default;
  virtual ~SitHist() = default;
  SitHist(const SitHist&) = delete;
  SitHist& operator=(const SitHist&) = delete;

  // Appends an empty plain step; it belongs to the history.
  HistProc* NewStep();
  // Appends an empty cell to the last step; null when there is no step.
  HistCell* NewCell();
  // Appends a filled cell to the last step; without a step the change is not recorded.
  void Record(std::uint32_t code, std::int32_t value, std::string data);
  // Frees the last cell of a step, or the last step with all its cells; nothing when there is none.
  void DropLastCell(HistProc* step);
  void DropLastStep();
  // Frees all steps.
  void Clear();

  // The newest step, or null.
  HistProc* LastStep();

  // From now on new steps belong to the files of a site. `stamp` describes the state of these
  // files. If files in that state were left before, their steps can be undone again. Other files
  // have no steps yet.
  void EnterFiles(const std::string& stamp);
  // From now on new steps belong to no files. `stamp` describes the state in which the files were
  // left.
  void LeaveFiles(const std::string& stamp);
  // Whether the files of a step are those that are open.
  bool IsOfOpenFiles(const HistProc& step) const { return files_ != 0 && step.files == files_; }
  // Gives records of a pair store their new numbers, in all cells of the open files. `numbers` has
  // the new number for each old one; -1 for a record that is gone.
  void RenumberPairs(std::uint32_t storeTag, const std::vector<std::int32_t>& numbers);

 private:
  std::list<HistProc> steps_;
  std::map<std::string, int> left_;  // by stamp
  int files_ = 0;
  int lastFiles_ = 0;
};

}  // namespace zvrsit
