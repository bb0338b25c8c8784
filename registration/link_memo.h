// What the link extraction keeps from page to page while one operation runs.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "links/extractor.h"
#include "links/served_files.h"
#include "links/target_resolver.h"
#include "manager_base/operation_memo.h"
#include "storage/id_table.h"
#include "storage/text_map.h"
#include "tables/site_link_db.h"
#include "util/hash.h"
#include "util/prefetch.h"
#include "util/url_id.h"

namespace zvrsit {

// Targets that were resolved and registered before: one look-up instead of all that work. Pages
// come folder by folder. So only the targets of pages with one base are kept at a time, and these
// lie close together in memory. Good as long as no entry is deleted.
class TargetMemo {
 public:
  // From now on targets are those of pages with this base and root. Some targets are known by the
  // number of their text in the link table. If `links` has freed a number since, the number may
  // belong to another text by now; then these targets are forgotten.
  void SetBase(std::string_view base, std::string_view root, const SiteLinkDB* links);
  // Forgets all targets.
  void Clear();

  // The entry of `target`; an id of -1 for a target that gets no link; null when it is not known.
  // `takesName`: the name of the default document is put after it before it is resolved.
  const UrlID* Find(std::string_view target, bool takesName) const {
    return targets_[takesName ? 1 : 0].Find(target, HashOf(target));
  }
  // Remembers a target that Find did not find.
  void Put(std::string_view target, bool takesName, const UrlID& place) {
    targets_[takesName ? 1 : 0].Insert(target, HashOf(target), place);
  }

  // The same for a target whose text is a string of the link table, by its number there.
  const UrlID* FindText(int text, bool takesName) const {
    const auto at = static_cast<std::size_t>(text);
    const auto& texts = texts_[takesName ? 1 : 0];
    if (at >= texts.size()) return nullptr;
    const TextEntry& entry = texts.at(at);
    return entry.round == round_ ? &entry.place : nullptr;
  }
  void PutText(int text, bool takesName, const UrlID& place);
  // Fetches what FindText of a target that takes no name will read.
  void FetchText(int text) const {
    const auto at = static_cast<std::size_t>(text);
    if (at < texts_[0].size()) PrefetchMemory(&texts_[0].at(at));
  }

  // Longer targets are not worth keeping.
  static constexpr std::size_t kLongest = 1024;

 private:
  struct TextEntry {
    std::uint32_t round = 0;  // in which it was put
    UrlID place;
  };

  static std::uint32_t HashOf(std::string_view target) {
    return static_cast<std::uint32_t>(HashBytes(target));
  }

  std::string base_;                         // base and root
  std::uint32_t releases_ = 0;               // of the link table when this round began
  std::uint32_t round_ = 1;                  // what was put in an earlier one is forgotten
  std::array<IdTable<TextEntry>, 2> texts_;  // by `takesName`, then number; as long as the largest
  std::array<TextMap<UrlID>, 2> targets_;    // by `takesName`
  std::string key_;                          // scratch
};

// To find the target of a row, the processor waits for memory twice: for the slot of the text's
// hash, then for the string. This class works some rows ahead of the row that is being registered
// and asks for both. So the waits of several rows overlap.
class RowsAhead {
 public:
  // The rows before `end` of `rows`. `texts` are the strings of the link table, or null.
  RowsAhead(const std::vector<LinkRow>& rows, std::size_t end, const SiteVarRecDB* texts,
            const TargetMemo& targets)
      : rows_(rows), texts_(texts), targets_(targets), end_(end) {}

  // What a search for the row's target will most likely find. To be called for one row after
  // another.
  const FoundString& GuessFor(std::size_t row) {
    assert(row < end_ && row + kRows >= passed_);
    if (row >= passed_) GoAhead(row);
    return guesses_[row % kRows];
  }

 private:
  static constexpr std::size_t kRows = 16;

  void GoAhead(std::size_t row);

  const std::vector<LinkRow>& rows_;
  const SiteVarRecDB* const texts_;
  const TargetMemo& targets_;
  const std::size_t end_;
  std::size_t passed_ = 0;                    // all rows before it
  std::array<FoundString, kRows> guesses_{};  // of the last rows, each at its number modulo kRows
};

struct LinkMemo {
  LinkMemo(LinkRules rules, std::shared_ptr<ServedFiles> servedFiles)
      : resolver(rules), served(std::move(servedFiles)) {}

  PageRows rows;
  TargetResolver resolver;
  TargetMemo targets;
  const std::shared_ptr<ServedFiles> served;  // never null; with RuleFlags::findsFolderDocuments
  std::string path;                           // scratch
};

}  // namespace zvrsit
