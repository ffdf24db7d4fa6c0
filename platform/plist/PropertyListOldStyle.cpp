#include "platform/plist/PropertyListCodec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>

namespace platform::plist {

namespace {

constexpr std::string_view kOldStyleBlanks = " \t\n\v\f\r";
constexpr std::string_view kBareCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_$/:.-";

// What an octal escape from \200 on stands for.
constexpr std::u16string_view kNextStep = u"\u00A0ÀÁÂÃÄÅÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖÙÚÛÜÝÞµ×÷©¡¢£⁄¥ƒ§¤’“«‹›ﬁﬂ®–†‡·¦¶•‚„”»…‰¬¿¹ˋ´ˆ˜¯"
                                          u"˘˙¨²˚¸³˝˛ˇ—±¼½¾àáâãäåçèéêëìÆíªîïðñŁØŒºòóôõö"
                                          u"æùúûıüýłøœßþÿ\uFFFD\uFFFD";
static_assert(kNextStep.size() == 128);

class OldStyleReader {
public:
    explicit OldStyleReader(std::string_view text) : rest_(text) {}

    std::optional<Value> readObject()
    {
        Value root;
        return readValue(root, 0) && atEnd() ? std::optional(std::move(root)) : std::nullopt;
    }

    // The content of a dictionary without its braces; at least one entry.
    std::optional<Value> readEntries()
    {
        Dictionary root;
        return readEntries(root, 1) && atEnd() && root.size() > 0 ? std::optional(Value(std::move(root)))
                                                                  : std::nullopt;
    }

private:
    bool readValue(Value& value, std::size_t depth)
    {
        if (++values_ > kMaxValues) {
            return false;
        }
        if (take('{')) {
            auto& dictionary = value.held.emplace<Dictionary>();
            return depth < kMaxDepth && readEntries(dictionary, depth + 1) && take('}');
        }
        if (take('(')) {
            return depth < kMaxDepth && readArray(value.held.emplace<Array>(), depth + 1);
        }
        if (take('<')) {
            return readData(value.held.emplace<Data>().bytes);
        }
        return readText(value.held.emplace<std::string>());
    }

    // A comma after the last value is allowed.
    bool readArray(Array& array, std::size_t depth)
    {
        bool more = true;
        while (!take(')')) {
            if (!more || !readValue(array.emplace_back(), depth)) {
                return false;
            }
            more = take(',');
        }
        return true;
    }

    // Up to what is no text. A key without a value stands for itself.
    bool readEntries(Dictionary& dictionary, std::size_t depth)
    {
        skipBlanks();
        while (!rest_.empty() && rest_.front() != '}') {
            auto& [key, value] = dictionary.entries.emplace_back();
            if (++values_ > kMaxValues || !readText(key)) {
                return false;
            }
            const bool good = take('=') ? readValue(value, depth) : ++values_ <= kMaxValues && copyText(key, value);
            if (!good || !take(';')) {
                return false;
            }
            skipBlanks();
        }
        return true;
    }

    bool copyText(const std::string& text, Value& value)
    {
        value = text;
        return charge(text);
    }

    // Hexadecimal digits, two a byte.
    bool readData(std::string& bytes)
    {
        unsigned byte = 1; // above the digits read, a one that tells their number
        while (!rest_.empty() && rest_.front() != '>') {
            const char c = rest_.front();
            rest_.remove_prefix(1);
            if (kOldStyleBlanks.find(c) != kOldStyleBlanks.npos) {
                continue;
            }
            unsigned digit = 0;
            if (std::from_chars(&c, &c + 1, digit, 16).ec != std::errc()) {
                return false;
            }
            byte = byte << 4 | digit;
            if (byte > 0xFF) {
                bytes += static_cast<char>(byte);
                byte = 1;
            }
        }
        return byte == 1 && take('>');
    }

    bool readText(std::string& text)
    {
        skipBlanks();
        const char quote = rest_.empty() ? '\0' : rest_.front();
        if (quote == '"' || quote == '\'') {
            return readQuoted(text, quote) && charge(text);
        }
        text = rest_.substr(0, rest_.find_first_not_of(kBareCharacters));
        rest_.remove_prefix(text.size());
        return !text.empty() && charge(text);
    }

