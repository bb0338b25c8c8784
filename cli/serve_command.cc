#include <memory>
#include <optional>
#include <random>
#include <string_view>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/finding_options.h"
#include "cli/folder_watch.h"
#include "cli/interrupts.h"
#include "cli/live_view.h"
#include "cli/output.h"
#include "cli/site_pages.h"
#include "cli/view_pages.h"
#include "cli/watch_loop.h"
#include "cli/web_listener.h"
#include "findings/formats.h"
#include "util/ascii.h"

namespace zvrsit::cli {
namespace {

struct ServeWanted {
  std::string site;
  int port = 0;
  std::string editor;
  SitePages::Ways ways;
  FindingOptions findings;
};

// 128 bits that nobody can guess, in hex.
std::string Secret() {
  std::random_device system;  // of the system's own source
  std::string secret;
  for (int i = 0; i < 4; ++i) secret += fmt::format("{:08x}", system());
  return secret;
}

// What is wrong with the address of an editor; empty for nothing. It is a link of the view, so that
// it must not be a script.
std::string FaultOfEditor(const std::string& address) {
  const std::size_t end = address.find(':');
  std::string scheme = address.substr(0, end);
  LowerAsciiLetters(scheme);
  const bool isName =
      end != address.npos && !scheme.empty() &&
      scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+.-") == scheme.npos;
  for (const std::string_view script : {"javascript", "data", "vbscript", "blob", "about"}) {
    if (scheme == script) return "an editor is no \"" + scheme + ":\"";
  }
  return isName && address.find("{path}") != address.npos
             ? ""
             : "an editor is an address with {path}, {line} and {column}, such as "
               "editor://open?file={path}&line={line}";
}

// Listens, and ends it before what answers goes.
class Served {
 public:
  Served(LiveView& view, ViewPages& pages, SitePages& files, int port)
      : view_(view), pages_(ListenOnLoopback(pages, port)), files_(ListenOnLoopback(files, 0)) {
    files.SetPort(files_->port());
    view.SetSiteAddress(fmt::format("http://127.0.0.1:{}{}", files_->port(), files.EntryPath()));
  }
  ~Served() { view_.End(); }
  int port() const { return pages_->port(); }

 private:
  LiveView& view_;
  std::unique_ptr<WebListener> pages_;
  std::unique_ptr<WebListener> files_;
};

int RunServe(const Options& options, const ServeWanted& wanted) {
  NeedFolderWatch();
  if (wanted.findings.format != FindingFormat::kText && !options.json) {
    throw Failure(kUsage, "serve prints text or json");
  }
  LiveSite site(options, wanted.site, wanted.findings);
  LiveView view(options, site, wanted.editor);
  const std::string secret = Secret();
  ViewPages pages(view, secret);
  SitePages files(site, view, Secret(), wanted.ways);
  std::optional<Served> served;
  const auto begin = [&] {
    const SignalsBlocked blocked;  // signals come to this thread alone
    served.emplace(view, pages, files, wanted.port);
    const std::string address = fmt::format("http://127.0.0.1:{}/{}/", served->port(), secret);
    if (options.json) {
      Print("{}\n", Json({{"event", "serving"}, {"address", address}}).dump());
    } else {
      Print("{}\n", address);
    }
    FinishOutput();
  };
  const auto followed = [&](const FindingChange& change) { view.Note(change); };
  const Interrupts interrupts;
  WatchSite(site, {begin, [](const FindingChange&) {}, followed, &view.siteInUse()});
  served.reset();
  return kClean;
}

}  // namespace

void AddServeCommand(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<ServeWanted>();
  CLI::App* serve = app.add_subcommand("serve", "Show a site in the browser while you edit it");
  AddSiteName(*serve, wanted->site);
  serve->add_option("--port", wanted->port, "of 127.0.0.1; by default any that is free")
      ->option_text("PORT")
      ->check(CLI::Range(0, 65535));
  serve
      ->add_option("--editor", wanted->editor,
                   "the address that opens a place, with {path}, {line} and {column};\n"
                   "by default ZVRSIT_EDITOR of the environment")
      ->option_text("ADDRESS")
      ->envname("ZVRSIT_EDITOR")
      ->check([](const std::string& address) { return FaultOfEditor(address); });
  serve->add_flag_callback(
      "--no-marks", [wanted] { wanted->ways.marks = false; },
      "shows the pages of the site as they are");
  serve->add_flag("--follow", wanted->ways.follows,
                  "gives files outside of the site too that symbolic links lead to");
  AddRuleOptions(*serve, wanted->findings);
  serve->callback([&options, &run, wanted] {
    run = [&options, wanted] {
      wanted->findings.format = options.format;
      return RunServe(options, *wanted);
    };
  });
}

}  // namespace zvrsit::cli
