// What a URL answered, and what that means.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "external/settings.h"

namespace zvrsit {

// Why there was no response to go by. The numbers are kept on disk.
enum class ExternalFault : std::uint8_t {
  kNone = 0,
  kUnknownHost = 1,
  kUnreachable = 2,
  kCertificate = 3,  // or whatever else kept TLS from being set up
  kTimeout = 4,
  kLost = 5,  // the connection broke off
  kRedirects = 6,
  kScheme = 7,  // redirected to another scheme than http and https
  kResponse = 8,
  // These are never kept:
  kOwnNetwork = 9,
  kRobots = 10,
  kNotKept = 11,    // nothing is kept of it, and nothing was to be asked
  kLeftAlone = 12,  // its server has answered 429, and wants to be left alone
};

enum class FragmentState : std::uint8_t { kFound = 0, kMissing = 1, kUnknown = 2 };

// URLs in it have no user and no password.
struct Answer {
  std::int64_t time = 0;  // seconds since 1970
  int status = 0;         // of the last response; 0 for none
  ExternalFault fault = ExternalFault::kNone;
  std::string detail;    // of the fault, in words; may be empty
  std::string movedTo;   // where redirects for good lead, from the first on; empty for none
  std::string endedAt;   // where all redirects lead; empty for none
  bool isLogin = false;  // whether that looks like a page to log in, which the first URL does not
  std::vector<std::pair<std::string, FragmentState>> fragments;  // those that were looked for
};

enum class UrlState : std::uint8_t {
  kOk,
  kMoved,
  kBroken,
  kUnsure,  // broken now, but perhaps not later, or not for others
  kUnasked,
  kMissingFragment,  // the page is there, and has nothing of that name
};
// "ok", "moved" and so on; a missing fragment makes a URL "broken".
inline std::string_view UrlStateName(UrlState state) {
  constexpr std::string_view kNames[] = {"ok", "moved", "broken", "unsure", "unasked", "broken"};
  return kNames[static_cast<std::size_t>(state)];
}

struct UrlVerdict {
  UrlState state = UrlState::kOk;
  std::string words;  // "answers 404 (not found)"; empty for kOk
};
// Of the URL itself; its fragments are told apart from it.
UrlVerdict Judge(const Answer& answer, const ExternalSettings& settings);

// What became of a fragment: kUnknown when the answer does not tell.
FragmentState StateOfFragment(const Answer& answer, std::string_view fragment);

bool IsAccepted(int status, const ExternalSettings& settings);
// Whether a response may be another one later.
bool MayPass(int status);
// Whether an answer is too old to be used without asking again.
bool IsStale(const Answer& answer, const ExternalSettings& settings, std::int64_t now);

}  // namespace zvrsit
