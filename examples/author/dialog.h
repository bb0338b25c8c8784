// The rebuild dialog of the authoring application: what a system has for a progress bar and a text.
#pragma once

#include <zvrsit40/zvrsit40.h>

#include <memory>

class Dialog {
 public:
  Dialog();
  ~Dialog();
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  // What the rebuild is given.
  zvrsit::CZvrSiteRebuildProgressDlg* handles();
  // Where the bar stands, 0 to 100.
  int position() const;

 private:
  struct Windows;
  std::unique_ptr<Windows> windows_;
};
