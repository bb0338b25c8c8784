// The profiles of sites and servers as plain values.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "links/link_rules.h"
#include "util/site_slots.h"

namespace zvrsit {

// A site's profile. An empty text is a field that is not set.
struct SiteProfile {
  std::array<std::string, kSiteFolderSlots> folders;
  std::string topFile;     // full path of the home page
  std::string defaultUrl;  // name of the document that stands for its folder
  std::string server;      // name of the server profile
  bool useDocumentRoot = false;
  LinkRules linkRules = LinkRules::Classic;
  std::int32_t rebuildState = 0;  // 0 never rebuilt, 1 the last one failed, 2 it succeeded

  bool operator==(const SiteProfile&) const = default;
};

// A server's profile. An empty text is a field that is not set. The passwords are in clear here
// and scrambled in the file.
struct ServProfile {
  std::string host;
  std::string user;
  std::string password;
  std::string dir;  // the remote folder that the site goes to
  // The numbers here are the publishing side's own.
  std::int32_t firewall = 0;
  std::string firewallHost;
  std::string firewallUser;
  std::string firewallPassword;
  std::int32_t transferType = 0;
  std::int32_t initDirMode = 0;
  std::int32_t lockDir = 0;
  std::string initRemoteDir;
  std::string mruDirRemote;  // recently used folders
  std::string mruDirLocal;
  std::string asciiSuffix;  // extensions of files that are sent as text

  bool operator==(const ServProfile&) const = default;
};

}  // namespace zvrsit
