#include "platform/window_calls.h"

#include <algorithm>

namespace zvrsit::platform {
namespace {

constinit TextShower textShower = nullptr;
constinit StringLoader stringLoader = nullptr;

// A string of the resources of the running program.
int LoadOfProgram(unsigned id, char* buffer, int size) {
  return LoadStringA(nullptr, id, buffer, size);
}

}  // namespace

long SendWindowMessage(HWND window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  if (!window) return 0;
  return static_cast<long>(
      SendMessageA(window, message, static_cast<WPARAM>(wParam), static_cast<LPARAM>(lParam)));
}

void ShowText(CWnd* window, const std::string& text) {
  if (window && textShower) textShower(window, text.c_str());
}

int LoadTableString(unsigned id, char* buffer, int size) {
  if (!buffer || size <= 0) return 0;
  const StringLoader load = stringLoader ? stringLoader : LoadOfProgram;
  const int length = std::clamp(load(id, buffer, size), 0, size - 1);
  buffer[length] = '\0';
  return length;
}

void SetStringLoader(StringLoader loader) {
  stringLoader = loader;
}
void SetTextShower(TextShower shower) {
  textShower = shower;
}

}  // namespace zvrsit::platform
