#include "platform/window_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace zvrsit::platform {
namespace {

#if defined(_WIN32)

TEST(Window, MessagesAndTextsReachTheWindowAndNullIsAllowed) {
  const HWND window =
      ::CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(SendWindowMessage(window, WM_SETTEXT, 0, reinterpret_cast<std::intptr_t>("four")), 1);
  EXPECT_EQ(SendWindowMessage(window, WM_GETTEXTLENGTH, 0, 0), 4);
  EXPECT_EQ(SendWindowMessage(nullptr, kSetPosition, 5, 0), 0);

  auto* const ofTheFramework = reinterpret_cast<CWnd*>(window);
  ShowText(ofTheFramework, "nobody knows how");
  SetTextShower(
      [](CWnd* shown, const char* text) { ::SetWindowTextA(reinterpret_cast<HWND>(shown), text); });
  ShowText(ofTheFramework, "page.htm");
  ShowText(nullptr, "x");
  SetTextShower(nullptr);
  char text[32] = {};
  ::GetWindowTextA(window, text, sizeof text);
  EXPECT_STREQ(text, "page.htm");
  ::DestroyWindow(window);
}

#else

class Recorder : public Window, public CWnd {
 public:
  long OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    last = {message, wParam, static_cast<std::uintptr_t>(lParam)};
    return 7;
  }
  void SetWindowTextA(const char* newText) override { text = newText; }

  std::vector<std::uintptr_t> last;
  std::string text;
};

TEST(Window, MessagesAndTextsReachTheWindowAndNullIsAllowed) {
  Recorder recorder;
  EXPECT_EQ(SendWindowMessage(&recorder, kSetRange, 0, 0x640000), 7);
  EXPECT_EQ(recorder.last, (std::vector<std::uintptr_t>{0x401, 0, 0x640000}));
  ShowText(&recorder, "page.htm");
  EXPECT_EQ(recorder.text, "page.htm");
  EXPECT_EQ(SendWindowMessage(nullptr, kSetPosition, 5, 0), 0);
  ShowText(nullptr, "x");
}

#endif

// The loader writes more than it may say, and no terminator.
int LoadSixLetters(unsigned id, char* buffer, int size) {
  if (id != 8131) return -1;
  std::memcpy(buffer, "walked", static_cast<std::size_t>(std::min(size, 6)));
  return 6;
}

TEST(Window, TableStringsAreCutAndTerminated) {
  char buffer[8] = "old";
  EXPECT_EQ(LoadTableString(8131, buffer, sizeof buffer), 0);
  EXPECT_STREQ(buffer, "");
  SetStringLoader(LoadSixLetters);
  EXPECT_EQ(LoadTableString(8131, buffer, sizeof buffer), 6);
  EXPECT_STREQ(buffer, "walked");
  EXPECT_EQ(LoadTableString(8131, buffer, 4), 3);
  EXPECT_STREQ(buffer, "wal");
  EXPECT_EQ(LoadTableString(8132, buffer, sizeof buffer), 0);
  EXPECT_EQ(LoadTableString(8131, buffer, 0), 0);
  SetStringLoader(nullptr);
}

}  // namespace
}  // namespace zvrsit::platform
