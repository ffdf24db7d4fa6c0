#include "platform/Utf8.h"

#include <algorithm>
#include <array>

namespace platform {

CodePoint codePointAt(std::string_view text, std::size_t at)
{
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    constexpr CodePoint kMalformed = {0xFFFD, 1, false};
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const auto first = byte(0);
    if (first < 0x80)
        return {first, 1, true};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || length > text.size() - at)
        return kMalformed;
    char32_t value = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return kMalformed;
        value = value << 6 | (byte(i) & 0x3Fu);
    }
    return value < kSmallest[length] || value > 0x10FFFF ? kMalformed : CodePoint{value, length, true};
}

void appendUtf8(std::string& text, char32_t point)
{
    if (point < 0x80) {
        text += static_cast<char>(point);
        return;
    }
    const int followers = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    text += static_cast<char>((0xF80u >> followers & 0xF0u) | point >> 6 * followers);
    for (int i = followers - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (point >> 6 * i & 0x3F));
}

bool isUtf8(std::string_view bytes)
{
    for (std::size_t at = 0; at < bytes.size();) {
        const CodePoint point = codePointAt(bytes, at);
        if (!point.wellFormed || point.value >> 11 == 0xD800 >> 11)
            return false;
        at += point.length;
    }
    return true;
}

bool isAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

} // namespace platform
