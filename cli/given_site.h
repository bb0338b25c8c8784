// What the user says about a site, on the command line or in its configuration.
#pragma once

#include <optional>
#include <string>

namespace zvrsit::cli {

// Fields that are not given are not set. Names are native.
struct GivenSite {
  std::optional<std::string> folder;
  std::optional<std::string> top;                 // absolute, or relative to the folder
  std::optional<std::string> defaultUrl;          // empty: none
  std::optional<std::string> fallbackExtensions;  // empty: none; else what PageTypes takes
  std::optional<std::string> docRoot;             // empty: none
  std::optional<std::string> pageTypes;  // empty: the usual ones; else what PageTypes takes
  std::optional<std::string> rules;      // "web" or "classic"
  std::optional<std::string> server;     // empty: none
  std::optional<std::string> baseUrl;    // empty: none; else what LiveAddress takes
};

// What is wrong with a value of baseUrl, of pageTypes or fallbackExtensions, or of rules; empty for
// nothing.
std::string FaultOfBaseUrl(const std::string& url);
std::string FaultOfExtensions(const std::string& list);
std::string FaultOfRules(const std::string& rules);

}  // namespace zvrsit::cli
