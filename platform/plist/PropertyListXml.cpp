#include "platform/plist/PropertyListCodec.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <functional>
#include <memory>

namespace platform::plist {

namespace {

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Reading

enum class Element { string, key, dict, array, integer, real, truth, untruth, data, date, plist, none };

constexpr std::array<std::string_view, 11> kElementNames = {"string", "key",   "dict", "array", "integer", "real",
                                                            "true",   "false", "data", "date",  "plist"};

Element elementNamed(std::string_view name)
{
    return static_cast<Element>(std::find(kElementNames.begin(), kElementNames.end(), name) - kElementNames.begin());
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Decimal or hexadecimal, signed.
std::optional<Integer> integerFrom(std::string_view text)
{
    text = trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude, hexadecimal ? 16 : 10);
    const bool complete = result.ec == std::errc() && result.ptr == text.data() + text.size();
    if (!complete || (negative && magnitude > std::uint64_t{1} << 63)) {
        return std::nullopt;
    }
    return negative ? Integer(static_cast<std::int64_t>(~magnitude + 1)) : Integer(magnitude);
}

constexpr std::array<std::uint8_t, 256> kBase64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(64); // no digit
    for (std::size_t i = 0; i < kBase64Digits.size(); ++i) {
        values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

// Base64 with blanks anywhere; the padding may be missing.
std::optional<Data> dataFrom(std::string_view text)
{
    Data data;
    data.bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0, padding = 0;
    for (const char c : text) {
        const std::uint8_t value = kBase64Values[static_cast<unsigned char>(c)];
        if (value < 64 && padding == 0) {
            bits = bits << 6 | value;
            if (++digits % 4 != 1) { // from the second digit on, every one completes a byte
                data.bytes += static_cast<char>(bits >> (8 - digits % 4 * 2) % 8);
            }
        } else if (c == '=') {
            ++padding;
        } else if (!isBlank(c)) {
            return std::nullopt;
        }
    }
    const std::size_t left = digits % 4;
    const bool complete = left != 1 && (padding == 0 || (left != 0 && left + padding == 4));
    return complete ? std::optional(std::move(data)) : std::nullopt;
}

// expat gets the file in pieces. It holds a tag or a comment until it is complete, and every name of an attribute, so
// a long one and too many must find no room.
constexpr std::size_t kPieceBytes = std::size_t{2} << 20;
constexpr std::size_t kMaxBlockBytes = 3 * kPieceBytes;

// Older versions of expat join a high surrogate with whatever unit follows it, which would change a text.
bool surrogatesArePaired(std::string_view utf16)
{
    const bool bigEndian = utf16.front() == '\0' || utf16.front() == '\xFE';
    bool afterHigh = false;
    for (std::size_t i = bigEndian ? 0 : 1; i < utf16.size(); i += 2) {
        const int kind = static_cast<unsigned char>(utf16[i]) & 0xFC;
        if (afterHigh != (kind == 0xDC)) {
            return false;
        }
        afterHigh = kind == 0xD8;
    }
    return !afterHigh;
}

// Builds the values from expat's events.
class XmlReader {
public:
    std::optional<Value> read(std::string_view bytes)
    {
        // UTF-16 shows in its first two bytes; some editors leave the declaration of another encoding.
        const bool utf16 = bytes.substr(0, 2).find_first_of(std::string_view("\0\xFE\xFF", 3)) != bytes.npos;
        if (utf16 && !surrogatesArePaired(bytes)) {
            return std::nullopt;
        }
        const XML_Memory_Handling_Suite memory = {
            [](std::size_t size) { return size > kMaxBlockBytes ? nullptr : std::malloc(size); },
            [](void* block, std::size_t size) { return size > kMaxBlockBytes ? nullptr : std::realloc(block, size); },
            std::free};
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate_MM(utf16 ? "UTF-16" : nullptr, &memory, nullptr), XML_ParserFree);
        if (!parser) {
            return std::nullopt;
        }
        parser_ = parser.get();
        setHandlers();
        // Blank lines above the declaration are common and harmless, but not XML.
        bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
        return parseInPieces(bytes) && hasRoot_ ? std::optional(std::move(root_)) : std::nullopt;
    }

private:
    void setHandlers()
    {
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, onStart, onEnd);
        XML_SetCharacterDataHandler(parser_, onText);
        XML_SetStartDoctypeDeclHandler(parser_, onDocumentType);
        XML_SetSkippedEntityHandler(parser_, onSkippedEntity);
    }

