#include "cli/password.h"

#include <iostream>

#if defined(_WIN32)
#include <windows.h>
#else
#include <termios.h>
#include <unistd.h>
#endif

#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/terminal.h"

namespace zvrsit::cli {
namespace {

// While it lives, the terminal does not show what is typed.
#if defined(_WIN32)
class NoEcho {
 public:
  NoEcho() : console_(GetStdHandle(STD_INPUT_HANDLE)) {
    GetConsoleMode(console_, &before_);
    SetConsoleMode(console_, before_ & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
  }
  ~NoEcho() { SetConsoleMode(console_, before_); }

 private:
  HANDLE console_;
  DWORD before_ = 0;
};
#else
class NoEcho {
 public:
  NoEcho() {
    tcgetattr(STDIN_FILENO, &before_);
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~NoEcho() { tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_); }

 private:
  termios before_{};
};
#endif

}  // namespace

std::string AskPassword(const std::string& prompt) {
  std::string password;
  if (IsTerminal(stdin)) {
    PrintTo(stderr, "{}: ", prompt);
    const NoEcho silent;
    std::getline(std::cin, password);
    PrintTo(stderr, "\n");
  } else {
    std::getline(std::cin, password);
  }
  if (!std::cin) throw Failure(kUsage, "no password was given on standard input");
  return password;
}

}  // namespace zvrsit::cli
