// The rebuild with a dialog of real windows: a progress bar, two texts, a button, and a string
// table in the resources of this program.
#include <gtest/gtest.h>
#include <windows.h>
// The common controls need the above.
#include <commctrl.h>

#include "support/dialog_recorder.h"
#include "support/test_site.h"

namespace zvrsit::test {
namespace {

// A text window of the system.
struct Label : CWnd {
  void SetWindowTextA(const char* text) override { ::SetWindowTextA(handle, text); }
  std::string Text() const {
    char text[MAX_PATH] = {};
    ::GetWindowTextA(handle, text, sizeof text);
    return text;
  }
  HWND handle = nullptr;
};

// What the windows are sent, a line each; at the line numbered `pressAt` the user presses Cancel.
struct Dialog : DialogNotes {
  Label status, file;
  HWND frame = nullptr, button = nullptr;
  std::size_t pressAt = 0;
};
Dialog* dialog = nullptr;
WNDPROC barProcedure, textProcedure;

// The message loop of the application, which its dialog runs whenever it is told something.
void HandleWhatTheUserDid() {
  if (dialog->lines.size() == dialog->pressAt) ::PostMessageA(dialog->button, BM_CLICK, 0, 0);
  MSG message;
  while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageA(&message);
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const bool isBar = window == dialog->dialog.progressBar;
  if (isBar && (message == PBM_SETRANGE || message == PBM_SETPOS)) {
    dialog->AddMessage(message, wParam, lParam);
    HandleWhatTheUserDid();
  } else if (!isBar && window != dialog->frame && message == WM_SETTEXT) {
    const std::string prefix = window == dialog->status.handle ? "status " : "file ";
    dialog->Add(prefix + reinterpret_cast<const char*>(lParam));
    HandleWhatTheUserDid();
  } else if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
    dialog->dialog.cancel = 1;
  }
  return ::CallWindowProcA(isBar ? barProcedure : textProcedure, window, message, wParam, lParam);
}

WNDPROC Watch(HWND window) {
  return reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage)));
}

class RealDialog : public testing::Test {
 protected:
  RealDialog() {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS};
    ::InitCommonControlsEx(&controls);
    dialog = &dialog_;
    dialog_.frame = ::CreateWindowExA(0, "STATIC", "Rebuild", WS_OVERLAPPEDWINDOW, 0, 0, 300, 100,
                                      nullptr, nullptr, nullptr, nullptr);
    dialog_.dialog.progressBar = Child(PROGRESS_CLASSA, 0);
    dialog_.status.handle = Child("STATIC", 20);
    dialog_.file.handle = Child("STATIC", 40);
    dialog_.button = Child("BUTTON", 60, IDCANCEL);
    barProcedure = Watch(dialog_.dialog.progressBar);
    textProcedure = Watch(dialog_.status.handle);
    Watch(dialog_.file.handle);
    Watch(dialog_.frame);
    dialog_.dialog.statusText = &dialog_.status;
    dialog_.dialog.fileNameText = &dialog_.file;
    platform::SetTextShower([](CWnd* window, const char* text) { window->SetWindowTextA(text); });
  }
  ~RealDialog() override {
    platform::SetTextShower(nullptr);
    ::DestroyWindow(dialog_.frame);
  }

  void SetUp() override {
    ASSERT_NE(dialog_.button, nullptr);
    site_.write("a.html", "<title>A</title>");
    site_.write("b.gif", "");
    site_.write("c.css", "");
    ASSERT_EQ(site_.Open(), 0);
  }

  HWND Child(const char* kind, int top, INT_PTR id = 0) {
    return ::CreateWindowExA(0, kind, "", WS_CHILD, 0, top, 300, 20, dialog_.frame,
                             reinterpret_cast<HMENU>(id), nullptr, nullptr);
  }

  Dialog dialog_;
  TestSite site_;
};

TEST_F(RealDialog, IsToldEveryStepInTheOrderOfTheRebuild) {
  for (const int complete : {1, 0}) {
    dialog_.lines.clear();
    ASSERT_EQ(site_.mgr->SiteRebuildDB(complete, &dialog_.dialog), 0);
    EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 2);
    EXPECT_EQ(
        dialog_.lines,
        (std::vector<std::string>{
            "401 0 640000", "402 5", "status Reading folders", "402 10", "status Reading folders",
            "402 15", "status Reading links", "402 15", "file " + site_.path("a.html"), "402 35",
            "file ", "402 55", "file " + site_.path("c.css"), "402 75",
            "file " + site_.path("index.html"), "file ", "status Links are read", "402 100"}));
    EXPECT_EQ(::SendMessageA(dialog_.dialog.progressBar, PBM_GETPOS, 0, 0), 100);
    EXPECT_EQ(dialog_.status.Text(), "Links are read");
    EXPECT_EQ(dialog_.file.Text(), "");
  }
}

// Whichever of the messages before the last page the button is pressed at, the rebuild stops there.
TEST_F(RealDialog, PressingCancelEndsTheRebuildAsFailed) {
  for (std::size_t at = 1; at <= 13; ++at) {
    dialog_.lines.clear();
    dialog_.dialog.cancel = 0;
    dialog_.pressAt = at;
    EXPECT_EQ(site_.mgr->SiteRebuildDB(1, &dialog_.dialog), 0);
    EXPECT_EQ(dialog_.dialog.cancel, 1);
    EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 1) << at;
    EXPECT_LE(dialog_.lines.size(), at + 3) << at;
  }
  dialog_.dialog.cancel = 0;
  dialog_.pressAt = 0;
  EXPECT_EQ(site_.mgr->SiteRebuildDB(1, &dialog_.dialog), 0);
  EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 2);
}

}  // namespace
}  // namespace zvrsit::test
