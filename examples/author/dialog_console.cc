// A dialog on the console.
#include <cstdio>

#include "dialog.h"

namespace {

// Stands for the string table of an application of Windows.
int LoadText(unsigned id, char* buffer, int size) {
  const char* text = id == 8131   ? "reading folders"
                     : id == 8132 ? "reading links"
                     : id == 8133 ? "links are read"
                                  : "";
  return std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text);
}

struct Bar : zvrsit::Window {
  long OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t) override {
    if (message == zvrsit::platform::kSetPosition) position = static_cast<int>(wParam);
    return 0;
  }
  int position = 0;
};

struct Line : zvrsit::CWnd {
  void SetWindowTextA(const char* text) override { std::printf("  %s\n", text); }
};

}  // namespace

struct Dialog::Windows {
  Bar bar;
  Line status;
  zvrsit::CZvrSiteRebuildProgressDlg handles;
};

Dialog::Dialog() : windows_(std::make_unique<Windows>()) {
  zvrsit::platform::SetStringLoader(&LoadText);
  windows_->handles.progressBar = &windows_->bar;
  windows_->handles.statusText = &windows_->status;
}
Dialog::~Dialog() {
  zvrsit::platform::SetStringLoader(nullptr);
}

zvrsit::CZvrSiteRebuildProgressDlg* Dialog::handles() {
  return &windows_->handles;
}
int Dialog::position() const {
  return windows_->bar.position;
}
