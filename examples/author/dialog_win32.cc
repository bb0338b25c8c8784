// A dialog of windows: a progress bar, a text, and a button that cancels. Its texts are in the
// string table of the program (dialog_win32.rc).
#include "dialog.h"

// The common controls need <windows.h>, which the above includes.
#include <commctrl.h>

#include <cstdio>

// The application's framework.
class CWnd {
 public:
  // Shows a text; one that `isRepeated` is repeated on the console.
  void SetWindowTextA(const char* text) {
    ::SetWindowTextA(handle, text);
    if (isRepeated) std::printf("  %s\n", text);
  }
  HWND handle = nullptr;
  bool isRepeated = false;
};

struct Dialog::Windows {
  HWND frame = nullptr;
  CWnd status;
  CWnd file;
  zvrsit::CZvrSiteRebuildProgressDlg handles;
};

namespace {

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
    auto* handles = reinterpret_cast<zvrsit::CZvrSiteRebuildProgressDlg*>(
        ::GetWindowLongPtrA(window, GWLP_USERDATA));
    handles->cancel = 1;
    return 0;
  }
  return ::DefWindowProcA(window, message, wParam, lParam);
}

// The rebuild runs in the thread of the windows: the button works because messages are handled
// whenever the rebuild has something to say, which it has for each file whose links it collects.
void ShowText(CWnd* window, const char* text) {
  window->SetWindowTextA(text);
  MSG message;
  while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageA(&message);
}

HWND NewWindow(const char* kind, const char* text, DWORD style, int top, HWND parent, int id) {
  return ::CreateWindowExA(0, kind, text, style | WS_VISIBLE, 10, top, 300, parent ? 20 : 140,
                           parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr,
                           nullptr);
}

}  // namespace

Dialog::Dialog() : windows_(std::make_unique<Windows>()) {
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS};
  ::InitCommonControlsEx(&controls);
  WNDCLASSA frameClass{};
  frameClass.lpfnWndProc = &OnMessage;
  frameClass.hInstance = ::GetModuleHandleA(nullptr);
  frameClass.lpszClassName = "AuthorDialog";
  ::RegisterClassA(&frameClass);

  Windows& windows = *windows_;
  windows.frame = NewWindow("AuthorDialog", "Rebuild", WS_OVERLAPPEDWINDOW, 10, nullptr, 0);
  ::SetWindowLongPtrA(windows.frame, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&windows.handles));
  windows.handles.progressBar = NewWindow(PROGRESS_CLASSA, "", WS_CHILD, 10, windows.frame, 0);
  windows.status.handle = NewWindow("STATIC", "", WS_CHILD, 40, windows.frame, 0);
  windows.status.isRepeated = true;
  windows.handles.statusText = &windows.status;
  windows.file.handle = NewWindow("STATIC", "", WS_CHILD, 60, windows.frame, 0);
  windows.handles.fileNameText = &windows.file;
  NewWindow("BUTTON", "Cancel", WS_CHILD, 80, windows.frame, IDCANCEL);
  zvrsit::platform::SetTextShower(&ShowText);
}
Dialog::~Dialog() {
  zvrsit::platform::SetTextShower(nullptr);
  ::DestroyWindow(windows_->frame);
}

zvrsit::CZvrSiteRebuildProgressDlg* Dialog::handles() {
  return &windows_->handles;
}
int Dialog::position() const {
  return static_cast<int>(::SendMessageA(windows_->handles.progressBar, PBM_GETPOS, 0, 0));
}
