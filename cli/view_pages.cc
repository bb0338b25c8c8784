#include "cli/view_pages.h"

#include "cli/site_pages.h"

namespace zvrsit::cli {
namespace {

void SetBody(const std::shared_ptr<const std::string>& text, WebAnswer& answer) {
  if (text != nullptr) {
    answer.body = *text;
  } else {
    answer = {
        503, "text/plain; charset=utf-8", {{"Retry-After", "1"}}, "The site is in use.\n", false};
  }
}

}  // namespace

WebAnswer ViewPages::Answer(const WebRequest& request) {
  WebAnswer answer;
  const std::size_t end = request.path.find('/', 1);
  const bool isAllowed =
      end != request.path.npos && AreSame(request.path.substr(0, end + 1), begin_);
  const std::string name = isAllowed ? request.path.substr(end + 1) : "-";
  if (name.empty()) {
    answer.type = "text/html; charset=utf-8";
    SetBody(view_.Page(), answer);
  } else if (name == "data") {
    answer.type = "application/json";
    SetBody(view_.Data(), answer);
    if (answer.body.starts_with("\x1f\x8b"))
      answer.headers.emplace_back("Content-Encoding", "gzip");
  } else if (name == "events") {
    answer.isEvents = true;
  } else {
    answer.status = 404;
    answer.body = "There is nothing here. The address is the one that zvrsit has printed.\n";
  }
  answer.headers.insert(answer.headers.end(),
                        {{"X-Content-Type-Options", "nosniff"},
                         {"Cache-Control", "no-store"},
                         {"Referrer-Policy", "no-referrer"},
                         {"Content-Security-Policy", "frame-ancestors 'none'"},
                         {"X-Frame-Options", "DENY"},
                         {"Cross-Origin-Opener-Policy", "same-origin"},
                         {"Cross-Origin-Resource-Policy", "same-origin"}});
  return answer;
}

bool ViewPages::NextEvents(unsigned& seen, std::string& text) {
  return view_.NextEvents(true, seen, text);
}

}  // namespace zvrsit::cli
