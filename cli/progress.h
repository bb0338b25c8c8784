// The rebuild's dialog on a terminal: a bar, what is being done, and the name of the file.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "cli/interrupts.h"
#include "platform/window.h"

namespace zvrsit::cli {

class ProgressLine;

// While it lives, an interrupt sets the dialog's cancel flag; and the bar is drawn on stderr if
// that is a terminal. Only one at a time.
class TerminalProgress {
 public:
  // `isShown`: with the bar.
  explicit TerminalProgress(bool isShown);
  ~TerminalProgress();
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;

  CZvrSiteRebuildProgressDlg* dialog() { return &dialog_; }

 private:
  const Interrupts interrupts_;
  CZvrSiteRebuildProgressDlg dialog_;
  std::unique_ptr<ProgressLine> line_;  // null when stderr is no terminal
};

}  // namespace zvrsit::cli
