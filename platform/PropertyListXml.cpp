#include "platform/PropertyListCodec.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdlib>

namespace platform::plist {

namespace {

// Reading

enum class Element { none, plist, array, dict, key, string, integer, real, truth, untruth, data, date };

Element elementNamed(std::string_view name)
{
    struct Named {
        std::string_view name;
        Element element;
    };
    constexpr std::array<Named, 11> kElements = {{{"string", Element::string},
                                                  {"key", Element::key},
                                                  {"dict", Element::dict},
                                                  {"integer", Element::integer},
                                                  {"array", Element::array},
                                                  {"true", Element::truth},
                                                  {"false", Element::untruth},
                                                  {"real", Element::real},
                                                  {"data", Element::data},
                                                  {"date", Element::date},
                                                  {"plist", Element::plist}}};
    for (const Named& named : kElements) {
        if (named.name == name) {
            return named.element;
        }
    }
    return Element::none;
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
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    if (!negative) {
        return Integer(magnitude);
    }
    if (magnitude > std::uint64_t{1} << 63) {
        return std::nullopt;
    }
    return Integer(static_cast<std::int64_t>(~magnitude + 1));
}

// Decimal, with or without exponent; "inf", "infinity" and "nan" in any case, signed.
std::optional<Real> realFrom(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool hasPayload = text.ends_with(')'); // from_chars takes "nan(...)"
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || hasPayload) {
        return std::nullopt;
    }
    return Real(number);
}

// Base64 as it comes in, in pieces, with blanks anywhere.
class Base64Decoder {
public:
    // Appends the bytes of a piece; false at a character that does not belong there.
    bool decode(std::string_view piece, std::string& out)
    {
        const std::size_t start = out.size();
        out.resize(start + piece.size() / 4 * 3 + 4);
        char* to = out.data() + start;
        // Copies: for all the compiler knows, what is written through `to` might be a member.
        std::uint32_t bits = bits_;
        unsigned held = held_;
        bool good = true;
        for (const char c : piece) {
            const std::uint8_t sextet = kSextets[static_cast<unsigned char>(c)];
            if (sextet < 64 && padding_ == 0) {
                bits = bits << 6 | sextet;
                if (++held == 4) {
                    *to++ = static_cast<char>(bits >> 16);
                    *to++ = static_cast<char>(bits >> 8);
                    *to++ = static_cast<char>(bits);
                    held = 0;
                }
            } else if (c == '=') {
                ++padding_;
            } else if (!isBlank(c)) {
                good = false;
                break;
            }
        }
        bits_ = bits;
        held_ = held;
        out.resize(static_cast<std::size_t>(to - out.data()));
        return good;
    }

    // The one or two bytes of an incomplete last group, whose padding may be missing. Ready for the next data.
    bool finish(std::string& out)
    {
        const unsigned held = std::exchange(held_, 0u);
        const unsigned padding = std::exchange(padding_, 0u);
        if (held == 1 || (padding != 0 && (held == 0 || held + padding != 4))) {
            return false;
        }
        if (held >= 2) {
            out.push_back(static_cast<char>(held == 2 ? bits_ >> 4 : bits_ >> 10));
        }
        if (held == 3) {
            out.push_back(static_cast<char>(bits_ >> 2));
        }
        return true;
    }

private:
    static constexpr std::array<std::uint8_t, 256> kSextets = [] {
        std::array<std::uint8_t, 256> sextets{};
        sextets.fill(255);
        const std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (std::size_t i = 0; i < digits.size(); ++i) {
            sextets[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
        }
        return sextets;
    }();

    std::uint32_t bits_ = 0;
    unsigned held_ = 0; // sextets
    unsigned padding_ = 0;
};

// expat gets the file in pieces. It holds a tag or a comment until it is complete, so a long one must find no room
// rather than be copied and looked through again and again; texts need not be complete.
constexpr std::size_t kPieceBytes = std::size_t{2} << 20;
constexpr std::size_t kMaxBlockBytes = 2 * kPieceBytes;
void* allocateBounded(std::size_t size)
{
    return size > kMaxBlockBytes ? nullptr : std::malloc(size);
}
void* reallocateBounded(void* block, std::size_t size)
{
    return size > kMaxBlockBytes ? nullptr : std::realloc(block, size);
}

// Builds the values from expat's events. The stack of open containers is its own, so depth costs no stack.
class XmlReader {
public:
    // `encoding` overrides what the file declares; null leaves it to the file.
    std::optional<Value> read(std::string_view bytes, const char* encoding)
    {
        const XML_Memory_Handling_Suite memory = {allocateBounded, reallocateBounded, std::free};
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate_MM(encoding, &memory, nullptr), XML_ParserFree);
        if (!parser) {
            return std::nullopt;
        }
        parser_ = parser.get();
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, onStart, onEnd);
        XML_SetCharacterDataHandler(parser_, onText);
        XML_SetCommentHandler(parser_, onComment);
        XML_SetProcessingInstructionHandler(parser_, onInstruction);
        XML_SetDefaultHandler(parser_, onOther);
        XML_SetEntityDeclHandler(parser_, onEntity);
        XML_SetSkippedEntityHandler(parser_, onSkippedEntity);
        XML_SetAttlistDeclHandler(parser_, onAttributeDeclaration);
        return parseInPieces(bytes) ? std::move(root_) : std::nullopt;
    }

private:
    struct Container {
        Element element;
        Array array;
        Dictionary dictionary;
        std::optional<std::string> key; // waits for its value
    };

