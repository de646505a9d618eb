// A 5 x 7 dot font: capitals, digits and a few signs.
#pragma once

#include <string_view>

namespace vekcam {

constexpr int glyphColumns = 5;
constexpr int glyphRows = 7;
constexpr int glyphPitch = glyphColumns + 1;

/// Whether the dot at (x, y) of a line of text is set; characters are glyphPitch dots apart, and
/// everything outside the text or unknown to the font is blank.
bool textDot(std::string_view text, int x, int y);

}  // namespace vekcam
