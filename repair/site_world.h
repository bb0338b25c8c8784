// Where references lead, while the files of a site are as they are, or as they will be.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "links/link_rules.h"
#include "links/served_files.h"
#include "links/target_resolver.h"

namespace zvrsit {

class SiteMgr;

// The text of `_redirects` as it is now; empty without one.
std::string ReadRedirects(const SiteMgr& manager);

// What a reference leads to.
struct Place {
  TargetKind kind = TargetKind::kNone;
  std::string path;    // a path, or a URL
  std::string direct;  // the path before a document, an extension or a rule is looked for
  bool isDirect() const { return path == direct; }
};

class SiteWorld {
 public:
  // The open site of `manager`. `redirects` is the text of `_redirects`.
  SiteWorld(const SiteMgr& manager, AskKind kinds, std::string redirects);

  // Begins a file; references are resolved from there, or from what UseBases says.
  void BeginFile(const std::string& path);
  // The HREFs of BASE elements, the outermost first.
  void UseBases(const std::vector<std::string>& hrefs);

  enum class From { kPage, kSheet, kBase };
  // `takesName`: whether the default document counts.
  Place PlaceOf(std::string_view target, From from, bool takesName);

  // The folder that relative references are taken from; ends in "\". Empty when that is no folder
  // of this machine.
  std::string BaseFolder();
  // Whether a target has more ".." than there are folders: it leads to the top all the same.
  bool ClimbsTooHigh(std::string_view target);

  FileKind KindOf(const std::string& path) const { return served_->documents().KindOf(path); }
  // The paths in place of which a link without an extension may lead to this one.
  std::vector<std::string> AlternativesOf(const std::string& path) const {
    return served_->documents().AlternativesOf(path);
  }
  bool MayBeDocument(const std::string& path) const { return served_->documents().MayBe(path); }
  const std::vector<std::string>& documentNames() const { return served_->documents().names(); }
  bool redirects() const { return served_->redirects(); }
  bool replacesFragment() const { return served_->replacesFragment(); }

  const ServedSite& site() const { return site_; }
  const RuleFlags& rules() const { return resolver_.rules(); }

 private:
  const ServedSite site_;
  std::string defaultName_;  // put after targets that end in "/", by the classic rules
  std::unique_ptr<ServedFiles> served_;
  TargetResolver resolver_;
  std::string file_;
};

}  // namespace zvrsit
