#include "cli/interrupts.h"

#include <csignal>

#include "cli/exit_code.h"

namespace zvrsit::cli {
namespace {

#if defined(_WIN32)
constexpr int kSignals[] = {SIGINT, SIGTERM};
#else
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
#endif

int living = 0;
volatile std::int32_t* flagToSet = nullptr;
volatile std::sig_atomic_t lastSignal = 0;

void Note(int signal) {
  lastSignal = signal;
  if (flagToSet != nullptr) *flagToSet = 1;
  std::signal(signal, SIG_DFL);
}

#if defined(_WIN32)
void Block(bool) {}
#else
void Block(bool isBlocked) {
  sigset_t all;
  sigemptyset(&all);
  for (const int signal : kSignals) sigaddset(&all, signal);
  pthread_sigmask(isBlocked ? SIG_BLOCK : SIG_UNBLOCK, &all, nullptr);
}
#endif

void Handle(void (*handler)(int)) {
  for (const int signal : kSignals) {
    if (std::signal(signal, handler) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

}  // namespace

Interrupts::Interrupts() {
  if (living++ == 0) Handle(&Note);
}

Interrupts::~Interrupts() {
  if (--living > 0) return;
  Handle(SIG_DFL);
  if (lastSignal != 0) std::raise(lastSignal);
}

void Interrupts::Check() {
  if (lastSignal == 0) return;
  const int signal = lastSignal;
  lastSignal = 0;
  throw Failure(ExitCode(kSignal + signal), "interrupted before the end");
}

void Interrupts::SetFlag(volatile std::int32_t* flag) {
  flagToSet = flag;
  if (flag != nullptr && lastSignal != 0) *flag = 1;
}

SignalsBlocked::SignalsBlocked() {
  Block(true);
}

SignalsBlocked::~SignalsBlocked() {
  Block(false);
}

}  // namespace zvrsit::cli
