// The view of a site for browsers of this machine.
#pragma once

#include <string>

#include "cli/live_view.h"
#include "cli/web_listener.h"

namespace zvrsit::cli {

// Everything lies below a secret name. Nothing is ever written.
class ViewPages : public WebHandler {
 public:
  ViewPages(LiveView& view, std::string secret)
      : view_(view), begin_("/" + std::move(secret) + "/") {}

  WebAnswer Answer(const WebRequest& request) override;
  bool NextEvents(unsigned& seen, std::string& text) override;

 private:
  LiveView& view_;
  const std::string begin_;
};

}  // namespace zvrsit::cli
