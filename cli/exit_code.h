// How the program ends.
#pragma once

#include <stdexcept>
#include <string>

namespace zvrsit::cli {

enum ExitCode : int {
  kClean = 0,       // done, nothing to report
  kFindings = 1,    // done, and `check` or `broken` found something
  kUsage = 2,       // the command line is wrong, or names something that the database does not know
  kDatabase = 3,    // the database is missing, damaged, in use or not whole
  kFileSystem = 4,  // a file or folder is missing or cannot be read or written
  kSignal = 128,    // and the number of the signal that interrupted it, such as 130 for Ctrl-C
};

// Ends a command early, with one line for the user and the exit code. It never leaves main.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// The same when another process has what the command needs: later it may be free.
class InUse : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace zvrsit::cli
