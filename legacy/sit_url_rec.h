// What the older generation knows of a file, an external URL or a folder.
#pragma once

#include <cstdint>
#include <string>

namespace zvrsit {

// Bits of the status word. A link to an entry with one of kStatusBroken is a broken link.
inline constexpr std::int32_t kStatusFound = 1;     // the file was there when last looked at
inline constexpr std::int32_t kStatusMissing = 2;   // it was not
inline constexpr std::int32_t kStatusOutside = 4;   // it lies outside of the site folder
inline constexpr std::int32_t kStatusUnusable = 8;  // spelled otherwise on disk, no regular file,
                                                    // or an external URL that failed its check
inline constexpr std::int32_t kStatusBroken = kStatusMissing | kStatusUnusable;

// Bits of the publishing membership.
inline constexpr std::int32_t kMemberReached = 1;  // reached by links from the top file
inline constexpr std::int32_t kMemberMarked = 4;   // marked by the user

// One entry. The three kinds share one shape; what a kind does not use stays as constructed.
struct SitUrlRec {
  std::int32_t fileType = 1;
  std::int32_t size = -1;  // bytes as an unsigned word; -1 when not known
  std::int32_t creationTime = 0;
  std::int32_t modificationTime = 0;
  std::int32_t accessTime = 0;
  std::int32_t status = 0;
  std::int32_t ftpMember = 0;
  std::int32_t lastChecked = 0;
  std::string key;
  std::string title;
  std::string lastModified;
  std::string expires;
  std::string generator;
  std::string keywords;
  std::string description;
  std::string contentType;

  bool operator==(const SitUrlRec&) const = default;
};

}  // namespace zvrsit
