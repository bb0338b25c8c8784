// Making the Nth file call of an operation fail, for every N.
#pragma once

#include "platform/file_fault.h"

namespace zvrsit::test {

// While it lives, counts the file calls of this thread and fails the one numbered `failing`
// (from 1; 0 fails none).
class FileFault {
 public:
  explicit FileFault(int failing) : failing_(failing) { platform::SetFileFaultHook(Ask, this); }
  FileFault(const FileFault&) = delete;
  FileFault& operator=(const FileFault&) = delete;
  ~FileFault() { platform::SetFileFaultHook(nullptr, nullptr); }

  int calls() const { return calls_; }
  // Whether the call was reached.
  bool fired() const { return failing_ > 0 && calls_ >= failing_; }
  // Which call it was.
  platform::FileCall failedCall() const { return failedCall_; }

 private:
  static bool Ask(platform::FileCall call, void* context) {
    auto* fault = static_cast<FileFault*>(context);
    if (++fault->calls_ != fault->failing_) return false;
    fault->failedCall_ = call;
    return true;
  }

  int failing_;
  int calls_ = 0;
  platform::FileCall failedCall_{};
};

// What one failed run was.
struct FailedRun {
  int call;                       // the number of the call that failed
  platform::FileCall failedCall;  // and its kind
};

// On Windows, where a file call takes many times as long, so many calls work before one fails.
#if defined(_WIN32)
inline constexpr int kOneCallIn = 10;
#else
inline constexpr int kOneCallIn = 1;
#endif

// For N = 1, 2, 3 ...: `prepare()`, then `operate()` with its Nth file call failing, then
// `check(run)`, with working calls again. Ends after the first run that makes fewer than N calls,
// which is not handed to `check`. Gives the number of failed runs: the calls of the operation. With
// `every`, only one of so many calls fails.
template <class Prepare, class Operate, class Check>
int FailEachCall(Prepare prepare, Operate operate, Check check, int every = 1) {
  constexpr int kMostCalls = 100000;
  for (int n = 1; n <= kMostCalls; n += every) {
    prepare();
    FailedRun run{n, {}};
    {
      FileFault fault(n);
      operate();
      if (!fault.fired()) return (n - 1) / every;
      run.failedCall = fault.failedCall();
    }
    check(run);
  }
  return -1;  // the operation does not end
}

}  // namespace zvrsit::test
