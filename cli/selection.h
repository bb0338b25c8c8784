// Which files of a site the user asks about.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "findings/finding.h"

namespace zvrsit::cli {

// What the command line names; native, relative to the working folder.
struct GivenPaths {
  std::vector<std::string> paths;  // folders and files
  std::string filesFrom;           // a file with more of them, "-" for standard input; may be empty
  std::string changedSince;        // a revision of git; may be empty
  std::string root;                // the folder of the site; may be empty
};

// PATH..., --files-from, --changed-since and --root.
void AddSelectionOptions(CLI::App& command, GivenPaths& given);

class Selection {
 public:
  // Reads the lists and asks git. Throws Failure: kFileSystem for a path that is not there, kUsage
  // for one outside of the root or a revision that git does not know.
  explicit Selection(const GivenPaths& given);

  // The folder of the site, native. It is the given root, if there is one. Else it is the one
  // folder that was given alone; else the working folder, if everything lies below it; else the
  // nearest folder that everything lies below.
  const std::string& root() const { return root_; }
  // Removes from the report what is not in the files that were asked about.
  void Narrow(FindingReport& report) const;

  // Whether a file, relative to the root, was asked about.
  bool Holds(const std::string& file) const;

 private:
  void Add(const std::string& path);
  void AskWhatChanged(const std::string& revision);

  std::string root_;  // absolute, with a separator at its end
  bool isAll_ = false;
  // Relative to the root; of folders with a separator at the end.
  std::unordered_set<std::string> files_;
  std::vector<std::string> folders_;
  std::optional<std::unordered_set<std::string>> changed_;  // nothing: all count
};

}  // namespace zvrsit::cli
