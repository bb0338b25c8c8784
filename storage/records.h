// The eight records of the tables: plain values made of 32-bit words.
//
// A record holds no text. A text word is a string id in the table's variable-record file, -1 for
// none. On disk a record is its words in the order below, little-endian; the slot that holds it
// (kSlotLength) is four bytes longer, and those are zero.
//
//   SiteBaseRec   0 id
//   SiteNodeRec   0 id            4 name
//   SiteUrlRec    0 as node       8 state               12 lastChecked
//   SiteRelRec    0 id            4 from (kind, id)     12 to (kind, id)
//   SiteLinkRec   0 as relation  20 text                24 type             28 count
//                32 alternative  36 offset
//   SitePathRec   0 as node       8 fileType            12 title            16 exists
//                20 size         24 creationTime        28 modificationTime 32 accessTime
//                36 membership   40 listCount           44 listData         48 lastModified
//                52 expires      56 generator           60 keywords         64 description
//                68 contentType  72 metaText            76 unread
//   SiteSiteRec   0 as node       8 rebuildState        12 topFile          16 useDocRoot
//                20 defaultUrl   24 linkRules           28 servProf         32 folders (ten)
//                72 urlFile      76 pathFile            80 linkFile         84 folderFile
//                88 relFile
//   SiteServRec   0 as node       8 host                12 user             16 password
//                20 dir          24 firewall            28 firewallHost     32 firewallUser
//                36 firewallPassword                    40 fxferType        44 initDirMode
//                48 lockDir      52 initRemoteDir       56 mruDirRemote     60 mruDirLocal
//                64 asciiSuffix
//
// Serialize writes all words to `buffer` and gives the number of bytes, Deserialize reads them
// back; both give -1 for a null buffer and then change nothing.
#pragma once

#include <array>
#include <cstdint>

#include "util/site_slots.h"
#include "util/url_id.h"

namespace zvrsit {

class SiteBaseRec {
 public:
  static constexpr int kRecordType = 1;
  static constexpr int kSlotLength = 8;  // of no table
  virtual ~SiteBaseRec() = default;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  bool operator==(const SiteBaseRec&) const = default;

  std::int32_t id = -1;  // record number; -1 in a slot marks it dead
};

class SiteNodeRec : public SiteBaseRec {
 public:
  static constexpr int kRecordType = 2;
  static constexpr int kSlotLength = 12;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  bool operator==(const SiteNodeRec&) const = default;

  std::int32_t name = -1;  // text
};

// An external URL.
class SiteUrlRec : public SiteNodeRec {
 public:
  static constexpr int kRecordType = 5;
  static constexpr int kSlotLength = 20;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  std::int32_t state = 0;        // of the last check; 0 never checked
  std::int32_t lastChecked = 0;  // seconds since the epoch
};

// Parent and child.
class SiteRelRec : public SiteBaseRec {
 public:
  static constexpr int kRecordType = 3;
  static constexpr int kSlotLength = 24;
  static constexpr int kFromAt = 4;  // where words lie in a slot
  static constexpr int kToAt = 12;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  UrlID from{-1, -1};
  UrlID to{-1, -1};
};

// A link; `from` is the page, `to` the target.
class SiteLinkRec : public SiteRelRec {
 public:
  static constexpr int kRecordType = 6;
  static constexpr int kSlotLength = 44;
  // Where words lie in a slot.
  static constexpr int kTextAt = 20;
  static constexpr int kTypeAt = 24;
  static constexpr int kCountAt = 28;
  static constexpr int kAlternativeAt = 32;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  std::int32_t text = -1;         // text: the reference as written
  std::int32_t type = 0;          // link-type code
  std::int32_t count = 1;         // how often the page has it
  std::int32_t alternative = -1;  // text
  std::int32_t offset = -1;       // in bytes, of the first occurrence in the page; -1 not known
};

// A local file.
class SitePathRec : public SiteNodeRec {
 public:
  static constexpr int kRecordType = 4;
  static constexpr int kSlotLength = 84;
  static constexpr int kMembershipAt = 36;  // where that word lies in a slot
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  bool operator==(const SitePathRec&) const = default;

  std::int32_t fileType = 1;  // file-type code
  std::int32_t title = -1;    // text
  std::int32_t exists = 0;    // 1: a regular file, below the site folder, spelled as on disk
  std::int32_t size = 0;      // in bytes, the bits of an unsigned number
  std::int32_t creationTime = 0;
  std::int32_t modificationTime = 0;
  std::int32_t accessTime = 0;
  std::int32_t membership = 0;     // publishing-membership bits
  std::int32_t listCount = 0;      // number of anchor names
  std::int32_t listData = -1;      // raw block of their string ids
  std::int32_t lastModified = -1;  // texts of META elements from here on
  std::int32_t expires = -1;
  std::int32_t generator = -1;
  std::int32_t keywords = -1;
  std::int32_t description = -1;
  std::int32_t contentType = -1;
  std::int32_t metaText = -1;  // the text that is stored once after all META elements
  static constexpr std::int32_t kRead = -1;
  static constexpr std::int32_t kUnread = 1;
  std::int32_t unread = kRead;  // kUnread: a page or sheet whose links are not, or not all, known
};

// A site profile.
class SiteSiteRec : public SiteNodeRec {
 public:
  static constexpr int kRecordType = 7;
  static constexpr int kSlotLength = 96;
  static constexpr std::int32_t kWebRules = 1;  // a bit of linkRules
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  std::int32_t rebuildState = 0;  // 0 never rebuilt, 1 the last rebuild failed, 2 it succeeded
  std::int32_t topFile = -1;      // text
  std::int32_t useDocRoot = 0;    // flag
  std::int32_t defaultUrl = -1;   // text
  std::int32_t linkRules = 0;     // kWebRules, or 0 for the classic rules
  std::int32_t servProf = -1;     // text: name of the server profile
  std::array<std::int32_t, kSiteFolderSlots> folders{-1, -1, -1, -1, -1,
                                                     -1, -1, -1, -1, -1};  // texts
  std::int32_t urlFile = -1;  // texts: file names of the five tables
  std::int32_t pathFile = -1;
  std::int32_t linkFile = -1;
  std::int32_t folderFile = -1;
  std::int32_t relFile = -1;
};

// A server profile.
class SiteServRec : public SiteNodeRec {
 public:
  static constexpr int kRecordType = 8;
  static constexpr int kSlotLength = 72;
  int Serialize(void* buffer) const;
  int Deserialize(const void* buffer);

  std::int32_t host = -1;      // text
  std::int32_t user = -1;      // text
  std::int32_t password = -1;  // text, scrambled
  std::int32_t dir = -1;       // text: remote folder
  std::int32_t firewall = 0;
  std::int32_t firewallHost = -1;      // text
  std::int32_t firewallUser = -1;      // text
  std::int32_t firewallPassword = -1;  // text, scrambled
  std::int32_t fxferType = 0;
  std::int32_t initDirMode = 0;
  std::int32_t lockDir = 0;
  std::int32_t initRemoteDir = -1;  // texts
  std::int32_t mruDirRemote = -1;
  std::int32_t mruDirLocal = -1;
  std::int32_t asciiSuffix = -1;
};

}  // namespace zvrsit
