// Asks many URLs at a time, and each server with restraint.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "external/answer.h"
#include "external/settings.h"
#include "external/url.h"

namespace zvrsit {

struct Question {
  AskableUrl url;
  std::vector<std::string> fragments;  // to be looked for in its page
};

// How far the asking has come.
struct AskingProgress {
  std::size_t done = 0;
  std::size_t all = 0;
  std::string_view url;  // one of the last that was answered
};

struct AskingCalls {
  // An answer to the question with that number; it is final. Called once for each question.
  std::function<void(std::size_t number, const Answer& answer)> answered;
  // Called ten times a second at least. What it throws ends the asking.
  std::function<void(const AskingProgress& progress)> waiting;
};

// Asks with HEAD, and with GET where that does not do or the page is wanted. Redirects are followed
// one by one. What may pass is tried again, after growing delays or when the server says. A server
// that asks us to wait is left alone for so long; from one that cannot be reached nothing more is
// wanted. Passwords are sent to the server of their URL only.
// Throws std::bad_alloc when libcurl cannot begin.
void AskAll(const ExternalSettings& settings, const std::vector<Question>& questions,
            const AskingCalls& calls);

}  // namespace zvrsit
