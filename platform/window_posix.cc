#include <algorithm>
#include <cstring>

#include "platform/window_calls.h"

namespace zvrsit {

Window::~Window() = default;
CWnd::~CWnd() = default;

namespace platform {
namespace {

constinit StringLoader stringLoader = nullptr;

}  // namespace

long SendWindowMessage(HWND window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  return window ? window->OnMessage(message, wParam, lParam) : 0;
}

void ShowText(CWnd* window, const std::string& text) {
  if (window) window->SetWindowTextA(text.c_str());
}

int LoadTableString(unsigned id, char* buffer, int size) {
  if (!buffer || size <= 0) return 0;
  const int length = stringLoader ? std::clamp(stringLoader(id, buffer, size), 0, size - 1) : 0;
  buffer[length] = '\0';
  return length;
}

void SetStringLoader(StringLoader loader) {
  stringLoader = loader;
}

}  // namespace platform
}  // namespace zvrsit
