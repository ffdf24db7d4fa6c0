#pragma once
// The characters of a text in UTF-8.

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

struct CodePoint {
    char32_t value;
    std::size_t length; ///< in bytes
    bool wellFormed;    ///< if not: one byte, to be written as U+FFFD
};

/// The code point that starts at `at`; a lone surrogate in three bytes counts as well-formed.
CodePoint codePointAt(std::string_view text, std::size_t at);

constexpr bool isSurrogate(char32_t point)
{
    return point >= 0xD800 && point <= 0xDFFF;
}

/// A surrogate takes three bytes.
void appendUtf8(std::string& text, char32_t point);

/// Whether the bytes are UTF-8 throughout: no byte out of place, no overlong form, no surrogate, nothing above
/// U+10FFFF.
bool isUtf8(std::string_view bytes);

bool isAscii(std::string_view text);

} // namespace platform
