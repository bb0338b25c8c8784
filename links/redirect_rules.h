// The file `_redirects`, by which a static host is told what to answer where no file is:
//
//   /old.html       /new.html                    # 301, the browser asks again
//   /news/*         /archive/:splat    302
//   /u/:name id=:n  /users/:name/:n    200       # a rewrite: the answer is that of the target
//   /gone/*         /404.html          404
//   /index.html     /start.html        301!      # even where a file is
//   /               /fr/               302  Language=fr
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "links/target_resolver.h"

namespace zvrsit {

// The name of the file, in the folder of the site.
inline constexpr std::string_view kRedirectsName = "_redirects";

// One line of the file; its texts are views of it.
struct RedirectRule {
  std::string_view from;
  std::string_view to;
  std::size_t toOffset = 0;  // where `to` begins in the text of the file
  int status = 301;
  bool isForced = false;       // counts also where a file is
  bool hasConditions = false;  // counts for some visitors only
  // What the query must hold: names and their values, or a `:name` for any value.
  std::vector<std::pair<std::string_view, std::string_view>> query;

  // Whether `to` depends on the address that was asked for.
  bool hasPlaceholders() const;
};

// The rules of a text, in order. Lines that are no rule are passed over.
std::vector<RedirectRule> ReadRedirectRules(std::string_view text);

// The rules as a server applies them: the first one that fits counts. One that counts for some
// visitors only is taken when no other fits.
class RedirectRules {
 public:
  RedirectRules() = default;
  // Each `from` is resolved by `resolver`, so that it is compared as a path. A rule about another
  // server never fits. `text` must stay where it is.
  RedirectRules(std::string_view text, TargetResolver& resolver);

  bool empty() const { return rules_.empty(); }
  bool hasForced() const { return hasForced_; }

  // The rule for a path and the query after it (without "?"), and in `to` where it leads, as a
  // target to be resolved; null when there is none. `isThere`: there is a file of that path, so
  // only forced rules count.
  const RedirectRule* Match(std::string_view path, std::string_view query, bool isThere,
                            std::string& to) const;

 private:
  struct Captures;

  bool Fits(std::size_t rule, std::string_view path, std::string_view query,
            Captures& captures) const;

  std::vector<RedirectRule> rules_;
  std::vector<std::string> froms_;  // their paths, without a separator at the end
  // Numbers of rules, ascending: those for exactly one path, by that path, and the others.
  std::unordered_map<std::string_view, std::vector<std::size_t>> exact_;
  std::vector<std::size_t> patterns_;
  bool hasForced_ = false;
};

}  // namespace zvrsit