    static void onStart(void* self, const char* name, const char**)
    {
        run(self, [&](XmlReader& reader) { return reader.start(elementNamed(name)); });
    }
    static void onEnd(void* self, const char*) { run(self, &XmlReader::end); }
    static void onText(void* self, const char* text, int length)
    {
        run(self, [&](XmlReader& reader) { return reader.text({text, static_cast<std::size_t>(length)}); });
    }
    // Entities and default attributes are declared in the document type; an undeclared entity may be skipped.
    static void onDocumentType(void* self, const char*, const char*, const char*, int hasDeclarations)
    {
        run(self, [&](XmlReader&) { return !hasDeclarations; });
    }
    static void onSkippedEntity(void* self, const char*, int)
    {
        run(self, [](XmlReader&) { return false; });
    }

    // Stops expat where a step fails; it may report the end of the element all the same.
    static void run(void* self, auto step)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        if (!reader.refused_ && !std::invoke(step, reader)) {
            reader.refused_ = true;
            XML_StopParser(reader.parser_, XML_FALSE);
        }
    }

    bool parseInPieces(std::string_view bytes)
    {
        do {
            const std::string_view piece = bytes.substr(0, kPieceBytes);
            bytes.remove_prefix(piece.size());
            if (XML_Parse(parser_, piece.data(), static_cast<int>(piece.size()), bytes.empty()) != XML_STATUS_OK) {
                return false;
            }
        } while (!bytes.empty());
        return !refused_;
    }

    bool start(Element element)
    {
        if (leaf_ != Element::none || element == Element::none) {
            return false;
        }
        if (element == Element::plist) {
            return open_.empty() && !hasRoot_ && !std::exchange(wrapped_, true);
        }
        const bool inDictionary = !open_.empty() && open_.back()->asDictionary();
        const bool wantsKey = inDictionary && !keyWaits_;
        const bool wantsValue = open_.empty() ? !hasRoot_ : !wantsKey;
        if (++values_ > kMaxValues || !(element == Element::key ? wantsKey : wantsValue)) {
            return false;
        }
        if (element != Element::array && element != Element::dict) {
            leaf_ = element;
            return true;
        }
        Value& container = place(element == Element::array ? Value(Array()) : Value(Dictionary()));
        open_.push_back(&container); // stays where it is: nothing joins its parent while it is open
        return open_.size() <= kMaxDepth;
    }

    bool text(std::string_view piece)
    {
        constexpr int kMaxPieces = 8'000'000; // bounds the time: every line feed is a piece of its own
        const bool takesText = leaf_ != Element::none && leaf_ != Element::truth && leaf_ != Element::untruth;
        text_.append(takesText ? piece : std::string_view());
        return ++pieces_ <= kMaxPieces && (takesText || std::all_of(piece.begin(), piece.end(), isBlank));
    }

    bool end()
    {
        if (leaf_ != Element::none) {
            const bool good = endLeaf(std::exchange(leaf_, Element::none));
            text_.clear();
            return good;
        }
        if (!open_.empty()) { // else it is </plist>
            open_.pop_back();
        }
        return !keyWaits_;
    }

    bool endLeaf(Element element)
    {
        switch (element) {
        case Element::key:
            open_.back()->asDictionary()->entries.emplace_back(text_, Null());
            keyWaits_ = true;
            return true;
        case Element::string: return placeIf(std::optional(text_));
        case Element::data: return placeIf(dataFrom(text_));
        case Element::date: return secondsOfDate(text_) && placeIf(std::optional(DateText{text_}));
        case Element::integer: return placeIf(integerFrom(text_));
        case Element::real: return placeIf(realFrom(text_));
        default: return placeIf(std::optional(element == Element::truth));
        }
    }

    template <typename T>
    bool placeIf(std::optional<T> value)
    {
        if (value) {
            place(std::move(*value));
        }
        return value.has_value();
    }

    Value& place(Value value)
    {
        keyWaits_ = false;
        if (open_.empty()) {
            hasRoot_ = true;
            return root_ = std::move(value);
        }
        if (Array* array = std::get_if<Array>(&open_.back()->held)) {
            return array->emplace_back(std::move(value));
        }
        return open_.back()->asDictionary()->entries.back().second = std::move(value);
    }

    XML_Parser parser_ = nullptr;
    bool refused_ = false;
    bool wrapped_ = false;
    bool hasRoot_ = false;
    bool keyWaits_ = false; // the open dictionary's last entry has no value yet
    std::size_t values_ = 0;
    int pieces_ = 0;
    Value root_;
    std::vector<Value*> open_; // containers
    Element leaf_ = Element::none;
    std::string text_; // of the open leaf
};

// Writing

constexpr std::string_view kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                     "<plist version=\"1.0\">\n";
constexpr std::string_view kFooter = "</plist>\n";

// Every member gives false where XML cannot hold the value.
class XmlWriter {
public:
    std::optional<std::string> write(const Value& root)
    {
        out_ = kHeader;
        if (!put(root, 0)) {
            return std::nullopt;
        }
        out_ += kFooter;
        return std::move(out_);
    }

private:
    bool put(const Value& value, std::size_t level)
    {
        indent(level);
        const bool good = std::visit([&](const auto& held) { return putHeld(held, level); }, value.held);
        out_ += '\n';
        return good;
    }

