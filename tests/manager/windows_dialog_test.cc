// The rebuild with a dialog of real windows: a progress bar, two texts, and a string table in the
// resources of this program.
#include <gtest/gtest.h>
#include <windows.h>
// The common controls need the above.
#include <commctrl.h>

#include "support/dialog_recorder.h"
#include "support/test_site.h"

namespace zvrsit::test {
namespace {

// What the windows were sent, and which of them are whose.
struct Windows {
  DialogNotes notes;
  HWND bar = nullptr, status = nullptr;
};
Windows* windows;
WNDPROC barProcedure, textProcedure;

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (window == windows->bar && (message == PBM_SETRANGE || message == PBM_SETPOS)) {
    windows->notes.AddMessage(message, wParam, lParam);
  } else if (window != windows->bar && message == WM_SETTEXT) {
    const char* text = reinterpret_cast<const char*>(lParam);
    windows->notes.Add((window == windows->status ? "status " : "file ") + std::string(text));
  }
  const WNDPROC before = window == windows->bar ? barProcedure : textProcedure;
  return ::CallWindowProcA(before, window, message, wParam, lParam);
}

WNDPROC Watch(HWND window) {
  return reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage)));
}

// A text control in the application's framework.
struct TextControl : CWnd {
  void SetWindowTextA(const char* text) override { ::SetWindowTextA(handle, text); }
  HWND handle = nullptr;
};

class RealDialog : public testing::Test {
 protected:
  RealDialog() {
    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS};
    ::InitCommonControlsEx(&controls);
    frame_ = ::CreateWindowExA(0, "STATIC", "Rebuild", WS_OVERLAPPEDWINDOW, 0, 0, 300, 100, nullptr,
                               nullptr, nullptr, nullptr);
    windows = &windows_;
    windows_.bar = Child(PROGRESS_CLASSA, 0);
    windows_.status = Child("STATIC", 20);
    file_.handle = Child("STATIC", 40);
    status_.handle = windows_.status;
    barProcedure = Watch(windows_.bar);
    textProcedure = Watch(windows_.status);
    Watch(file_.handle);
    notes().dialog.progressBar = windows_.bar;
    notes().dialog.statusText = &status_;
    notes().dialog.fileNameText = &file_;
    platform::SetTextShower([](CWnd* window, const char* text) { window->SetWindowTextA(text); });
  }
  ~RealDialog() override {
    platform::SetTextShower(nullptr);
    ::DestroyWindow(frame_);
  }

  void SetUp() override {
    ASSERT_NE(file_.handle, nullptr);
    site_.write("a.html", "<title>A</title>");
    site_.write("b.gif", "");
    site_.write("c.css", "");
    ASSERT_EQ(site_.Open(), 0);
  }

  HWND Child(const char* kind, int top) {
    return ::CreateWindowExA(0, kind, "", WS_CHILD, 0, top, 300, 20, frame_, nullptr, nullptr,
                             nullptr);
  }

  DialogNotes& notes() { return windows_.notes; }

  Windows windows_;
  HWND frame_;
  TextControl status_, file_;
  TestSite site_;
};

TEST_F(RealDialog, IsToldEveryStepInTheOrderOfTheRebuild) {
  ASSERT_EQ(site_.mgr->SiteRebuildDB(1, &notes().dialog), 0);
  EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 2);
  EXPECT_EQ(
      notes().lines,
      (std::vector<std::string>{
          "401 0 640000", "402 5", "status Reading folders", "402 10", "status Reading folders",
          "402 15", "status Reading links", "402 15", "file " + site_.path("a.html"), "402 35",
          "file ", "402 55", "file " + site_.path("c.css"), "402 75",
          "file " + site_.path("index.html"), "file ", "status Links are read", "402 100"}));
  EXPECT_EQ(::SendMessageA(windows_.bar, PBM_GETPOS, 0, 0), 100);
  char text[64] = {};
  ::GetWindowTextA(windows_.status, text, sizeof text);
  EXPECT_STREQ(text, "Links are read");
}

TEST_F(RealDialog, CancelInTheMiddleEndsTheRebuildAsFailed) {
  notes().cancelAt = 10;
  EXPECT_EQ(site_.mgr->SiteRebuildDB(1, &notes().dialog), 0);
  EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 1);
  EXPECT_LT(notes().lines.size(), 13u);
}

}  // namespace
}  // namespace zvrsit::test
