#include "platform/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace platform {

namespace {

/// The length in bytes of the character that begins here; 0 when it is none that UTF-8 has.
std::size_t characterLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length)
        return 0;
    std::uint32_t character = first & (0xffu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
        character = character << 6 | (byte(i) & 0x3fu);
    }
    static constexpr std::uint32_t kShortest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xd800 && character <= 0xdfff;
    return character < kShortest[length] || character > 0x10ffff || isSurrogate ? 0 : length;
}

} // namespace

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace platform
