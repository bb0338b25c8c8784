// What the link extraction keeps from page to page while one operation runs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "links/extractor.h"
#include "links/target_resolver.h"
#include "manager/base/operation_memo.h"
#include "storage/probe_table.h"
#include "tables/site_link_db.h"
#include "util/url_id.h"

namespace zvrsit {

// Targets that were resolved and registered before: one look-up instead of all that. Good for as
// long as no entry is deleted.
class TargetMemo {
 public:
  // Turns to the targets of pages whose base and root are these.
  void TurnTo(std::string_view base, std::string_view root);

  // What `target` stands for; an id of -1 is a target without a link. Null when it is not known.
  // `variant` tells apart targets that read the same and are resolved in two ways.
  const UrlID* Find(std::string_view target, bool variant) const;
  // Remembers a target that Find did not find.
  void Put(std::string_view target, bool variant, const UrlID& place);

  // A target that stands in the link table word by word.
  struct Written {
    std::int32_t text = -1;  // its string id there
    UrlID place;
  };
  // Null when no such link was added, or its text has gone since.
  const Written* FindWritten(std::string_view target, bool variant, const SiteLinkDB& links) const;
  // Remembers a target that FindWritten did not find.
  void PutWritten(std::string_view target, bool variant, const Written& written);

  // Longer targets are not worth keeping.
  static constexpr std::size_t kLongest = 1024;

 private:
  struct Entry {
    std::uint32_t hash = 0;
    std::uint32_t base = 0;    // number of the base, twice, plus the variant
    std::uint32_t offset = 0;  // of the target in texts_
    std::uint32_t length = 0;
    UrlID place;
  };
  struct WrittenEntry {
    std::uint32_t hash = 0;
    std::uint32_t base = 0;  // as in Entry
    Written written;
  };

  std::uint32_t HashOf(std::string_view target, std::uint32_t base) const;

  TextMap<std::uint32_t> bases_;
  std::uint32_t base_ = 0;
  ProbeTable<Entry> entries_;
  ProbeTable<WrittenEntry> written_;
  std::string texts_;
  std::string key_;  // scratch
};

struct LinkMemo {
  explicit LinkMemo(LinkRules rules) : resolver(rules) {}

  PageRows rows;
  TargetResolver resolver;
  TargetMemo targets;
  // Web: a path to the document that stands for it when it is a folder, to "" when it is none.
  TextMap<std::string> folderDocuments;
  std::string path;  // scratch
};

}  // namespace zvrsit
