// The files of a site as users name them.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings/suggestions.h"
#include "manager/site_mgr.h"

namespace zvrsit {

class KnownFiles {
 public:
  // The last part of a native name.
  static std::string_view LastNameOf(std::string_view name);

  // Reads the names of all files that the open site knows. `folder` is its site folder, a `\` path.
  // What was found out for `before` is kept when the same files are there; null for none.
  KnownFiles(SiteMgr& manager, const std::string& folder, const KnownFiles* before = nullptr);
  KnownFiles(const KnownFiles&) = delete;
  KnownFiles& operator=(const KnownFiles&) = delete;

  // A file by its number: relative to the site folder where it lies below it; native.
  const std::string& Of(int number) const;
  // Whether it is there, below the site folder.
  bool IsThere(int number) const;
  const std::vector<int>& numbers() const { return numbers_; }

  // The file that is there under this name in other letter case; empty for none.
  std::string SameButForCase(const std::string& name);
  // The file that is likely meant by a name that is not there. A file with a similar name in the
  // same folder; or the name with an extension; or the only file with that name, in another folder.
  // Empty for none.
  std::string Likeliest(const std::string& name);

 private:
  struct File {
    std::string name;
    bool isThere = false;
  };
  // The names of the files that are there.
  struct Index {
    explicit Index(const std::vector<File>& files);
    int WithExtension(const std::string& name) const;

    std::vector<std::string> names;  // ascending
    std::unique_ptr<NameSuggestions> suggestions;
    std::unordered_map<std::string, int> byLastName;  // index in names; -1 for several
  };

  bool HasSameThere(const KnownFiles& other) const;
  const Index& TheIndex();

  std::vector<File> files_;  // by number
  std::vector<int> numbers_;
  std::shared_ptr<const Index> index_;  // made when it is first needed
};

}  // namespace zvrsit
