// Chains as programs in other languages.
#pragma once

#include <string>
#include <string_view>

namespace chain {

enum class Language { c, cpp, python };

/// A program that does with a PGM or PPM file what the chain does; `isColor` says which of the two it
/// reads. Throws an Error.
std::string code(std::string_view text, Language language, bool isColor);

}  // namespace chain
