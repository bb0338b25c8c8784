// One row of a query's result.
#pragma once

#include <cstdint>
#include <string>

#include "platform/api.h"
#include "util/url_id.h"

namespace zvrsit {

// Programs outside of the library make and read cells, so the order of the members is fixed.
class ZVRSIT_API SiteRecCell {
 public:
  SiteRecCell();
  SiteRecCell(const SiteRecCell&);
  SiteRecCell& operator=(const SiteRecCell&);
  SiteRecCell(SiteRecCell&&) noexcept;
  SiteRecCell& operator=(SiteRecCell&&) noexcept;
  virtual ~SiteRecCell();

  // The entry; (0, -1) in a fresh cell.
  UrlID GetID() const { return id_; }
  void SetID(const UrlID& id) { id_ = id; }
  // A link-type code in answers about links, else 0.
  int GetLinkType() const { return linkType_; }
  void SetLinkType(int linkType) { linkType_ = linkType; }
  // The name or the path of the entry.
  std::string GetName() const { return name_; }
  void SetName(const std::string& name) { name_ = name; }
  // The title of a page, else empty.
  std::string GetTitle() const { return title_; }
  void SetTitle(const std::string& title) { title_ = title; }
  // A file-type code (util/file_type.h), 0 in a fresh cell.
  int GetFileType() const { return fileType_; }
  void SetFileType(int fileType) { fileType_ = fileType; }
  // Seconds since the epoch, 32 bits.
  long GetTime() const { return time_; }
  void SetTime(long time) { time_ = static_cast<std::int32_t>(time); }
  // Bytes of the file; 0xFFFFFFFF when not known.
  unsigned int GetSize() const { return size_; }
  void SetSize(unsigned int size) { size_ = size; }
  // A mark whose meaning belongs to the query.
  int GetFlag() const { return flag_; }
  void SetFlag(int flag) { flag_ = flag; }

 private:
  UrlID id_{kKindFolder, -1};
  std::int32_t linkType_ = 0;
  std::string name_;
  std::string title_;
  std::int32_t fileType_ = 0;
  std::int32_t time_ = 0;
  std::uint32_t size_ = 0xFFFFFFFF;
  std::int32_t flag_ = 0;
};

}  // namespace zvrsit