    static void onStart(void* self, const char* name, const char** attributes)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        std::uint64_t count = 1;
        for (; *attributes; attributes += 2) {
            ++count;
        }
        reader.accept(reader.takeEvents(count) && reader.start(elementNamed(name)));
    }
    static void onEnd(void* self, const char*)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        reader.accept(reader.end());
    }
    static void onText(void* self, const char* text, int length)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        reader.accept(reader.takeEvents(1) && reader.text({text, static_cast<std::size_t>(length)}));
    }
    static void onComment(void* self, const char*) { onOther(self, "", 0); }
    static void onInstruction(void* self, const char*, const char*) { onOther(self, "", 0); }
    // What has no handler, the parts of the document type among it. expat steps over a parameter entity ("%name;")
    // in silence.
    static void onOther(void* self, const char* text, int length)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        const bool isEntity = length > 2 && text[0] == '%' && text[length - 1] == ';';
        reader.accept(reader.takeEvents(1) && !isEntity);
    }
    static void onEntity(void* self, const char*, int, const char*, int, const char*, const char*, const char*,
                         const char*)
    {
        static_cast<XmlReader*>(self)->accept(false);
    }
    static void onSkippedEntity(void* self, const char*, int) { static_cast<XmlReader*>(self)->accept(false); }
    // expat walks the declared attributes at every element: a few are a copy of the usual document type, many are an
    // attack.
    static void onAttributeDeclaration(void* self, const char*, const char*, const char*, const char*, int)
    {
        auto& reader = *static_cast<XmlReader*>(self);
        reader.accept(++reader.attributeDeclarations_ <= 64);
    }

    bool parseInPieces(std::string_view bytes)
    {
        while (!refused_) {
            const std::string_view piece = bytes.substr(0, kPieceBytes);
            bytes.remove_prefix(piece.size());
            if (XML_Parse(parser_, piece.data(), static_cast<int>(piece.size()), bytes.empty()) != XML_STATUS_OK) {
                return false;
            }
            if (bytes.empty()) {
                return !refused_;
            }
        }
        return false;
    }

    void accept(bool good)
    {
        if (!good && !refused_) {
            refused_ = true;
            XML_StopParser(parser_, XML_FALSE);
        }
    }

    // Bounds the time of files that make expat report endless trifles.
    bool takeEvents(std::uint64_t count)
    {
        constexpr std::uint64_t kMaxEvents = 8'000'000;
        events_ += count;
        return !refused_ && events_ <= kMaxEvents;
    }

    bool expectsValue() const
    {
        if (open_.empty()) {
            return !root_;
        }
        return open_.back().element == Element::array || open_.back().key;
    }

    bool start(Element element)
    {
        if (leaf_ != Element::none) {
            return false;
        }
        switch (element) {
        case Element::none: return false;
        case Element::plist: return open_.empty() && !root_ && !std::exchange(wrapped_, true);
        case Element::key:
            leaf_ = element;
            return !open_.empty() && open_.back().element == Element::dict && !open_.back().key &&
                   budget_.takeValues(1);
        case Element::array:
        case Element::dict:
            if (!expectsValue() || open_.size() >= kMaxDepth || !budget_.takeValues(1)) {
                return false;
            }
            open_.push_back({element, {}, {}, {}});
            return true;
        default: leaf_ = element; return expectsValue() && budget_.takeValues(1);
        }
    }

    bool text(std::string_view piece)
    {
        switch (leaf_) {
        case Element::none:
        case Element::truth:
        case Element::untruth: return std::all_of(piece.begin(), piece.end(), isBlank);
        case Element::data: {
            const std::size_t before = text_.size();
            return base64_.decode(piece, text_) && budget_.takeBytes(text_.size() - before);
        }
        default:
            if (!budget_.takeBytes(piece.size())) {
                return false;
            }
            text_.append(piece);
            return true;
        }
    }

    bool end()
    {
        if (refused_) {
            return false;
        }
        if (leaf_ != Element::none) {
            const bool good = endLeaf(std::exchange(leaf_, Element::none));
            text_.clear();
            return good;
        }
        if (open_.empty()) {
            return root_.has_value(); // </plist>
        }
        Container container = std::move(open_.back());
        open_.pop_back();
        if (container.element == Element::array) {
            return place(std::move(container.array));
        }
        return !container.key && place(std::move(container.dictionary));
    }

    bool endLeaf(Element element)
    {
        switch (element) {
        case Element::key: open_.back().key = takeText(); return budget_.takeText(0);
        case Element::string: return budget_.takeText(0) && place(takeText());
        case Element::data: return base64_.finish(text_) && budget_.takeText(0) && place(Data{takeText()});
        case Element::date: return budget_.takeDateText(0) && placeIf(Date::fromText(text_));
        case Element::integer: return placeIf(integerFrom(text_));
        case Element::real: return placeIf(realFrom(text_));
        default: return place(element == Element::truth);
        }
    }

    // A short text is copied, so that it takes no more room than it needs; a long one is handed on.
    std::string takeText()
    {
        constexpr std::size_t kLong = 4096;
        return text_.size() > kLong ? std::exchange(text_, {}) : text_;
    }

    bool place(Value value)
    {
        if (open_.empty()) {
            root_ = std::move(value);
            return true;
        }
        Container& container = open_.back();
        if (container.element == Element::array) {
            container.array.push_back(std::move(value));
        } else {
            container.dictionary.append(std::move(*container.key), std::move(value));
            container.key.reset();
        }
        return true;
    }

    template <typename T>
    bool placeIf(std::optional<T> value)
    {
        return value && place(std::move(*value));
    }

    XML_Parser parser_ = nullptr;
    Budget budget_;
    std::uint64_t events_ = 0;
    int attributeDeclarations_ = 0;
    bool refused_ = false;
    bool wrapped_ = false;
    std::optional<Value> root_;
    std::vector<Container> open_;
    Element leaf_ = Element::none;
    std::string text_; // of the open leaf
    Base64Decoder base64_;
};

