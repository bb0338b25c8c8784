#include "cli/finding_options.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/terminal.h"
#include "findings/escapes.h"
#include "findings/suggestions.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// Takes NAME=SEVERITY; gives what is wrong with it, empty for nothing.
std::string AddRule(const std::string& text, std::vector<std::pair<Rule, Severity>>& rules) {
  const std::size_t sign = text.find('=');
  const auto rule = RuleOfName(text.substr(0, sign));
  if (!rule) {
    const std::string name = text.substr(0, sign);
    const std::vector<std::string> known = RuleNames();
    return "there is no rule named \"" + name + "\"" + DidYouMean(name, known);
  }
  const auto severity =
      sign == text.npos ? std::nullopt : SeverityOfName(std::string_view(text).substr(sign + 1));
  if (!severity) return "a rule is error, warning or off, such as " + text.substr(0, sign) + "=off";
  rules.emplace_back(*rule, *severity);
  return "";
}

}  // namespace

void AddRuleOptions(CLI::App& command, FindingOptions& options) {
  command
      .add_option_function<std::vector<std::string>>(
          "--rule",
          [&options](const std::vector<std::string>& rules) {
            for (const std::string& rule : rules) {
              const std::string fault = AddRule(rule, options.rules);
              if (!fault.empty()) throw CLI::ValidationError("--rule", fault);
            }
          },
          "makes a rule error, warning or off; docs/rules.md has the names")
      ->option_text("RULE=SEVERITY")
      ->allow_extra_args(false);
  command
      .add_option("--ignore", options.ignores.files, "says nothing of files like this: drafts/**")
      ->option_text("GLOB")
      ->allow_extra_args(false);
  command
      .add_option("--ignore-target", options.ignores.targets,
                  "says nothing of references to files or URLs like this")
      ->option_text("GLOB")
      ->allow_extra_args(false);
  command.add_option("--config", options.config, "a configuration other than zvrsit.toml")
      ->option_text("FILE")
      ->check(NotEmpty());
  command.add_flag_callback(
      "--no-config", [&options] { options.usesConfig = false; }, "reads none");
}

void AddFindingOptions(CLI::App& command, FindingOptions& options) {
  command.add_flag("--all", options.all, "a line for each place, not only the first of a finding");
  AddRuleOptions(command, options);
  command.add_flag("-q,--quiet", options.quiet, "findings alone, no totals");
  command.add_flag("-v,--verbose", options.verbose,
                   "tells what is looked at, and how long each step takes");
  command.add_option("--color", options.color, "colours; auto: on a terminal")
      ->option_text("auto|always|never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
}

std::optional<Config> Configure(FindingOptions& options, const std::string& found) {
  const std::string file = options.config.empty() ? found : options.config;
  std::optional<Config> config;
  if (options.usesConfig && !file.empty()) {
    config = ReadConfig(file);
    if (options.config.empty()) NeedHarmless(config->external, file);
    Tell(options, "the configuration is " + file);
    for (const auto& [rule, severity] : config->rules) options.severities.Set(rule, severity);
    if (options.ignores.files.empty()) options.ignores.files = config->ignores.files;
    if (options.ignores.targets.empty()) options.ignores.targets = config->ignores.targets;
    for (const auto& [key, value] : config->external) {
      std::string& given = options.external[key];
      if (given.empty()) given = value;
    }
  }
  for (const auto& [rule, severity] : options.rules) options.severities.Set(rule, severity);
  return config;
}

void Tell(const FindingOptions& options, std::string_view what) {
  if (options.verbose) Warn(what);
}

FoundSite FoundSiteOf(const Session& session, const std::string& top,
                      std::vector<UrlFinding> urls) {
  const auto typeOf = [](const std::string& native) {
    std::error_code error;
    return fs::status(PathOf(native), error).type();
  };
  return {session.names().folder(), top, typeOf, std::move(urls)};
}

std::string PrefixOf(const std::string& folder) {
  std::error_code error;
  const fs::path below = PathOf(folder).lexically_relative(fs::current_path(error));
  if (error || below.empty() || *below.begin() == "..") return folder;
  return below == "." ? "" : NameOf(below / "");
}

void FindAll(Session& session, const std::string& top, const FindingOptions& options,
             FindingReport& report, std::vector<UrlFinding> urls) {
  const FoundSite site = FoundSiteOf(session, top, std::move(urls));
  if (CollectFindings(session.manager(), site, options.severities, report) != 0) {
    throw Failure(kDatabase, "the tables of the site cannot be read");
  }
  options.ignores.TakeOut(report);
  report.prefix = PrefixOf(report.folder);
}

double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TextStyle StyleOf(const FindingOptions& options) {
  TextStyle style;
  style.all = options.all;
  style.totals = !options.quiet;
  style.colors = WantsColors(options.color);
  style.hyperlinks = style.colors && IsTerminal(stdout);
  return style;
}

void PrintFindings(const FindingReport& report, const FindingOptions& options) {
  const TextStyle style = StyleOf(options);
  const auto begin = std::chrono::steady_clock::now();
  std::string text = FormatFindings(report, options.format, style);
  const bool isForPrograms = options.format != FindingFormat::kText;
  if (isForPrograms && IsTerminal(stdout)) text = WithoutControls(std::move(text));
  std::fwrite(text.data(), 1, text.size(), stdout);
  Tell(options, fmt::format("printed in {:.3f} s", SecondsSince(begin)));
}

}  // namespace zvrsit::cli
