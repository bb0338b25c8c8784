#include "cli/external_options.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>

#include "cli/exit_code.h"

namespace zvrsit::cli {
namespace {

using Settings = ExternalSettings;

std::optional<double> NumberOf(const std::string& text, std::string& rest) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || !std::isfinite(number) || number < 0) return std::nullopt;
  rest.assign(end, text.data() + text.size());
  return number;
}

// "7d", "12 h", "30m", "1.5s", "200ms", "30": in milliseconds, of a century at most.
std::string ReadTime(const std::string& text, double& milliseconds) {
  struct Unit {
    const char* name;
    double milliseconds;
  };
  constexpr Unit kUnits[] = {{"ms", 1},     {"s", 1e3},   {"", 1e3},
                             {"m", 60'000}, {"h", 3.6e6}, {"d", 8.64e7}};
  std::string rest;
  const auto number = NumberOf(text, rest);
  std::erase(rest, ' ');
  const auto unit = std::ranges::find_if(kUnits, [&](const Unit& one) { return rest == one.name; });
  const bool isTime = number && unit != std::end(kUnits);
  milliseconds = isTime ? *number * unit->milliseconds : 0;
  if (isTime && milliseconds <= 3.2e12) return "";
  return "\"" + text + "\" is no time, such as 30s, 5m, 1h or 7d";
}

template <auto kMember>
std::string SetTime(const std::string& text, ExternalWish& wish) {
  double milliseconds = 0;
  std::string fault = ReadTime(text, milliseconds);
  using Time = std::remove_reference_t<decltype(wish.settings.*kMember)>;
  const auto whole = Settings::Milliseconds(static_cast<std::int64_t>(milliseconds));
  wish.settings.*kMember = std::chrono::duration_cast<Time>(whole);
  return fault;
}

template <auto kMember, int kLeast, int kMost>
std::string SetCount(const std::string& text, ExternalWish& wish) {
  int count = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  const bool isCount = error == std::errc() && end == text.data() + text.size();
  if (!isCount || count < kLeast || count > kMost) {
    return fmt::format("\"{}\" is no number from {} to {}", text, kLeast, kMost);
  }
  wish.settings.*kMember = count;
  return "";
}

template <auto kMember>
std::string SetWords(const std::string& text, ExternalWish& wish) {
  wish.settings.*kMember = text;
  const bool isLine = text.find_first_of("\r\n") == text.npos;
  return isLine ? "" : "a text of one line is wanted";
}

std::string SetBool(const std::string& text, bool& value) {
  value = text == "true";
  return value || text == "false" ? "" : "\"" + text + "\" is neither true nor false";
}
template <auto kMember>
std::string SetFlag(const std::string& text, ExternalWish& wish) {
  return SetBool(text, wish.settings.*kMember);
}
std::string SetWanted(const std::string& text, ExternalWish& wish) {
  return SetBool(text, wish.isWanted);
}

// "200..299,403"
std::string SetAccept(const std::string& text, ExternalWish& wish) {
  wish.settings.accept.clear();
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    std::string part = text.substr(at, end - at);
    std::erase(part, ' ');
    const std::size_t dots = part.find("..");
    const std::string ends[] = {part.substr(0, dots),
                                dots == part.npos ? part : part.substr(dots + 2)};
    const auto isStatus = [](const std::string& one) {
      return one.size() == 3 && one[0] >= '1' && one[0] <= '9' &&
             std::ranges::all_of(one, [](char c) { return c >= '0' && c <= '9'; });
    };
    if (!std::ranges::all_of(ends, isStatus) || ends[0] > ends[1]) {
      return "\"" + text + "\" is no list of status codes, such as 200..299,403";
    }
    wish.settings.accept.emplace_back(std::stoi(ends[0]), std::stoi(ends[1]));
    at = end + 1;
  }
  return "";
}

enum class ValueForm { kFlag, kValue, kPath };

// One thing that can be chosen.
struct ExternalRow {
  const char* key;     // in the configuration
  const char* option;  // empty: the one that turns the check on
  ValueForm form;
  bool isInHelp;
  const char* value;
  const char* help;
  std::string (*set)(const std::string& text, ExternalWish& wish);
};
constexpr ExternalRow kExternalRows[] = {
    {"check", "", ValueForm::kFlag, true, "", "asks other sites too: docs/external.md", SetWanted},
    {"fragments", "--external-fragments", ValueForm::kFlag, true, "",
     "looks for the fragments of links in their pages", SetFlag<&Settings::fragments>},
    {"offline", "--offline", ValueForm::kFlag, true, "",
     "asks nobody; takes what was answered before", SetFlag<&Settings::offline>},
    {"accept", "--accept", ValueForm::kValue, true, "LIST",
     "good status codes, such as 200..299,403", SetAccept},
    {"private-network", "--private-network", ValueForm::kFlag, true, "",
     "asks addresses of this machine's own network too", SetFlag<&Settings::privateNetwork>},
    {"robots", "--robots", ValueForm::kFlag, false, "",
     "asks nothing that robots.txt forbids (default)", SetFlag<&Settings::robots>},
    {"user-agent", "--user-agent", ValueForm::kValue, false, "TEXT",
     "what servers are told of who asks", SetWords<&Settings::userAgent>},
    {"netrc", "--netrc", ValueForm::kPath, false, "FILE", "a file with the passwords of servers",
     SetWords<&Settings::netrc>},
    {"ca-file", "--ca-file", ValueForm::kPath, false, "FILE",
     "a file with the certificates to trust, in place of those of the system",
     SetWords<&Settings::caFile>},
    {"parallel", "--parallel", ValueForm::kValue, false, "N", "requests at a time, by default 32",
     SetCount<&Settings::parallel, 1, 1000>},
    {"per-server", "--per-server", ValueForm::kValue, false, "N",
     "requests at a time to one server, by default 4", SetCount<&Settings::perServer, 1, 1000>},
    {"retries", "--retries", ValueForm::kValue, false, "N",
     "how often a fault that may pass is tried again, by default 2",
     SetCount<&Settings::retries, 0, 20>},
    {"redirects", "--redirects", ValueForm::kValue, false, "N",
     "how many redirects are followed, by default 10", SetCount<&Settings::redirects, 0, 50>},
    {"retry-delay", "--retry-delay", ValueForm::kValue, false, "TIME",
     "before the first retry, by default 1s; it doubles with each", SetTime<&Settings::retryDelay>},
    {"longest-wait", "--longest-wait", ValueForm::kValue, false, "TIME",
     "that a server may ask for, by default 60s", SetTime<&Settings::longestWait>},
    {"connect-timeout", "--connect-timeout", ValueForm::kValue, false, "TIME",
     "for a connection, by default 10s", SetTime<&Settings::connectTimeout>},
    {"stall-timeout", "--stall-timeout", ValueForm::kValue, false, "TIME",
     "without a byte, by default 15s", SetTime<&Settings::stallTimeout>},
    {"timeout", "--timeout", ValueForm::kValue, false, "TIME",
     "for a whole request, by default 30s", SetTime<&Settings::timeout>},
    {"ok-age", "--ok-age", ValueForm::kValue, false, "TIME",
     "after which a good URL is asked again, by default 7d", SetTime<&Settings::okAge>},
    {"moved-age", "--moved-age", ValueForm::kValue, false, "TIME",
     "likewise, one that has moved: 7d", SetTime<&Settings::movedAge>},
    {"broken-age", "--broken-age", ValueForm::kValue, false, "TIME", "likewise, a broken one: 1d",
     SetTime<&Settings::brokenAge>},
    {"unsure-age", "--unsure-age", ValueForm::kValue, false, "TIME",
     "likewise, one that did not answer or may be back soon: 1h", SetTime<&Settings::unsureAge>},
};

const ExternalRow& RowOf(const std::string& key) {
  return *std::ranges::find_if(kExternalRows,
                               [&](const ExternalRow& row) { return key == row.key; });
}

void AddRow(CLI::App& command, const ExternalRow& row, const std::string& name,
            GivenExternal& given) {
  std::string& value = given[row.key];
  CLI::Option* option = nullptr;
  if (row.form == ValueForm::kFlag) {
    option = command.add_flag_callback(
        name, [&value] { value = "true"; }, row.help);
    const std::string no = "--no-" + name.substr(2);
    command
        .add_flag_callback(
            no, [&value] { value = "false"; }, "the opposite of " + name)
        ->group("");
  } else {
    option =
        command.add_option(name, value, row.help)
            ->option_text(row.value)
            ->check([&row](const std::string& text) { return FaultOfExternal(row.key, text); });
  }
  if (!row.isInHelp) option->group("");  // docs/external.md and the manual have it
}

}  // namespace

