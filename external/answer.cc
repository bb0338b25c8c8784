#include "external/answer.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace zvrsit {
namespace {

struct StatusWords {
  int status;
  std::string_view words;
};
constexpr std::array<StatusWords, 13> kStatusWords{{{400, "bad request"},
                                                    {401, "a login is asked for"},
                                                    {403, "forbidden"},
                                                    {404, "not found"},
                                                    {405, "method not allowed"},
                                                    {407, "the proxy asks for a login"},
                                                    {410, "gone for good"},
                                                    {429, "too many requests"},
                                                    {451, "withheld for legal reasons"},
                                                    {500, "server error"},
                                                    {502, "bad gateway"},
                                                    {503, "not available now"},
                                                    {504, "gateway timeout"}}};

std::string WordsOfStatus(int status) {
  const auto found = std::ranges::find(kStatusWords, status, &StatusWords::status);
  return found == kStatusWords.end() ? fmt::format("answers {}", status)
                                     : fmt::format("answers {} ({})", status, found->words);
}

struct FaultWords {
  UrlState state;
  std::string_view words;
};
// By ExternalFault.
constexpr std::array<FaultWords, 13> kFaultWords{{
    {UrlState::kOk, ""},
    {UrlState::kBroken, "has a host that nobody knows"},
    {UrlState::kBroken, "has a server that cannot be reached"},
    {UrlState::kBroken, "has no connection that can be trusted"},
    {UrlState::kUnsure, "did not answer in time"},
    {UrlState::kUnsure, "broke off the connection"},
    {UrlState::kBroken, "redirects without end"},
    {UrlState::kBroken, "redirects to what is no http or https URL"},
    {UrlState::kBroken, "answers what is no HTTP"},
    {UrlState::kUnsure, "was not asked, as it lies in this machine's own network"},
    {UrlState::kUnasked, "was not asked, as robots.txt forbids it"},
    {UrlState::kUnasked, "was not asked, and nothing is kept of it"},
    {UrlState::kUnsure, "was not asked, as its server has too many requests (429)"},
}};

UrlVerdict JudgeFault(const Answer& answer, const std::string& after) {
  const FaultWords& fault = kFaultWords[static_cast<std::size_t>(answer.fault)];
  std::string words(fault.words);
  if (!answer.detail.empty()) words += " (" + answer.detail + ")";
  const bool tellsOfRedirects =
      answer.fault == ExternalFault::kRedirects || answer.fault == ExternalFault::kScheme;
  if (!tellsOfRedirects && fault.state != UrlState::kUnasked) words += after;
  return {fault.state, std::move(words)};
}

}  // namespace

bool IsAccepted(int status, const ExternalSettings& settings) {
  return std::ranges::any_of(settings.accept, [status](const auto& range) {
    return status >= range.first && status <= range.second;
  });
}

bool MayPass(int status) {
  return status == 408 || status == 425 || status == 429 || (status >= 500 && status != 501);
}

UrlVerdict Judge(const Answer& answer, const ExternalSettings& settings) {
  const std::string after = answer.endedAt.empty() ? "" : ", after a redirect to " + answer.endedAt;
  if (answer.fault != ExternalFault::kNone) return JudgeFault(answer, after);
  if (!IsAccepted(answer.status, settings)) {
    const UrlState state = MayPass(answer.status) ? UrlState::kUnsure : UrlState::kBroken;
    return {state, WordsOfStatus(answer.status) + after};
  }
  if (answer.isLogin) {
    return {UrlState::kUnsure, "redirects to a page to log in: " + answer.endedAt};
  }
  if (!answer.movedTo.empty()) {
    return {UrlState::kMoved, "has moved for good to " + answer.movedTo};
  }
  return {};
}

FragmentState StateOfFragment(const Answer& answer, std::string_view fragment) {
  const auto found =
      std::ranges::find(answer.fragments, fragment, &std::pair<std::string, FragmentState>::first);
  return found == answer.fragments.end() ? FragmentState::kUnknown : found->second;
}

bool IsStale(const Answer& answer, const ExternalSettings& settings, std::int64_t now) {
  const UrlState state = Judge(answer, settings).state;
  // Without any response it may be our own network that failed.
  const bool mayPass = state == UrlState::kUnsure || answer.status == 0;
  const ExternalSettings::Seconds age = mayPass                      ? settings.unsureAge
                                        : state == UrlState::kMoved  ? settings.movedAge
                                        : state == UrlState::kBroken ? settings.brokenAge
                                                                     : settings.okAge;
  // A time that lies ahead comes from a clock that was wrong.
  return answer.time > now || now - answer.time >= age.count();
}

}  // namespace zvrsit
