// What a rebuild shows of itself in the application's dialog.
#pragma once

#include <cstdint>
#include <string>

#include "platform/window.h"

namespace zvrsit {

// The bar goes from 0 to 100: 5 while folders are walked, 10 after that, 15 to 95 over the path
// records, 100 at the end. Without a dialog nothing is shown and nothing is ever cancelled.
class RebuildProgress {
 public:
  explicit RebuildProgress(CZvrSiteRebuildProgressDlg* dialog) : dialog_(dialog) {}

  void BeginWalk();
  void EndWalk();
  void BeginLinks();
  void BeginRecord(int number, int count);
  void ShowFile(const std::string& path);
  void EndLinks();
  void End();

  // Read before each step that can take long.
  bool Cancelled() const { return dialog_ != nullptr && dialog_->cancel != 0; }

 private:
  void Send(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);
  void SetPosition(int position);
  void ShowStatus(unsigned stringId);

  CZvrSiteRebuildProgressDlg* dialog_;
};

}  // namespace zvrsit
