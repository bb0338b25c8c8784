#include "cli/selection.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "cli/exit_code.h"
#include "cli/native_name.h"

#if defined(_WIN32)
#define popen _popen
#define pclose _pclose
#endif

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

fs::path Absolute(const std::string& name) {
  return fs::absolute(PathOf(name)).lexically_normal();
}

// Names one after another, each ended by a NUL where there is any, else by a line end.
std::vector<std::string> SplitList(const std::string& text) {
  const char end = text.find('\0') != text.npos ? '\0' : '\n';
  std::vector<std::string> names;
  std::istringstream list(text);
  for (std::string name; std::getline(list, name, end);) {
    if (end == '\n' && name.ends_with('\r')) name.pop_back();
    if (!name.empty()) names.push_back(name);
  }
  return names;
}

std::vector<std::string> ReadList(const std::string& name) {
  if (name == "-") {
    return SplitList({std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()});
  }
  std::ifstream file(PathOf(name), std::ios::binary);
  if (!file) throw Failure(kFileSystem, name + ": this list cannot be read");
  return SplitList({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
}

// The text in quotes, as one word for the shell. Throws for a text that cannot be quoted.
std::string Quoted(const std::string& text) {
#if defined(_WIN32)
  if (text.find_first_of("\"%!\n") != text.npos) {
    throw Failure(kUsage, text + ": git cannot be asked about a name with quotes, % or !");
  }
  return "\"" + text + "\"";
#else
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
#endif
}

// Makes `answer` what git prints; false when git fails.
bool AskGit(const std::string& arguments, std::string& answer) {
#if defined(_WIN32)
  std::FILE* const pipe = popen(("git " + arguments + " 2>NUL").c_str(), "rb");
#else
  std::FILE* const pipe = popen(("git " + arguments + " 2>/dev/null").c_str(), "r");
#endif
  if (pipe == nullptr) return false;
  std::array<char, 4096> buffer;
  for (std::size_t got; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    answer.append(buffer.data(), got);
  }
  return pclose(pipe) == 0;
}

// The innermost folder that all of these are or lie in.
fs::path CommonFolder(const std::vector<fs::path>& paths) {
  fs::path common = fs::is_directory(paths.front()) ? paths.front() : paths.front().parent_path();
  for (const fs::path& path : paths) {
    fs::path shared;
    for (auto a = common.begin(), b = path.begin();
         a != common.end() && b != path.end() && *a == *b; ++a, ++b) {
      shared /= *a;
    }
    common = shared;
  }
  return common;
}

bool IsBelow(const fs::path& path, const fs::path& folder) {
  const fs::path below = path.lexically_relative(folder);
  return !below.empty() && *below.begin() != "..";
}

fs::path RootOf(const GivenPaths& given, const std::vector<std::string>& names) {
  if (!given.root.empty()) return Absolute(given.root);
  const fs::path here = fs::current_path();
  std::vector<fs::path> paths(names.size());
  std::ranges::transform(names, paths.begin(), &Absolute);
  if (paths.size() == 1 && fs::is_directory(paths.front())) return paths.front();
  const bool isHere =
      std::ranges::all_of(paths, [&](const fs::path& path) { return IsBelow(path, here); });
  return isHere ? here : CommonFolder(paths);
}

}  // namespace

void AddSelectionOptions(CLI::App& command, GivenPaths& given) {
  command
      .add_option("PATH", given.paths,
                  "folders, or pages held against their whole site; by default the working folder")
      ->option_text(" ...");
  command.add_option("--files-from", given.filesFrom, "more of them, a name a line; - is stdin")
      ->option_text("FILE");
  command
      .add_option("--changed-since", given.changedSince, "only files that git says have changed")
      ->option_text("REVISION");
  command
      .add_option("--root", given.root, "the folder of the site, when PATH is only a part of it")
      ->option_text("FOLDER");
}

Selection::Selection(const GivenPaths& given) {
  std::vector<std::string> names = given.paths;
  if (!given.filesFrom.empty()) {
    const std::vector<std::string> more = ReadList(given.filesFrom);
    names.insert(names.end(), more.begin(), more.end());
  }
  for (const std::string& name : names) {
    std::error_code error;
    if (fs::exists(PathOf(name), error)) continue;
    const std::string below = NameOf(PathOf(given.root) / PathOf(name));
    const bool isBelow = !given.root.empty() && fs::exists(PathOf(below), error);
    throw Failure(kFileSystem,
                  name + ": no such file" + (isBelow ? "; did you mean \"" + below + "\"?" : ""));
  }
  root_ = NameOf(RootOf(given, names) / "");
  for (const std::string& name : names) Add(name);
  isAll_ = isAll_ || (names.empty() && given.filesFrom.empty());
  if (!given.changedSince.empty()) AskWhatChanged(given.changedSince);
}

void Selection::Add(const std::string& name) {
  const fs::path path = Absolute(name);
  const fs::path root = PathOf(root_);
  if (!IsBelow(path / "", root)) throw Failure(kUsage, name + ": this lies outside of " + root_);
  const fs::path below = (path / "").lexically_relative(root);
  if (below == "." || below == "./") {
    isAll_ = true;
  } else if (fs::is_directory(path)) {
    folders_.push_back(NameOf(path.lexically_relative(root) / ""));
  } else {
    files_.insert(NameOf(path.lexically_relative(root)));
  }
}

// Asks which files differ from the revision, and which files git does not know yet.
void Selection::AskWhatChanged(const std::string& revision) {
  std::string names;
  // A program that the repository names would be run.
  const std::string git = "-c core.fsmonitor=false -C " + Quoted(root_.substr(0, root_.size() - 1));
  if (revision.starts_with('-') ||
      !AskGit(git + " diff --name-only --relative -z " + Quoted(revision) + " -- .", names) ||
      !AskGit(git + " ls-files -o --exclude-standard -z", names)) {
    throw Failure(kUsage, "git cannot tell what has changed in " + root_ + " since " + revision +
                              ": is it a repository, and is the revision there? A shallow clone "
                              "lacks most of them");
  }
  changed_.emplace();
  for (const std::string& name : SplitList(names)) {
    changed_->insert(NameOf(PathOf(name).make_preferred()));
  }
}

bool Selection::Holds(const std::string& file) const {
  if (changed_ && !changed_->contains(file)) return false;
  return isAll_ || files_.contains(file) ||
         std::ranges::any_of(folders_,
                             [&](const std::string& folder) { return file.starts_with(folder); });
}

void Selection::Narrow(FindingReport& report) const {
  for (Finding& finding : report.findings) {
    std::erase_if(finding.places, [this](const FindingPlace& place) { return !Holds(place.file); });
  }
  std::erase_if(report.findings, [](const Finding& finding) { return finding.places.empty(); });
}

}  // namespace zvrsit::cli
