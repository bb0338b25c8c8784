// The rebuild's dialog on a terminal: a bar, what is being done, and the file at hand.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/window.h"

namespace zvrsit::cli {

class ProgressLine;

// While it lives, Ctrl-C and the end of the terminal set the dialog's cancel flag (a second one
// ends the program), and the bar is drawn on stderr when that is a terminal. One at a time.
class TerminalProgress {
 public:
  TerminalProgress();
  ~TerminalProgress();
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;

  CZvrSiteRebuildProgressDlg* dialog() { return &dialog_; }
  bool cancelled() const { return dialog_.cancel != 0; }
  // The number of the signal that did it.
  int signal() const;

 private:
  CZvrSiteRebuildProgressDlg dialog_;
  std::unique_ptr<ProgressLine> line_;  // null when stderr is no terminal
};

}  // namespace zvrsit::cli
