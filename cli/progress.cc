#include "cli/progress.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "cli/output.h"
#include "cli/terminal.h"
#include "platform/code_page.h"
#include "util/path_parts.h"

namespace zvrsit::cli {
namespace {

constexpr std::chrono::milliseconds kBeforeBar{500};
constexpr std::chrono::milliseconds kBetweenBars{100};

// The texts that the rebuild asks for by number.
int LoadProgressText(unsigned id, char* buffer, int size) {
  const char* text = id == 8131   ? "Reading folders"
                     : id == 8132 ? "Reading links"
                     : id == 8133 ? "Finding the published family"
                                  : "";
  return std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text);
}

}  // namespace

BarLine::BarLine(bool isShown) : isShown_(isShown && CanRedraw()) {}

void BarLine::Draw(int percent, const std::string& what, std::string name) {
  const auto now = std::chrono::steady_clock::now();
  if (!isShown_ || now - begin_ < kBeforeBar || now - lastDrawn_ < kBetweenBars) return;
  lastDrawn_ = now;
  isDrawn_ = true;
  // Short enough for a line of 80 columns, and never half a character of UTF-8.
  std::size_t end = std::min<std::size_t>(name.size(), 20);
  while (end > 0 && end < name.size() && (name[end] & 0xC0) == 0x80) --end;
  name.resize(end);
  const std::string bar(static_cast<std::size_t>(percent / 5), '#');
  PrintTo(stderr, "\r\033[K[{:<20}] {:3}%  {}  {}", bar, percent, what, LineText(name));
  std::fflush(stderr);
}

void BarLine::Clear() {
  if (isDrawn_) std::fputs("\r\033[K", stderr);
  isDrawn_ = false;
}

#if defined(_WIN32)
// A program without windows shows no bar there.
class ProgressLine {
 public:
  void Attach(CZvrSiteRebuildProgressDlg&) {}
};
#else
class ProgressLine {
 public:
  void Attach(CZvrSiteRebuildProgressDlg& dialog) {
    dialog.progressBar = &bar_;
    dialog.statusText = &status_;
    dialog.fileNameText = &file_;
  }

 private:
  struct Bar : Window {
    explicit Bar(ProgressLine& line) : owner(line) {}
    long OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t) override {
      if (message == platform::kSetPosition) {
        owner.position_ = static_cast<int>(std::min<std::uintptr_t>(wParam, 100));
      }
      owner.Draw();
      return 0;
    }
    ProgressLine& owner;
  };
  struct Label : CWnd {
    explicit Label(ProgressLine& line) : owner(line) {}
    void SetWindowTextA(const char* text) override {
      value = text;
      owner.Draw();
    }
    ProgressLine& owner;
    std::string value;
  };

  void Draw() { line_.Draw(position_, status_.value, platform::ToUtf8(NameInFolder(file_.value))); }

  int position_ = 0;
  BarLine line_{true};
  Bar bar_{*this};
  Label status_{*this};
  Label file_{*this};
};
#endif

TerminalProgress::TerminalProgress(bool isShown) {
  platform::SetStringLoader(&LoadProgressText);
  Interrupts::SetFlag(&dialog_.cancel);
  if (isShown && CanRedraw()) {
    line_ = std::make_unique<ProgressLine>();
    line_->Attach(dialog_);
  }
}

TerminalProgress::~TerminalProgress() {
  Interrupts::SetFlag(nullptr);
  platform::SetStringLoader(nullptr);
}

}  // namespace zvrsit::cli
