#include "tools/community_server/PlainText.h"

#include "platform/Utf8.h"

#include <cstddef>

namespace community_server {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool breaksLine(char32_t point)
{
    return point == '\n' || point == 0x2028 || point == 0x2029;
}

bool turnsDirection(char32_t point)
{
    return (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069) || point == 0x200E ||
           point == 0x200F || point == 0x061C;
}

char32_t visible(char32_t point)
{
    if (point < 0x20)
        return 0x2400 + point;
    if (point == 0x7F)
        return 0x2421;
    const bool isOdd = (point >= 0x80 && point < 0xA0) || (point & 0xFFFE) == 0xFFFE || platform::isSurrogate(point);
    return isOdd ? kReplacement : point;
}

} // namespace

std::string plainText(std::string_view text, Lines lines)
{
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto point = platform::codePointAt(text, at);
        at += point.length;
        if (!point.wellFormed)
            platform::appendUtf8(plain, kReplacement);
        else if (breaksLine(point.value))
            plain += lines == Lines::several ? '\n' : ' ';
        else if (point.value == '\t')
            plain += lines == Lines::several ? '\t' : ' ';
        else if (point.value != '\r' || at >= text.size() || text[at] != '\n')
            platform::appendUtf8(plain, visible(point.value));
    }
    return plain;
}

std::string withoutDirections(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        const auto point = platform::codePointAt(text, at);
        if (!turnsDirection(point.value))
            plain += text.substr(at, point.length);
        at += point.length;
    }
    return plain;
}

} // namespace community_server
