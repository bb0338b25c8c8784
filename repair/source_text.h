// Texts within texts: a file's text, an attribute's value in it, an address in its style. Each
// knows where its characters stand in the text around it, and how a change is written there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

// Calls `visit` with each character of a text in the code page, which has one or more bytes.
void ForEachCharacter(std::string_view text,
                      const std::function<void(std::string_view character)>& visit);

// A change of a part of a text.
struct SourceEdit {
  std::size_t begin;
  std::size_t end;
  std::string text;
  std::vector<std::size_t> references;  // the numbers of those that it is for
};

enum class Writing {
  kAsIs,
  kAttribute,  // with character references; `quote` is 0 where it has none
  kMarkup,     // text between tags
  kCssString,
  kCssUrl,  // in url() without quotes
  kJson,
};

class SourceText {
 public:
  // The text of a file.
  explicit SourceText(std::string_view text) : text_(text) {}
  // The part of `outer` that begins at `begin` and is written as `raw`. Nothing is decoded yet.
  SourceText(SourceText& outer, std::size_t begin, std::string_view raw, Writing writing,
             char quote = '\0')
      : outer_(&outer), begin_(begin), raw_(raw), writing_(writing), quote_(quote) {}
  SourceText(const SourceText&) = delete;
  SourceText& operator=(const SourceText&) = delete;

  // Appends to the text what `length` bytes of the outer one at `place` stand for. Calls go from
  // front to back, and cover all that is to be changed.
  void Append(std::string_view meaning, std::size_t place, std::size_t length);
  // The whole of `raw`, which means what it says.
  void AppendRaw();

  std::string_view text() const { return outer_ == nullptr ? text_ : std::string_view(decoded_); }

  // Changes a part of the text; no two edits overlap.
  void Edit(SourceEdit edit) { edits_.push_back(std::move(edit)); }
  // Hands all edits on to the outer text.
  void HandOn();
  std::vector<SourceEdit>& edits() { return edits_; }

 private:
  std::string Written(std::string_view text) const;
  std::string AsAttribute(std::string_view text, char quote) const;
  std::string AsJson(std::string_view text) const;
  bool NeedsQuotes() const;
  void Quote();

  SourceText* outer_ = nullptr;
  std::size_t begin_ = 0;
  std::string_view raw_;
  Writing writing_ = Writing::kAsIs;
  char quote_ = '\0';
  std::string_view text_;
  std::string decoded_;
  // For each byte of decoded_ and for its end: where what stands before it ends in the outer text.
  std::vector<std::uint32_t> ends_;
  std::vector<SourceEdit> edits_;
};

}  // namespace zvrsit
