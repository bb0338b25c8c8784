// The rebuild's dialog on a terminal: a bar, what is being done, and the name of the file.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "cli/interrupts.h"
#include "platform/window.h"

namespace zvrsit::cli {

// A bar, what is being done and the thing at hand, in one line on stderr if that is a terminal.
class BarLine {
 public:
  explicit BarLine(bool isShown);
  ~BarLine() { Clear(); }
  BarLine(const BarLine&) = delete;
  BarLine& operator=(const BarLine&) = delete;

  // Draws nothing in the first half second, in which nobody wonders, and then ten times a second at
  // most, as that must not slow the work down. `percent` is 0 to 100, `name` in UTF-8; its
  // beginning is shown.
  void Draw(int percent, const std::string& what, std::string name);
  void Clear();

 private:
  const bool isShown_;
  bool isDrawn_ = false;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point lastDrawn_{};
};

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
  std::unique_ptr<ProgressLine> line_;  // null when no bar is shown
};

}  // namespace zvrsit::cli
