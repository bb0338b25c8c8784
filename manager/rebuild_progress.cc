#include "manager/rebuild_progress.h"

#include <cstdint>

#include "platform/window_calls.h"

namespace zvrsit {

namespace {

// Texts of the application's string table.
constexpr unsigned kWalkText = 8131;
constexpr unsigned kLinksText = 8132;
constexpr unsigned kEndText = 8133;

constexpr int kTextLength = 255;
constexpr std::intptr_t kRange0To100 = 0x640000;

constexpr int kLinksStart = 15;
constexpr std::int64_t kLinksShare = 80;

}  // namespace

void RebuildProgress::BeginWalk() {
  Send(platform::kSetRange, 0, kRange0To100);
  SetPosition(5);
  ShowStatus(kWalkText);
}

void RebuildProgress::EndWalk() {
  SetPosition(10);
  ShowStatus(kWalkText);  // once more, on purpose
}

void RebuildProgress::BeginLinks() {
  SetPosition(kLinksStart);
  ShowStatus(kLinksText);
}

void RebuildProgress::BeginRecord(int number, int count) {
  SetPosition(kLinksStart + static_cast<int>(kLinksShare * number / count));
}

void RebuildProgress::ShowFile(const std::string& path) {
  if (dialog_ != nullptr && dialog_->fileNameText != nullptr) {
    platform::ShowText(dialog_->fileNameText, path);
  }
}

void RebuildProgress::EndLinks() {
  ShowFile("");
  ShowStatus(kEndText);
}

void RebuildProgress::End() {
  SetPosition(100);
}

void RebuildProgress::Send(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  if (dialog_ == nullptr || dialog_->progressBar == nullptr) return;
  platform::SendWindowMessage(dialog_->progressBar, message, wParam, lParam);
}

void RebuildProgress::SetPosition(int position) {
  Send(platform::kSetPosition, static_cast<std::uintptr_t>(position), 0);
}

void RebuildProgress::ShowStatus(unsigned stringId) {
  if (dialog_ == nullptr || dialog_->statusText == nullptr) return;
  char text[kTextLength];
  if (platform::LoadTableString(stringId, text, kTextLength) > 0) {
    platform::ShowText(dialog_->statusText, text);
  }
}

}  // namespace zvrsit
