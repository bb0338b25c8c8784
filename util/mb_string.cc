#include "util/mb_string.h"

#include "platform/single_byte.h"

namespace zvrsit {
namespace {

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}

// Replaces each single-byte character by what `change` makes of it.
template <class Change>
void ChangeSingleBytes(std::string& text, Change change) {
  platform::ForEachSingleByte(text, 0, [&](std::size_t i) { text[i] = change(text[i]); });
}

}  // namespace

std::size_t FindChar(std::string_view text, char wanted) {
  return text.find(wanted);
}
std::size_t FindHash(std::string_view text) {
  return FindChar(text, '#');
}
std::size_t FindQuery(std::string_view text) {
  return FindChar(text, '?');
}

std::size_t FindLastCharMB(std::string_view text, char wanted) {
  return platform::FindLastSingleByte(text, wanted);
}

std::size_t FindLastHashMB(std::string_view text) {
  return FindLastCharMB(text, '#');
}
std::size_t FindLastBackslashMB(std::string_view text) {
  return FindLastCharMB(text, '\\');
}

std::string_view FolderOf(std::string_view path) {
  return path.substr(0, FindLastBackslashMB(path) + 1);  // npos + 1 is 0
}
std::string_view NameInFolder(std::string_view path) {
  return path.substr(FolderOf(path).size());
}

int ToUpperMB(std::string& text) {
  ChangeSingleBytes(text, UpperAscii);
  return 0;
}

int ToLowerMB(std::string& text) {
  ChangeSingleBytes(text, platform::LowerAscii);
  return 0;
}

int ReplaceCharMB(std::string& text, char from, char to) {
  platform::ReplaceSingleByte(text, 0, from, to);
  return 0;
}

}  // namespace zvrsit
