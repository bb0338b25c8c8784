// The text of a file, with the way back to its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dom/code_conv.h"
#include "dom/mapped_file.h"
#include "platform/charset.h"

namespace zvrsit {

// Reads one file after another.
class FileText {
 public:
  // False when the file cannot be read, or its encoding is not known.
  bool ReadPage(const std::string& path);
  // A style sheet; `charset` is the label of its encoding if it does not say its own.
  bool ReadSheet(const std::string& path, const std::string& charset);

  std::string_view bytes() const { return {file_.top(), file_.size()}; }
  // In the code page; kTextPadding zeros follow it.
  std::string_view text() const { return text_; }

  // The bytes that a part of the text stands for. False where this is not known: near bytes that
  // are no text.
  bool FindBytes(std::size_t begin, std::size_t end, std::size_t& firstByte, std::size_t& lastByte);
  // Writes a text in the encoding of the file; false when that lacks a character.
  bool Encode(std::string_view text, std::string& bytes);
  // Whether other bytes in place of the file's would be read as this text.
  bool WouldRead(std::string_view otherBytes, std::string_view text) const;

 private:
  using Units = std::unordered_map<std::string, std::string>;  // a character to its bytes

  bool Keep(std::string_view text, std::string_view label);
  void MapPlaces();
  void MapUtf16();
  void MapIso2022Jp();
  void MapUnits();
  std::size_t UnitAt(std::size_t byte, std::size_t place, std::size_t& length);
  const std::string& Meaning(std::string_view unit);
  const Units& UnitsOf(const std::string& label);
  bool EncodeCharacter(std::string_view character, std::string& bytes);
  void Note(std::size_t place, std::size_t length, std::size_t firstByte, std::size_t lastByte);

  MappedFile file_;
  CodeConv page_;
  bool isSheet_ = false;
  std::string charset_;  // what ReadSheet was given
  std::string buffer_;
  std::string_view text_;
  bool isInFile_ = false;
  std::size_t start_ = 0;  // where the text begins in the file
  std::string label_;
  const platform::Charset* kind_ = nullptr;

  // Of each byte of the text, and of its end: the first byte of its character in the file, and the
  // one after the character before it. Empty until they are needed.
  std::vector<std::uint32_t> firstBytes_;
  std::vector<std::uint32_t> endBytes_;
  std::unordered_map<std::string, std::string> meanings_;  // of units in the encoding
  std::string meaningsOf_;                                 // the label of that
  std::map<std::string, Units> units_;                     // by label
};

}  // namespace zvrsit
