// How URLs of other sites are asked.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace zvrsit {

// What the user may choose; docs/external.md describes it. Counts are at least 1, but for those of
// retries and redirects, which may be 0.
struct ExternalSettings {
  using Milliseconds = std::chrono::milliseconds;
  using Seconds = std::chrono::seconds;

  bool fragments = false;       // whether the fragments of links are looked for in the pages
  bool offline = false;         // nothing is asked; what is kept is the answer, however old
  bool privateNetwork = false;  // addresses of the machine's own network are asked too
  bool robots = true;           // a URL that robots.txt forbids is not asked
  std::vector<std::pair<int, int>> accept{{200, 299}};  // ranges of good status codes
  std::string userAgent;                                // empty: the name of the program
  std::string netrc;   // a file with the passwords of hosts, native; empty: none
  std::string caFile;  // a file with certificates to trust, native; empty: those of the system
  int parallel = 32;   // requests at a time, in all
  int perServer = 4;   // and to one server
  int retries = 2;     // of a request, after a fault that may pass
  int redirects = 10;  // that are followed
  Milliseconds retryDelay{1000};     // before the first of the retries; it doubles with each
  Milliseconds longestWait{60'000};  // that a server may ask for (Retry-After)
  Milliseconds connectTimeout{10'000};
  Milliseconds stallTimeout{15'000};  // without a byte
  Milliseconds timeout{30'000};       // of a whole request
  // After which time something is asked again.
  Seconds okAge{7 * 86'400};
  Seconds movedAge{7 * 86'400};
  Seconds brokenAge{86'400};
  Seconds unsureAge{3'600};
};

}  // namespace zvrsit
