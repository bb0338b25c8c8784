// The rebuild with a dialog of real windows: a progress bar, two texts, and a string table in the
// resources of this program.
#include <gtest/gtest.h>
#include <windows.h>
// The common controls need the above.
#include <commctrl.h>

#include "platform/window.h"
#include "support/test_site.h"

// The application's framework: a window by its handle.
class CWnd {
 public:
  explicit CWnd(HWND window) : handle(window) {}
  HWND handle;
};

namespace zvrsit::test {
namespace {

// What the windows were sent, a line each, and at which line the user cancels.
struct Notes {
  std::vector<std::string> lines;
  std::size_t cancelAt = 0;
  CZvrSiteRebuildProgressDlg* dialog = nullptr;
  HWND bar = nullptr, status = nullptr;
};
Notes notes;
WNDPROC barProcedure, textProcedure;

void Note(const std::string& line) {
  notes.lines.push_back(line);
  if (notes.lines.size() == notes.cancelAt) notes.dialog->cancel = 1;
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (window == notes.bar && (message == PBM_SETRANGE || message == PBM_SETPOS)) {
    std::ostringstream line;
    line << std::hex << message << " " << std::dec << wParam;
    if (lParam != 0) line << " " << std::hex << lParam;
    Note(line.str());
  } else if (window != notes.bar && message == WM_SETTEXT) {
    const char* text = reinterpret_cast<const char*>(lParam);
    Note((window == notes.status ? "status " : "file ") + std::string(text));
  }
  const WNDPROC before = window == notes.bar ? barProcedure : textProcedure;
  return ::CallWindowProcA(before, window, message, wParam, lParam);
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
    frame_ = ::CreateWindowExA(0, "STATIC", "Rebuild", WS_OVERLAPPEDWINDOW, 0, 0, 300, 100, nullptr,
                               nullptr, nullptr, nullptr);
    notes = {};
    notes.dialog = &dialog_;
    notes.bar = Child(PROGRESS_CLASSA, 0);
    notes.status = Child("STATIC", 20);
    file_.handle = Child("STATIC", 40);
    status_.handle = notes.status;
    barProcedure = Watch(notes.bar);
    textProcedure = Watch(notes.status);
    Watch(file_.handle);
    dialog_.progressBar = notes.bar;
    dialog_.statusText = &status_;
    dialog_.fileNameText = &file_;
    platform::SetTextShower(
        [](CWnd* window, const char* text) { ::SetWindowTextA(window->handle, text); });
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

  HWND frame_;
  CWnd status_{nullptr}, file_{nullptr};
  CZvrSiteRebuildProgressDlg dialog_;
  TestSite site_;
};

TEST_F(RealDialog, IsToldEveryStepInTheOrderOfTheRebuild) {
  ASSERT_EQ(site_.mgr->SiteRebuildDB(1, &dialog_), 0);
  EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 2);
  EXPECT_EQ(
      notes.lines,
      (std::vector<std::string>{
          "401 0 640000", "402 5", "status Reading folders", "402 10", "status Reading folders",
          "402 15", "status Reading links", "402 15", "file " + site_.path("a.html"), "402 35",
          "file ", "402 55", "file " + site_.path("c.css"), "402 75",
          "file " + site_.path("index.html"), "file ", "status Links are read", "402 100"}));
  EXPECT_EQ(::SendMessageA(notes.bar, PBM_GETPOS, 0, 0), 100);
  char text[64] = {};
  ::GetWindowTextA(notes.status, text, sizeof text);
  EXPECT_STREQ(text, "Links are read");
}

TEST_F(RealDialog, CancelInTheMiddleEndsTheRebuildAsFailed) {
  notes.cancelAt = 10;
  EXPECT_EQ(site_.mgr->SiteRebuildDB(1, &dialog_), 0);
  EXPECT_EQ(site_.mgr->GetSiteProfRebuildState(), 1);
  EXPECT_LT(notes.lines.size(), 13u);
}

}  // namespace
}  // namespace zvrsit::test
