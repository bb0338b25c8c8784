// Signals that end the program, noted while there is something to clean up first.
#pragma once

#include <cstdint>

namespace zvrsit::cli {

// While one of these lives, Ctrl-C, a request to end and the end of the terminal do not end the
// program: it looks for them with Check, and cleans up on its way out. The end of the last of these
// objects ends the program if it has not looked by then. A second signal of the same kind ends it
// at once. What whoever started the program has set to be ignored stays ignored.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // Throws Failure with kSignal and the number of the signal, once, when there was one.
  static void Check();
  // Has a signal also set `flag` to 1, at once when there was one already; null for none.
  static void SetFlag(volatile std::int32_t* flag);
};

}  // namespace zvrsit::cli