    bool putHeld(Null, std::size_t) { return false; }
    bool putHeld(Uid, std::size_t) { return false; }
    bool putHeld(bool truth, std::size_t) { return putRaw(truth ? "<true/>" : "<false/>"); }
    bool putHeld(Integer number, std::size_t) { return putElement("integer", number.toString()); }
    bool putHeld(const std::string& text, std::size_t) { return putElement("string", text); }
    bool putHeld(const DateText& date, std::size_t) { return putElement("date", date.text); }

    bool putHeld(Real number, std::size_t)
    {
        const std::string text = textOf(number.toDouble());
        const bool oddNan = text.ends_with("nan") && realFrom(text) != Real(number.toDouble());
        return !oddNan && putElement("real", text);
    }

    bool putHeld(DateSeconds date, std::size_t)
    {
        const auto text = dateOfSeconds(date.seconds);
        return text && putElement("date", *text);
    }

    bool putHeld(const Data& data, std::size_t level)
    {
        const std::size_t bytesPerLine = (76 - 8 * std::min<std::size_t>(level, 4)) / 4 * 3; // 76 columns, as usual
        out_ += "<data>\n";
        for (std::size_t at = 0; at < data.bytes.size(); at += bytesPerLine) {
            indent(level);
            putBase64(std::string_view(data.bytes).substr(at, bytesPerLine));
            out_ += '\n';
        }
        indent(level);
        return putRaw("</data>");
    }

    bool putHeld(const Array& array, std::size_t level)
    {
        if (array.empty()) {
            return putRaw("<array/>");
        }
        out_ += "<array>\n";
        for (const Value& value : array) {
            if (!put(value, level + 1)) {
                return false;
            }
        }
        indent(level);
        return putRaw("</array>");
    }

    bool putHeld(const Dictionary& dictionary, std::size_t level)
    {
        if (dictionary.entries.empty()) {
            return putRaw("<dict/>");
        }
        out_ += "<dict>\n";
        for (const auto& [key, value] : dictionary.entries) {
            indent(level + 1);
            if (!putElement("key", key) || !putRaw("\n") || !put(value, level + 1)) {
                return false;
            }
        }
        indent(level);
        return putRaw("</dict>");
    }

    bool putRaw(std::string_view text)
    {
        out_ += text;
        return true;
    }

    bool putElement(std::string_view name, std::string_view text)
    {
        out_.append("<").append(name).append(">");
        const bool good = putText(text);
        out_.append("</").append(name).append(">");
        return good;
    }

    bool putText(std::string_view text)
    {
        const auto isPlain = [](char c) { return c >= ' ' && c < '\x7F' && c != '&' && c != '<' && c != '>'; };
        while (!text.empty()) {
            const auto plainEnd = std::find_if_not(text.begin(), text.end(), isPlain);
            const auto plain = static_cast<std::size_t>(plainEnd - text.begin());
            out_ += text.substr(0, plain);
            text.remove_prefix(plain);
            if (text.empty()) {
                return true;
            }
            const CodePoint point = codePointAt(text, 0);
            if (!isXmlCharacter(point.value)) {
                return false;
            }
            switch (point.value) {
            case '&': out_ += "&amp;"; break;
            case '<': out_ += "&lt;"; break;
            case '>': out_ += "&gt;"; break;
            case '\r': out_ += "&#13;"; break; // as it is, it would be read as a line feed
            default: out_ += point.wellFormed ? text.substr(0, point.length) : "\xEF\xBF\xBD"; // U+FFFD
            }
            text.remove_prefix(point.length);
        }
        return true;
    }

    static bool isXmlCharacter(char32_t value)
    {
        const bool isControl = value < 0x20 && value != '\t' && value != '\n' && value != '\r';
        const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
        return !isControl && !isSurrogate && value != 0xFFFE && value != 0xFFFF;
    }

    void putBase64(std::string_view bytes)
    {
        for (std::size_t at = 0; at < bytes.size(); at += 3) {
            const std::string_view group = bytes.substr(at, 3);
            std::uint32_t bits = 0;
            for (std::size_t i = 0; i < 3; ++i) {
                bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0u);
            }
            for (std::size_t i = 0; i < 4; ++i) {
                out_ += i <= group.size() ? kBase64Digits[bits >> (18 - 6 * i) & 63] : '=';
            }
        }
    }

    // Very deep levels stand below each other, so that a file of many levels does not become mostly tabs.
    void indent(std::size_t level) { out_.append(std::min<std::size_t>(level, 16), '\t'); }

    std::string out_;
};

} // namespace

std::optional<Value> readXml(std::string_view bytes)
{
    return XmlReader().read(bytes);
}

std::optional<std::string> writeXml(const Value& root)
{
    return XmlWriter().write(root);
}

} // namespace platform::plist
