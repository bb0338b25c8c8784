// Signals that end the program. They are only noted while there is something to clean up.
#pragma once

#include <cstdint>

namespace zvrsit::cli {

// While one of these objects lives, Ctrl-C, a request to end and the end of the terminal do not end
// the program at once: it looks for them with Check, and cleans up before it ends. When the last of
// these objects is destroyed and no Check has seen the signal, that ends the program. A second
// signal of the same kind ends it at once. Signals that the caller of the program has set to be
// ignored stay ignored.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // If there was a signal, throws Failure with kSignal and the number of the signal, once.
  static void Check();
  // From now on a signal also sets `flag` to 1; if there was one already, this is done at once.
  // Null for none.
  static void SetFlag(volatile std::int32_t* flag);
};

// While this lives, those signals wait. Threads that begin meanwhile never see any.
class SignalsBlocked {
 public:
  SignalsBlocked();
  ~SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
};

}  // namespace zvrsit::cli
