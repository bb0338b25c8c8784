// Asks the external URLs of a site, as far as their answers are not kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "external/answer.h"
#include "external/settings.h"

namespace zvrsit {

// What is known of one URL.
struct UrlResult {
  UrlState state = UrlState::kOk;
  std::string url;        // without its fragment, unless that is missing; as it was asked
  std::string words;      // what is wrong: "answers 404 (not found)"; empty for kOk
  std::string movedTo;    // of kMoved: with the fragment of the URL
  int status = 0;         // of the last response; 0 for none
  std::int64_t time = 0;  // of the answer, in seconds since 1970; 0 for none
};

struct AskedUrls {
  std::vector<UrlResult> results;  // for each URL, in their order
  std::size_t asked = 0;           // how many URLs were asked now
  std::size_t kept = 0;            // how many answers were kept from before
  std::size_t unreached = 0;       // of those asked now: no connection came about
  std::string fault;               // why the answers cannot be kept; empty: they are
};

// What is done while answers are waited for, ten times a second at least; what it throws ends the
// asking, and what was answered by then is kept.
using WhileAsking = std::function<void(std::size_t done, std::size_t all, std::string_view url)>;

// The http and https URLs as they stand in pages. `file` keeps the answers, native; "" for none.
// Equal URLs are asked once, whatever their fragments. Answers to URLs with passwords are not kept.
AskedUrls AskUrls(const std::vector<std::string>& urls, const ExternalSettings& settings,
                  const std::string& file, const WhileAsking& whileAsking);

}  // namespace zvrsit