    bool readQuoted(std::string& text, char quote)
    {
        const std::array<char, 2> stops = {quote, '\\'};
        rest_.remove_prefix(1);
        while (true) {
            const std::size_t at = rest_.find_first_of({stops.data(), stops.size()});
            if (at == rest_.npos) {
                return false;
            }
            const bool complete = rest_[at] == quote;
            text += rest_.substr(0, at);
            rest_.remove_prefix(at + 1);
            if (complete) {
                return true;
            }
            if (!readEscape(text)) {
                return false;
            }
        }
    }

    // What follows a backslash.
    bool readEscape(std::string& text)
    {
        if (rest_.starts_with('U')) {
            return readUnicode(text);
        }
        if (const auto number = takeNumber(3, 8)) {
            const std::uint32_t byte = *number & 0xFF;
            appendUtf8(text, byte < 0x80 ? byte : kNextStep[byte - 0x80]);
            return true;
        }
        if (rest_.empty()) {
            return false;
        }
        constexpr std::string_view kLetters = "abfnrtv", kControls = "\a\b\f\n\r\t\v";
        const std::size_t letter = kLetters.find(rest_.front());
        text += letter < kLetters.size() ? kControls[letter] : rest_.front();
        rest_.remove_prefix(1);
        return true;
    }

    // \Uxxxx, a unit of UTF-16; characters beyond U+FFFF take two.
    bool readUnicode(std::string& text)
    {
        const auto takeUnit = [&] {
            rest_.remove_prefix(1);
            return takeNumber(4, 16);
        };
        const auto first = takeUnit();
        if (!first || !isSurrogate(*first)) {
            appendUtf8(text, first.value_or('U'));
            return true;
        }
        if (*first >= 0xDC00 || !rest_.starts_with("\\U")) {
            return false;
        }
        rest_.remove_prefix(1);
        const std::uint32_t second = takeUnit().value_or(0);
        appendUtf8(text, 0x10000 + ((*first & 0x3FF) << 10) + (second & 0x3FF));
        return second >= 0xDC00 && second <= 0xDFFF;
    }

    // Of so many digits at most.
    std::optional<std::uint32_t> takeNumber(std::size_t digits, int base)
    {
        std::uint32_t number = 0;
        const char* const start = rest_.data();
        const auto [end, error] = std::from_chars(start, start + std::min(digits, rest_.size()), number, base);
        rest_.remove_prefix(static_cast<std::size_t>(end - start));
        return error == std::errc() ? std::optional(number) : std::nullopt;
    }

    // After blanks.
    bool take(char mark)
    {
        skipBlanks();
        const bool found = rest_.starts_with(mark);
        rest_.remove_prefix(found ? 1 : 0);
        return found;
    }

    bool atEnd()
    {
        skipBlanks();
        return rest_.empty();
    }

    void skipBlanks()
    {
        while (true) {
            rest_.remove_prefix(std::min(rest_.find_first_not_of(kOldStyleBlanks), rest_.size()));
            if (rest_.starts_with("//")) {
                rest_.remove_prefix(std::min(rest_.find_first_of("\n\r"), rest_.size()));
            } else if (rest_.starts_with("/*")) {
                const std::size_t end = rest_.find("*/", 2);
                rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 2);
            } else {
                return;
            }
        }
    }

    // Keys that stand for themselves could double a file's text.
    bool charge(const std::string& text)
    {
        textBytes_ += text.size();
        return textBytes_ <= kMaxTextBytes;
    }

    std::string_view rest_;
    std::size_t values_ = 0;
    std::size_t textBytes_ = 0;
};

} // namespace

std::optional<Value> readOldStyle(std::string_view utf8)
{
    auto root = OldStyleReader(utf8).readObject();
    return root ? std::move(root) : OldStyleReader(utf8).readEntries();
}

} // namespace platform::plist
