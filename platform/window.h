// The part of a windowing system that the rebuild uses: a progress bar and two texts.
#pragma once

#include <cstdint>

#include "platform/api.h"

#if defined(_WIN32)
#include <windows.h>
class CWnd;
#endif

namespace zvrsit {

#if !defined(_WIN32)
// A window that receives messages. The program derives its progress bar from it.
class ZVRSIT_API Window {
 public:
  virtual ~Window();
  virtual long OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) = 0;
};
using HWND = Window*;

// A window that shows a text.
class ZVRSIT_API CWnd {
 public:
  virtual ~CWnd();
  virtual void SetWindowTextA(const char* text) = 0;
};
#endif

// The rebuild dialog of an application. The rebuild reads `cancel` before each step that can take
// long; any pointer may be null.
struct CZvrSiteRebuildProgressDlg {
  volatile std::int32_t cancel = 0;
  HWND progressBar = nullptr;
  CWnd* statusText = nullptr;
  CWnd* fileNameText = nullptr;
};

namespace platform {

// Messages of a progress bar.
inline constexpr unsigned kSetRange = 0x401;     // wParam 0, lParam low word low, high word high
inline constexpr unsigned kSetPosition = 0x402;  // wParam the position

// Where the status texts of the rebuild (strings 8131 to 8133, see docs/library.md) come from: a
// function that copies string `id` into `buffer`, at most `size` - 1 bytes and a terminator. It
// gives the length, or 0 when there is no such string. When no function or null is set, there are
// no texts on POSIX, and on Windows they are resources of the running program. One function for the
// whole process.
using StringLoader = int (*)(unsigned id, char* buffer, int size);
ZVRSIT_API void SetStringLoader(StringLoader loader);

#if defined(_WIN32)
// A function that puts a text into a window of the application. The application's CWnd is a class
// of its own framework, so the library cannot do it. No texts are shown until this is set.
using TextShower = void (*)(CWnd* window, const char* text);
ZVRSIT_API void SetTextShower(TextShower shower);
#endif

}  // namespace platform
}  // namespace zvrsit
