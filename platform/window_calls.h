// What the rebuild does to the windows of its dialog.
#pragma once

#include <cstdint>
#include <string>

#include "platform/window.h"

namespace zvrsit::platform {

long SendWindowMessage(HWND window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam);
void ShowText(CWnd* window, const std::string& text);

// Copies string `id` of the application's string table into `buffer`, at most `size` - 1 bytes
// and a terminator; the length, 0 when there is no such string.
int LoadTableString(unsigned id, char* buffer, int size);

}  // namespace zvrsit::platform
