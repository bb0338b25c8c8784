// What a server answers with at a path: a file, the document of a folder, a page without its
// extension, or what a rule of the file `_redirects` says. With RuleFlags::findsFolderDocuments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "links/folder_documents.h"
#include "links/redirect_rules.h"
#include "links/target_resolver.h"

namespace zvrsit {

// What the profile of a site says about it.
struct ServedSite {
  std::string root;    // the folder that "/" names; ends in "\"
  std::string folder;  // of the site; ends in "\"; empty when it is not known
  std::string liveUrl;
  std::string defaultNames;        // as FolderDocuments takes them
  std::string fallbackExtensions;  // likewise
};

// The answers of the disk are remembered, and `_redirects` is read once, by the constructor.
class ServedFiles {
 public:
  enum class From { kPage, kSheet };

  explicit ServedFiles(const ServedSite& site);
  // The same for files that are not on the disk as they are asked about. `redirects` is the text of
  // `_redirects`.
  ServedFiles(const ServedSite& site, AskKind kinds, std::string redirects);
  ServedFiles(const ServedFiles&) = delete;
  ServedFiles& operator=(const ServedFiles&) = delete;

  FolderDocuments& documents() { return documents_; }
  const FolderDocuments& documents() const { return documents_; }
  // Whether a file that is there may be passed by.
  bool mayPassFiles() const { return rules_.hasForced(); }
  bool redirects() const { return !rules_.empty(); }

  // Whether a rule has put a fragment of its own in the place of that of the target served last.
  bool replacesFragment() const { return replacesFragment_; }

  // Makes of `place`, the path that `target` resolves to, what the server answers with. kLocal: a
  // path, which may be missing; kExternal: a URL. A chain of rules is followed to its end; one that
  // runs in a circle leads nowhere, and the path stays. A reference of a sheet to a folder means
  // the folder itself.
  TargetKind Serve(std::string_view target, std::string& place, From from = From::kPage);

 private:
  void ReadRules(const ServedSite& site);
  TargetKind FollowRules(std::string_view target, std::string& place, From from);

  FolderDocuments documents_;
  TargetResolver resolver_{LinkRules::Web};  // of targets in `_redirects`
  std::string text_;                         // of that file
  RedirectRules rules_;
  bool replacesFragment_ = false;
};

}  // namespace zvrsit
