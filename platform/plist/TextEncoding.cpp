#include "platform/plist/TextEncoding.h"

#include "platform/plist/PropertyListCodec.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include <iconv.h>
#include <strings.h>

namespace platform::plist {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kMaxNameLength = 100;

// Most of the system's encodings are for files of this size only: the slowest take 30 ns a byte.
constexpr std::size_t kMaxSlowBytes = std::size_t{16} << 20;
constexpr std::array<std::string_view, 4> kQuick = {"UTF-", "ISO-8859-", "US-ASCII", "windows-125"};

// UTF-32's mark starts with one of UTF-16.
constexpr std::array<std::pair<std::string_view, const char*>, 5> kMarks = {{
    {"\xEF\xBB\xBF"sv, "UTF-8"},
    {"\0\0\xFE\xFF"sv, "UTF-32BE"},
    {"\xFF\xFE\0\0"sv, "UTF-32LE"},
    {"\xFE\xFF"sv, "UTF-16BE"},
    {"\xFF\xFE"sv, "UTF-16LE"},
}};

// The name in <?xml … encoding="name" … ?>.
std::optional<std::string_view> declaredEncoding(std::string_view text)
{
    text = trimmed(text);
    if (!text.starts_with("<?xml") || text.find_first_of(kBlanks) != 5) {
        return std::nullopt;
    }
    text = text.substr(0, text.find("?>"));
    const std::size_t found = text.find("encoding");
    text = found == text.npos ? std::string_view() : trimmed(text.substr(found + "encoding"sv.size()));
    if (!text.starts_with('=')) {
        return std::nullopt;
    }
    text = trimmed(text.substr(1));
    if (text.empty() || (text.front() != '"' && text.front() != '\'')) {
        return std::nullopt;
    }
    return text.substr(1, text.find(text.front(), 1) - 1);
}

// Takes the mark off.
std::string takeEncoding(std::string_view& bytes)
{
    for (const auto& [mark, encoding] : kMarks) {
        if (bytes.starts_with(mark)) {
            bytes.remove_prefix(mark.size());
            return encoding;
        }
    }
    const bool firstIsZero = bytes.starts_with('\0'), secondIsZero = bytes.substr(0, 2).ends_with('\0');
    if (bytes.size() >= 2 && firstIsZero != secondIsZero) {
        return firstIsZero ? "UTF-16BE" : "UTF-16LE";
    }
    return std::string(declaredEncoding(bytes).value_or("UTF-8"));
}

// Whether the system may be asked to convert so many bytes. To iconv no name means the user's encoding, and what
// follows a slash or a comma changes how it converts.
bool mayConvert(const std::string& encoding, std::size_t size)
{
    const bool isQuick = std::any_of(kQuick.begin(), kQuick.end(), [&](std::string_view start) {
        return strncasecmp(encoding.c_str(), start.data(), start.size()) == 0;
    });
    return !encoding.empty() && encoding.size() <= kMaxNameLength &&
           encoding.find_first_of("/,\0"sv) == encoding.npos && (isQuick || size <= kMaxSlowBytes);
}

// Appends what there is before a byte that does not belong; whether there is none.
bool appendConverted(std::string& out, const std::string& encoding, std::string_view bytes)
{
    const auto kNone = reinterpret_cast<iconv_t>(std::intptr_t{-1});
    const iconv_t converter = mayConvert(encoding, bytes.size()) ? iconv_open("UTF-8", encoding.c_str()) : kNone;
    if (converter == kNone) {
        return false;
    }
    out.reserve(std::min(3 * bytes.size(), kMaxTextBytes)); // pages that are not used take no memory
    std::array<char, 16384> piece;
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    bool good = true, complete = false;
    while (good && !complete) {
        char* end = piece.data();
        std::size_t room = piece.size();
        const bool flush = left == 0; // some encodings wait with a character for the next one
        const bool stopped = iconv(converter, flush ? nullptr : &in, flush ? nullptr : &left, &end, &room) ==
                             static_cast<std::size_t>(-1);
        out.append(piece.data(), end);
        good = (!stopped || errno == E2BIG) && out.size() <= kMaxTextBytes;
        complete = flush && !stopped;
    }
    iconv_close(converter);
    return good;
}

std::size_t wellFormedSize(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size()) {
        std::uint64_t eight = 0;
        if (text.size() - at >= sizeof eight) {
            std::memcpy(&eight, text.data() + at, sizeof eight);
            if ((eight & 0x8080808080808080) == 0) {
                at += sizeof eight;
                continue;
            }
        }
        const CodePoint point = codePointAt(text, at);
        if (!point.wellFormed || isSurrogate(point.value)) {
            break;
        }
        at += point.length;
    }
    return at;
}

} // namespace

DecodedText::DecodedText(std::string_view bytes)
{
    const std::string encoding = takeEncoding(bytes);
    if (strcasecmp(encoding.c_str(), "UTF-8") == 0) {
        text_ = bytes;
        isWhole_ = true;
    } else {
        isWhole_ = appendConverted(converted_, encoding, bytes);
        text_ = std::string_view(converted_).substr(0, kMaxTextBytes);
    }
    const std::size_t size = wellFormedSize(text_);
    isWhole_ = isWhole_ && size == text_.size();
    text_ = text_.substr(0, size);
}

} // namespace platform::plist
