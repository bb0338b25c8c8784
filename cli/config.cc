#include "cli/config.h"

#include <fmt/core.h>
#include <toml++/toml.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "findings/suggestions.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// What a configuration says of the site itself.
struct Key {
  const char* name;
  std::optional<std::string> GivenSite::*value;
  bool isPath;
  std::string (*fault)(const std::string& value);  // null: every text will do
};
constexpr Key kKeys[] = {
    {"folder", &GivenSite::folder, true, nullptr},
    {"top", &GivenSite::top, false, nullptr},  // relative to the folder of the site
    {"doc-root", &GivenSite::docRoot, true, nullptr},
    {"default-url", &GivenSite::defaultUrl, false, nullptr},
    {"fallback-extensions", &GivenSite::fallbackExtensions, false, &FaultOfExtensions},
    {"base-url", &GivenSite::baseUrl, false, &FaultOfBaseUrl},
    {"page-types", &GivenSite::pageTypes, false, &FaultOfExtensions},
    {"link-rules", &GivenSite::rules, false, &FaultOfRules},
};

// Reads one file.
class ConfigReader {
 public:
  explicit ConfigReader(const std::string& file)
      : file_(file), folder_(fs::absolute(PathOf(file)).parent_path()) {}

  Config Read() {
    std::ifstream stream(PathOf(file_), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    if (!stream) throw Failure(kFileSystem, file_ + ": this file cannot be read");
    toml::table root;
    try {
      root = toml::parse(text);
    } catch (const toml::parse_error& error) {
      Fail(error.source(), std::string(error.description()));
    }
    Config config;
    ReadSite(root, config.site);
    if (const toml::table* const rules = TableOf(root, "rules")) ReadRules(*rules, config.rules);
    if (const toml::table* const ignore = TableOf(root, "ignore")) {
      NeedKnown(*ignore, {"files", "targets"});
      config.ignores.files = TextsOf(*ignore, "files");
      config.ignores.targets = TextsOf(*ignore, "targets");
    }
    if (const toml::table* const external = TableOf(root, "external")) {
      ReadExternal(*external, config.external);
    }
    return config;
  }

 private:
  void ReadSite(const toml::table& root, GivenSite& site) {
    std::vector<std::string> known(std::size(kKeys));
    std::ranges::transform(kKeys, known.begin(), &Key::name);
    known.insert(known.end(), {"rules", "ignore", "external"});
    NeedKnown(root, known);
    for (const Key& key : kKeys) {
      const toml::node* const node = root.get(key.name);
      if (node == nullptr) continue;
      const std::string text = TextOf(*node, key.name);
      const std::string fault = key.fault != nullptr ? key.fault(text) : "";
      if (!fault.empty()) Fail(node->source(), fault);
      site.*key.value = key.isPath && !text.empty() ? Absolute(text) : text;
    }
    if (!site.folder) site.folder = NameOf(folder_);
  }

  void ReadRules(const toml::table& table, std::vector<std::pair<Rule, Severity>>& rules) {
    NeedKnown(table, RuleNames());
    for (const auto& [key, node] : table) {
      const auto severity = SeverityOfName(TextOf(node, key.str()));
      if (!severity) Fail(node.source(), "a rule is \"error\", \"warning\" or \"off\"");
      rules.emplace_back(*RuleOfName(key.str()), *severity);
    }
  }

  void ReadExternal(const toml::table& table, GivenExternal& given) {
    NeedKnown(table, ExternalKeys());
    for (const auto& [key, node] : table) {
      const std::string name(key.str());
      const std::string text = PlainText(node, name);
      const std::string fault = FaultOfExternal(name, text);
      if (!fault.empty()) Fail(node.source(), fault);
      given[name] = IsExternalPath(name) ? Absolute(text) : text;
    }
  }

  // A value as the command line would have it: a text, a number, true or false.
  std::string PlainText(const toml::node& node, const std::string& key) const {
    if (const auto flag = node.value_exact<bool>()) return *flag ? "true" : "false";
    if (const auto whole = node.value_exact<std::int64_t>()) return std::to_string(*whole);
    if (const auto number = node.value_exact<double>()) return fmt::format("{}", *number);
    return TextOf(node, key);
  }

  void NeedKnown(const toml::table& table, const std::vector<std::string>& known) const {
    for (const auto& [key, node] : table) {
      const std::string name(key.str());
      if (std::ranges::find(known, name) != known.end()) continue;
      Fail(key.source(), "\"" + name + "\" is no key here" + DidYouMean(name, known));
    }
  }

  const toml::table* TableOf(const toml::table& root, const char* key) const {
    const toml::node* const node = root.get(key);
    if (node != nullptr && !node->is_table()) {
      Fail(node->source(), std::string(key) + " is a table: [" + key + "]");
    }
    return node != nullptr ? node->as_table() : nullptr;
  }

  std::string TextOf(const toml::node& node, std::string_view key) const {
    const auto text = node.value_exact<std::string>();
    if (!text) Fail(node.source(), std::string(key) + " is a text in quotes");
    return NarrowText(*text);
  }

  std::vector<std::string> TextsOf(const toml::table& table, const char* key) const {
    std::vector<std::string> texts;
    const toml::node* const node = table.get(key);
    if (node == nullptr) return texts;
    const toml::array* const array = node->as_array();
    if (array == nullptr) Fail(node->source(), std::string(key) + " is a list of texts");
    for (const toml::node& element : *array) texts.push_back(TextOf(element, key));
    return texts;
  }

  std::string Absolute(const std::string& name) const {
    return NameOf((folder_ / PathOf(name)).lexically_normal());
  }

  [[noreturn]] void Fail(const toml::source_region& where, const std::string& what) const {
    throw Failure(kUsage,
                  fmt::format("{}:{}:{}: {}", file_, where.begin.line, where.begin.column, what));
  }

  const std::string file_;
  const fs::path folder_;
};

}  // namespace

std::string ConfigIn(const std::string& folder) {
  std::error_code error;
  const fs::path file = PathOf(folder) / kConfigName;
  return fs::is_regular_file(file, error) ? NameOf(file) : "";
}

std::string FindConfig(const std::string& from) {
  for (fs::path folder = fs::absolute(PathOf(from)).lexically_normal();;
       folder = folder.parent_path()) {
    std::string file = ConfigIn(NameOf(folder));
    if (!file.empty() || folder == folder.parent_path()) return file;
  }
}

Config ReadConfig(const std::string& file) {
  return ConfigReader(file).Read();
}

void FillFrom(const GivenSite& config, GivenSite& given) {
  for (const Key& key : kKeys) {
    auto& value = given.*key.value;
    if (!value && key.value != &GivenSite::folder) value = config.*key.value;
  }
}

}  // namespace zvrsit::cli
