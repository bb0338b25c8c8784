// What the link extraction keeps from page to page while one operation runs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "links/extractor.h"
#include "links/folder_documents.h"
#include "links/target_resolver.h"
#include "manager_base/operation_memo.h"
#include "storage/id_table.h"
#include "storage/probe_table.h"
#include "tables/site_link_db.h"
#include "util/prefetch.h"
#include "util/url_id.h"

namespace zvrsit {

// Targets that were resolved and registered before: one look-up instead of all that. Pages come
// folder by folder, so those of one base at a time are kept, which stay near. Good for as long as
// no entry is deleted.
class TargetMemo {
 public:
  // Turns to the targets of pages whose base and root are these. Targets known by a number of the
  // link table are forgotten where `links` has freed one since, which may be another text by now.
  void TurnTo(std::string_view base, std::string_view root, const SiteLinkDB* links);
  // Forgets all targets.
  void Clear();

  // What `target` stands for; an id of -1 is a target without a link. Null when it is not known.
  // `variant` tells apart targets that read the same and are resolved in two ways.
  const UrlID* Find(std::string_view target, bool variant) const;
  // Remembers a target that Find did not find.
  void Put(std::string_view target, bool variant, const UrlID& place);

  // The same for a target whose text is a string of the link table, by its number there.
  const UrlID* FindText(int text, bool variant) const {
    const auto at = static_cast<std::size_t>(text);
    const auto& texts = texts_[variant ? 1 : 0];
    if (at >= texts.size()) return nullptr;
    const TextEntry& entry = texts.at(at);
    return entry.turn == turn_ ? &entry.place : nullptr;
  }
  void PutText(int text, bool variant, const UrlID& place);
  // Brings near what FindText without a variant will read.
  void ExpectText(int text) const {
    const auto at = static_cast<std::size_t>(text);
    if (at < texts_[0].size()) PrefetchMemory(&texts_[0].at(at));
  }

  // Longer targets are not worth keeping.
  static constexpr std::size_t kLongest = 1024;

 private:
  struct Entry {
    std::uint32_t hash = 0;
    std::uint32_t offset = 0;  // of the target in bytes_
    std::uint32_t length = 0;
    bool variant = false;
    UrlID place;
  };
  struct TextEntry {
    std::uint32_t turn = 0;  // when it was put
    UrlID place;
  };

  static std::uint32_t HashOf(std::string_view target, bool variant);

  std::string base_;                         // base and root
  std::uint32_t releases_ = 0;               // of the link table when this turn was begun
  std::uint32_t turn_ = 1;                   // what was put in others is forgotten
  std::array<IdTable<TextEntry>, 2> texts_;  // by variant, then number; as long as the largest
  ProbeTable<Entry> entries_;
  std::string bytes_;
  std::string key_;  // scratch
};

// Goes ahead of the rows that are being registered, some at a time, and brings near what looking
// for their targets will read: first the slot of each text's hash, then, when those have come, its
// string.
class RowsAhead {
 public:
  // The rows before `end` of `rows`. `texts` are the strings of the link table, or null.
  RowsAhead(const std::vector<LinkRow>& rows, std::size_t end, const SiteVarRecDB* texts,
            const TargetMemo& targets)
      : rows_(rows), texts_(texts), targets_(targets), end_(end) {}

  // What is expected of looking for the target of a row; to be asked for one row after another.
  const FoundString& ExpectedOf(std::size_t row) {
    if (row >= passed_) GoAhead(row);
    return expected_[row % kRows];
  }

 private:
  static constexpr std::size_t kRows = 16;

  void GoAhead(std::size_t row);

  const std::vector<LinkRow>& rows_;
  const SiteVarRecDB* const texts_;
  const TargetMemo& targets_;
  const std::size_t end_;
  std::size_t passed_ = 0;                     // all rows before it
  std::array<FoundString, kRows> expected_{};  // by row, in turn
};

struct LinkMemo {
  LinkMemo(LinkRules rules, const std::string* defaultName)
      : resolver(rules), folderDocuments(defaultName) {}

  PageRows rows;
  TargetResolver resolver;
  TargetMemo targets;
  FolderDocuments folderDocuments;  // Web
  std::string path;                 // scratch
};

}  // namespace zvrsit
