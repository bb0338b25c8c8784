// Texts of a picture in SVG. All are in UTF-8, and widths and sizes in the unit of the picture.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvrsit {

// In one line, for XML: control characters as escapes.
std::string PictureText(std::string_view text);
// "1 link", "12,345 links". Without `many`, the word for one and an "s".
std::string Counted(std::int64_t count, std::string_view one, std::string_view many = "");
// About how wide a text is in the usual fonts, rather more than less.
double TextWidth(std::string_view text, double fontSize);
// As much of a text as fits, with an ellipsis where it was cut; nothing when that is too little to
// be read.
std::string FitText(std::string_view text, double width, double fontSize);
// Appends an element with the text, whose base line begins there. Nothing for an empty text.
void AddText(std::string& svg, std::string_view look, double x, double y, std::string_view text);

}  // namespace zvrsit