void AddExternalOptions(CLI::App& command, const std::string& wish, GivenExternal& given) {
  for (const ExternalRow& row : kExternalRows)
    AddRow(command, row, *row.option ? row.option : wish, given);
}

void NeedUse(const GivenExternal& given, bool isWanted, const std::string& wish) {
  const auto isGiven = [&given](const std::string& key) {
    const auto value = given.find(key);
    return value != given.end() && !value->second.empty();
  };
  if (isWanted || isGiven("check")) return;
  for (const ExternalRow& row : kExternalRows) {
    if (isGiven(row.key)) throw Failure(kUsage, fmt::format("{} wants {}", row.option, wish));
  }
}

std::vector<std::string> ExternalKeys() {
  std::vector<std::string> keys(std::size(kExternalRows));
  std::ranges::transform(kExternalRows, keys.begin(), &ExternalRow::key);
  return keys;
}

bool IsExternalPath(const std::string& key) {
  return RowOf(key).form == ValueForm::kPath;
}

void NeedHarmless(const GivenExternal& found, const std::string& file) {
  for (const char* key : {"private-network", "netrc", "ca-file"}) {
    const auto given = found.find(key);
    if (given == found.end() || given->second == "false") continue;
    throw Failure(kUsage, fmt::format("{}: \"{}\" counts only on the command line, or in a file "
                                      "that --config names",
                                      file, key));
  }
}

std::string FaultOfExternal(const std::string& key, const std::string& value) {
  ExternalWish wish;
  return value.empty() ? "an empty text is no value" : RowOf(key).set(value, wish);
}

ExternalWish WishOf(const GivenExternal& given) {
  ExternalWish wish;
  for (const auto& [key, value] : given) {
    if (!value.empty()) RowOf(key).set(value, wish);
  }
  return wish;
}

}  // namespace zvrsit::cli
