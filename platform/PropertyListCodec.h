#pragma once

// What the sources of the property-list codec share: the two readers and writers, their bounds, and UTF-8.

#include "platform/PropertyList.h"

namespace platform::plist {

inline constexpr int kMaxDepth = 512;
inline constexpr std::size_t kMaxFileBytes = std::size_t{128} << 20;

// What one file may still unfold to. A value or text that a binary file shares is paid for at every use, so that a
// small file cannot unfold into a large tree.
class Budget {
public:
    bool takeValues(std::uint64_t count) { return take(values_, count); }
    bool takeBytes(std::uint64_t count) { return take(bytes_, count); }
    // A text of its own costs more than its bytes; many short ones would otherwise be too cheap.
    bool takeText(std::uint64_t length) { return takeBytes(length + 16); }
    bool takeDateText(std::uint64_t length) { return takeBytes(length + 80); }

private:
    static bool take(std::uint64_t& left, std::uint64_t count)
    {
        if (count > left) {
            return false;
        }
        left -= count;
        return true;
    }

    std::uint64_t values_ = 2'000'000;
    std::uint64_t bytes_ = std::uint64_t{64} << 20;
};

struct CodePoint {
    char32_t value;
    std::size_t length; // in bytes
    bool wellFormed;    // if not: one byte, to be written as U+FFFD
};

// The code point that starts at `at` in a UTF-8 text; a lone surrogate in three bytes counts as well-formed.
CodePoint codePointAt(std::string_view text, std::size_t at);

inline bool isSurrogate(char32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}
// How many bytes stand before the first one beyond ASCII.
std::size_t asciiLength(std::string_view text);
// Without the blanks of XML at both ends.
std::string_view trimmed(std::string_view text);

std::optional<Value> readXml(std::string_view bytes);
std::optional<Value> readBinary(std::string_view bytes);
// Nothing if XML cannot hold some value.
std::optional<std::string> writeXml(const Value& root);
std::string writeBinary(const Value& root);

} // namespace platform::plist
