// A site on disk, open in the base of a manager, with what was registered as text.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "dom/dom.h"
#include "links/link_type.h"
#include "manager_base/inside.h"
#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"

namespace zvrsit::test {

class OpenSite : public testing::Test {
 protected:
  // Lets a test say when an operation begins and ends.
  class Manager : public SiteMgrBase {
   public:
    using SiteMgrBase::Operation;
  };

  void Open(LinkRules rules, const std::string& defaultUrl = "") {
    manager_.CloseSite();
    folder_.write("site/index.htm", "<p>");
    folder_.makeFolder("db/s");
    manager_.setDom(&dom_);
    manager_.setDB((folder_.path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
    SiteSiteProfDB& profiles = *manager_.GetSiteProf();
    if (profiles.Find("s") < 0) profiles.Add("s");
    ASSERT_EQ(profiles.SetFolder(0, kSlotSiteFolder, siteFolder_), 0);
    ASSERT_EQ(profiles.SetText(0, &SiteSiteRec::topFile, siteFolder_ + "index.htm"), 0);
    ASSERT_EQ(profiles.SetText(0, &SiteSiteRec::defaultUrl, defaultUrl), 0);
    ASSERT_EQ(profiles.SetNumber(0, &SiteSiteRec::linkRules, static_cast<int>(rules)), 0);
    ASSERT_EQ(manager_.OpenSite(0, 0), 0);
    ASSERT_GE(manager_.AddFolder(siteFolder_, 0), 0);
  }

  // What `use(document)` gives for a page of this text.
  template <class Use>
  int WithDocument(const std::string& html, Use use) {
    Document* const document = dom_.createDocument("HTML");
    document->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true);
    const int result = use(document);
    dom_.deleteDocument(document);
    return result;
  }

  // The file of a site by its name in the site, one beside it behind "..\".
  std::string Name(const UrlID& id) {
    if (id.kind == kKindUrl) return std::string(manager_.GetUrlDB()->NameView(id.id));
    const std::string path(manager_.GetPathDB()->NameView(id.id));
    if (path.starts_with(siteFolder_)) return path.substr(siteFolder_.size());
    return path.starts_with(folder_.path()) ? ".." + path.substr(folder_.path().size()) : path;
  }

  SitePathRec Record(const std::string& name) {
    SitePathRec rec;
    SitePathDB& paths = *manager_.GetPathDB();
    EXPECT_EQ(paths.Get(paths.Find(folder_.path("site/" + name)), rec), 0);
    return rec;
  }

  // `line(link, type)` for each link in the order of the records, the type without its "LT_".
  template <class Line>
  std::string Lines(Line line) {
    std::string lines;
    SiteLinkDB& links = *manager_.GetLinkDB();
    for (int i = links.NextNumber(0); i >= 0; i = links.NextNumber(i + 1)) {
      SiteLinkRec link;
      EXPECT_EQ(links.Get(i, link), 0);
      const std::string type = LinkTypeName(static_cast<std::uint32_t>(link.type));
      lines += line(link, type.substr(3)) + '\n';
    }
    return lines;
  }

  TempFolder folder_;
  const std::string siteFolder_ = folder_.path("site") + "\\";
  DOM dom_;
  Manager manager_;
};

}  // namespace zvrsit::test