// Writing

constexpr std::string_view kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                     "<plist version=\"1.0\">\n";
constexpr std::string_view kFooter = "</plist>\n";

// Whether a byte stands in a text of XML as it is.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t c = 0x20; c < 0x80; ++c) {
        plain[c] = c != '&' && c != '<' && c != '>';
    }
    plain['\t'] = plain['\n'] = true;
    return plain;
}();

// Empty if XML has no way to write the character.
std::string_view escapeOf(char c)
{
    switch (c) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '\r': return "&#13;"; // as it is, it would be read as a line feed
    default: return {};
    }
}

void appendBase64(std::string& out, std::string_view bytes)
{
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(3, bytes.size()))) {
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u);
        }
        const std::array<char, 4> group = {kDigits[bits >> 18], kDigits[bits >> 12 & 63],
                                           bytes.size() > 1 ? kDigits[bits >> 6 & 63] : '=',
                                           bytes.size() > 2 ? kDigits[bits & 63] : '='};
        out.append(group.data(), group.size());
    }
}

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
        const bool good = std::visit([&](const auto& held) { return putHeld(held, level); }, value.storage());
        out_ += '\n';
        return good;
    }

    bool putHeld(Null, std::size_t) { return false; }
    bool putHeld(Uid, std::size_t) { return false; }
    bool putHeld(bool truth, std::size_t) { return putRaw(truth ? "<true/>" : "<false/>", "", ""); }
    bool putHeld(Integer number, std::size_t) { return putRaw("<integer>", number.toString(), "</integer>"); }

    bool putHeld(Real number, std::size_t)
    {
        constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
        const auto bits = std::bit_cast<std::uint64_t>(number.toDouble());
        const std::string_view sign = bits & kSign ? "-" : "+";
        if ((bits & ~kSign) == 0x7FF0000000000000) {
            return putRaw("<real>", sign, "infinity</real>");
        }
        if ((bits & ~kSign) == 0x7FF8000000000000) {
            return putRaw("<real>", sign == "-" ? "-nan" : "nan", "</real>");
        }
        const bool oddNan = (bits & ~kSign) > 0x7FF0000000000000;
        return !oddNan && putRaw("<real>", Real(number.toDouble()).toString(), "</real>");
    }

    bool putHeld(const std::string& text, std::size_t)
    {
        out_ += "<string>";
        const bool good = putText(text);
        out_ += "</string>";
        return good;
    }

    bool putHeld(const Date& date, std::size_t)
    {
        const auto text = date.toText();
        return text && putRaw("<date>", *text, "</date>");
    }

    bool putHeld(const Data& data, std::size_t level)
    {
        const std::size_t tabs = std::min(level, kDeepestIndent);
        const std::size_t width = std::max<std::size_t>(40, 76 - 8 * std::min<std::size_t>(tabs, 9));
        const std::string_view bytes = data.bytes;
        const std::size_t bytesPerLine = width / 4 * 3;
        out_ += "<data>\n";
        for (std::size_t at = 0; at < bytes.size(); at += bytesPerLine) {
            indent(level);
            appendBase64(out_, bytes.substr(at, bytesPerLine));
            out_ += '\n';
        }
        indent(level);
        out_ += "</data>";
        return true;
    }

    bool putHeld(const Array& array, std::size_t level)
    {
        if (array.empty()) {
            return putRaw("<array/>", "", "");
        }
        out_ += "<array>\n";
        for (const Value& value : array) {
            if (!put(value, level + 1)) {
                return false;
            }
        }
        indent(level);
        return putRaw("</array>", "", "");
    }

    bool putHeld(const Dictionary& dictionary, std::size_t level)
    {
        if (dictionary.empty()) {
            return putRaw("<dict/>", "", "");
        }
        out_ += "<dict>\n";
        for (const auto& [key, value] : dictionary) {
            indent(level + 1);
            out_ += "<key>";
            if (!putText(key)) {
                return false;
            }
            out_ += "</key>\n";
            if (!put(value, level + 1)) {
                return false;
            }
        }
        indent(level);
        return putRaw("</dict>", "", "");
    }

    bool putRaw(std::string_view before, std::string_view middle, std::string_view after)
    {
        out_.append(before).append(middle).append(after);
        return true;
    }

    bool putText(std::string_view text)
    {
        std::size_t written = 0;
        for (std::size_t at = 0; at < text.size();) {
            const auto byte = static_cast<unsigned char>(text[at]);
            if (kPlain[byte]) {
                ++at;
                continue;
            }
            std::string_view instead = "\xEF\xBF\xBD"; // U+FFFD
            if (byte < 0x80) {
                instead = escapeOf(text[at]);
                if (instead.empty()) {
                    return false;
                }
            } else if (const CodePoint point = codePointAt(text, at); point.wellFormed) {
                if (isSurrogate(point.value) || point.value == 0xFFFE || point.value == 0xFFFF) {
                    return false;
                }
                at += point.length;
                continue;
            }
            out_.append(text.substr(written, at - written)).append(instead);
            written = ++at;
        }
        out_.append(text.substr(written));
        return true;
    }

    void indent(std::size_t level) { out_.append(std::min(level, kDeepestIndent), '\t'); }

    // Deeper levels stand below each other, so that a file of many levels does not become mostly tabs.
    static constexpr std::size_t kDeepestIndent = 16;

    std::string out_;
};

} // namespace

std::optional<Value> readXml(std::string_view bytes)
{
    const bool bigEndian = bytes.starts_with("\xFE\xFF") || bytes.starts_with(std::string_view("\0<", 2));
    const bool littleEndian = bytes.starts_with("\xFF\xFE") || bytes.starts_with(std::string_view("<\0", 2));
    if (bigEndian || littleEndian) {
        return XmlReader().read(bytes, bigEndian ? "UTF-16BE" : "UTF-16LE");
    }
    const char* encoding = nullptr;
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
        encoding = "UTF-8";
    }
    // Blank lines above the declaration are common and harmless, but not XML.
    const auto first = std::find_if_not(bytes.begin(), bytes.end(), isBlank);
    bytes.remove_prefix(static_cast<std::size_t>(first - bytes.begin()));
    return XmlReader().read(bytes, encoding);
}

std::optional<std::string> writeXml(const Value& root)
{
    return XmlWriter().write(root);
}

} // namespace platform::plist
