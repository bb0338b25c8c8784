#include "cli/commands.h"

namespace zvrsit::cli {

void AddNewSiteOptions(CLI::App& command, NewSite& site) {
  command.add_option("FOLDER", site.folder, "the folder of the site")->required();
  command.add_option("--top", site.top, "the home page; by default index.html and its like");
  command.add_option("--default-url", site.defaultUrl,
                     "the name of the document that stands for its folder");
  command.add_option("--doc-root", site.docRoot, "the folder that a leading / in a link means");
  command
      .add_option_function<std::string>(
          "--rules", [&site](const std::string& word) { ParseRules(word, site.rules); },
          "web: as a browser of today; classic: as the library by default")
      ->check(CLI::IsMember({"web", "classic"}));
}

}  // namespace zvrsit::cli
