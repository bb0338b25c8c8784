// The rebuild dialog of an application that writes down all that it is told.
#pragma once

#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/window.h"

#if defined(_WIN32)
// The application's framework.
class CWnd {
 public:
  virtual ~CWnd() = default;
  virtual void SetWindowTextA(const char* text) = 0;
};
#endif

namespace zvrsit::test {

// What a dialog is told, a line each. It cancels when the line numbered `cancelAt` comes.
struct DialogNotes {
  void Add(const std::string& line) {
    lines.push_back(line);
    if (lines.size() == cancelAt) dialog.cancel = 1;
  }
  void AddMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    std::ostringstream line;
    line << std::hex << message << " " << std::dec << wParam;
    if (lParam != 0) line << " " << std::hex << lParam;
    Add(line.str());
  }

  CZvrSiteRebuildProgressDlg dialog;
  std::vector<std::string> lines;
  std::size_t cancelAt = 0;
};

// A progress bar that notes the messages to it.
#if defined(_WIN32)
class NotingBar {
 public:
  explicit NotingBar(DialogNotes& notes)
      : window_(::CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                  nullptr)) {
    ::SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&notes));
    ::SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage));
  }
  ~NotingBar() { ::DestroyWindow(window_); }
  HWND window() { return window_; }

 private:
  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* notes = reinterpret_cast<DialogNotes*>(::GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message < WM_USER) return ::DefWindowProcA(window, message, wParam, lParam);
    notes->AddMessage(message, wParam, lParam);
    return 0;
  }

  HWND window_;
};
#else
class NotingBar : public Window {
 public:
  explicit NotingBar(DialogNotes& notes) : notes_(notes) {}
  long OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    notes_.AddMessage(message, wParam, lParam);
    return 0;
  }
  HWND window() { return this; }

 private:
  DialogNotes& notes_;
};
#endif

class DialogRecorder : public DialogNotes {
 public:
  DialogRecorder() : bar_(*this), file_(*this, "file "), status_(*this, "status ") {
    platform::SetStringLoader(Load);
#if defined(_WIN32)
    platform::SetTextShower([](CWnd* window, const char* text) { window->SetWindowTextA(text); });
#endif
    dialog.progressBar = bar_.window();
    dialog.fileNameText = &file_;
    dialog.statusText = &status_;
  }
  ~DialogRecorder() {
    platform::SetStringLoader(nullptr);
#if defined(_WIN32)
    platform::SetTextShower(nullptr);
#endif
  }

 private:
  struct TextWindow : CWnd {
    TextWindow(DialogNotes& notes, std::string name) : owner(notes), prefix(std::move(name)) {}
    void SetWindowTextA(const char* text) override { owner.Add(prefix + text); }
    DialogNotes& owner;
    std::string prefix;
  };
  // There is no text 8132.
  static int Load(unsigned id, char* buffer, int size) {
    if (id == 8132 || size != 255) return 0;
    const std::string text = std::to_string(id);
    std::strcpy(buffer, text.c_str());
    return static_cast<int>(text.size());
  }

  NotingBar bar_;
  TextWindow file_;
  TextWindow status_;
};

}  // namespace zvrsit::test
