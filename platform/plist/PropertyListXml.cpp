#include "platform/plist/PropertyListCodec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace platform::plist {

namespace {

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Reading

enum class Element { string, key, dict, array, integer, real, truth, untruth, data, date, plist, none };

constexpr std::array<std::string_view, 11> kElementNames = {"string", "key",   "dict", "array", "integer", "real",
                                                            "true",   "false", "data", "date",  "plist"};

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isBlank(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return isBlank(c); });
}

// Decimal or hexadecimal, signed; blanks may follow the sign.
std::optional<Integer> integerFrom(std::string_view text)
{
    text = trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text = trimmed(text.substr(1));
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

// Base64 in groups of four digits; padding ends a group early, and may be missing at the end. Other ASCII characters
// are passed over.
std::optional<Data> dataFrom(std::string_view text)
{
    Data data;
    data.bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    std::size_t digits = 0;
    for (const char c : text) {
        const std::uint8_t value = kBase64Values[static_cast<unsigned char>(c)];
        if (value < 64) {
            bits = bits << 6 | value;
            if (++digits % 4 != 1) { // from the second digit on, every one completes a byte
                data.bytes += static_cast<char>(bits >> (8 - digits % 4 * 2) % 8);
            }
        } else if (c == '=') {
            digits = 0;
        } else if (static_cast<unsigned char>(c) >= 0x80) {
            return std::nullopt;
        }
    }
    return data;
}

// The character that the reference at the start of the text stands for. Takes the reference off.
std::optional<char32_t> takeReference(std::string_view& text)
{
    constexpr std::array<std::pair<std::string_view, char>, 5> kEntities = {
        {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    for (const auto& [name, character] : kEntities) {
        if (text.starts_with(name)) {
            text.remove_prefix(name.size());
            return character;
        }
    }
    const bool hexadecimal = text.starts_with("&#x");
    if (!text.starts_with("&#")) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    const char* const textEnd = text.data() + text.size();
    const auto [end, error] =
        std::from_chars(text.data() + (hexadecimal ? 3 : 2), textEnd, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || end == textEnd || *end != ';' || number > 0x10FFFF || isSurrogate(number)) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end + 1 - text.data()));
    return number;
}

class XmlReader {
public:
    explicit XmlReader(std::string_view text) : rest_(text) {}

    // What follows the root's end is not looked at.
    std::optional<Value> read()
    {
        while (takeText() && isBlank(text_) && takeTag()) {
            if (!(tag_.isEnd ? end() : start())) {
                return std::nullopt;
            }
            if (hasRoot_ && open_.empty() && !wrapped_) {
                return std::move(root_);
            }
        }
        return std::nullopt;
    }

private:
    struct Tag {
        Element element;
        bool isEnd;   // </name>
        bool isEmpty; // <name/>
    };

    // Goes on to the next tag. text_ is what stands before it, without comments and processing instructions.
    bool takeText(Element element = Element::none)
    {
        joined_.clear();
        while (true) {
            const std::string_view piece = rest_.substr(0, rest_.find('<'));
            rest_.remove_prefix(piece.size());
            if (rest_.size() < 2) {
                return false;
            }
            const bool atTag = rest_[1] != '!' && rest_[1] != '?';
            if (atTag && joined_.empty() && piece.find('&') == piece.npos) {
                text_ = piece;
                return true;
            }
            if (!join(piece, element)) {
                return false;
            }
            if (atTag) {
                text_ = joined_;
                return true;
            }
            if (!takeMarkup()) {
                return false;
            }
        }
    }

    bool join(std::string_view piece, Element element)
    {
        while (true) {
            const std::size_t plain = std::min(piece.find('&'), piece.size());
            joined_ += piece.substr(0, plain);
            piece.remove_prefix(plain);
            if (piece.empty()) {
                return true;
            }
            if (const auto character = takeReference(piece)) {
                appendUtf8(joined_, *character);
            } else if (element == Element::data) { // one more character to be passed over
                piece.remove_prefix(1);
            } else {
                return false;
            }
        }
    }

    // A comment, a processing instruction, a CDATA section, which is text, or the document type.
    bool takeMarkup()
    {
        if (rest_.starts_with("<!--")) {
            return takeUpTo("-->", 4).has_value();
        }
        if (rest_.starts_with("<?")) {
            return takeUpTo("?>", 2).has_value();
        }
        if (rest_.starts_with("<![CDATA[")) {
            const auto section = takeUpTo("]]>", 9);
            joined_ += section.value_or(std::string_view());
            return section.has_value();
        }
        const bool beforeRoot = values_ == 0 && !wrapped_;
        return beforeRoot && rest_.starts_with("<!DOCTYPE") && takeDocumentType();
    }

    // What stands between the start, which is as long as that, and the end.
    std::optional<std::string_view> takeUpTo(std::string_view end, std::size_t startSize)
    {
        const std::size_t at = rest_.find(end, startSize);
        if (at == rest_.npos) {
            return std::nullopt;
        }
        const std::string_view content = rest_.substr(startSize, at - startSize);
        rest_.remove_prefix(at + end.size());
        return content;
    }

    // What it declares is not looked at: only brackets, quotes, comments and processing instructions tell its end.
    bool takeDocumentType()
    {
        int depth = 0;
        while (true) {
            rest_.remove_prefix(std::min(rest_.find_first_of("\"'[]<>"), rest_.size()));
            if (rest_.empty()) {
                return false;
            }
            const char c = rest_.front();
            if (depth > 0 && (rest_.starts_with("<!--") || rest_.starts_with("<?"))) {
                if (!takeMarkup()) {
                    return false;
                }
            } else if (c == '"' || c == '\'') {
                if (!takeUpTo(rest_.substr(0, 1), 1)) {
                    return false;
                }
            } else {
                rest_.remove_prefix(1);
                depth += c == '[' || c == '<' ? 1 : -1;
                if (depth == 0) {
                    return c == '>';
                }
            }
        }
    }

    bool takeTag()
    {
        tag_.isEnd = rest_.starts_with("</");
        rest_.remove_prefix(tag_.isEnd ? 2 : 1);
        const auto name = std::find_if(kElementNames.begin(), kElementNames.end(),
                                       [&](std::string_view known) { return rest_.starts_with(known); });
        if (name == kElementNames.end()) {
            return false;
        }
        tag_.element = static_cast<Element>(name - kElementNames.begin());
        rest_.remove_prefix(name->size());
        return tag_.isEnd ? takeTagEnd() : takeAttributes();
    }

    bool takeTagEnd()
    {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), [](char c) { return isBlank(c); });
        const bool good = end != rest_.end() && *end == '>';
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()) + (good ? 1 : 0));
        return good;
    }

    // They say nothing, but quotes may hide the tag's end.
    bool takeAttributes()
    {
        const char afterName = rest_.empty() ? '\0' : rest_.front();
        if (afterName != '>' && afterName != '/' && !isBlank(afterName)) {
            return false;
        }
        while (true) {
            const auto isStop = [](char c) { return c == '>' || c == '"' || c == '\''; };
            const auto stop = std::find_if(rest_.begin(), rest_.end(), isStop);
            if (stop == rest_.end()) {
                return false;
            }
            const auto at = static_cast<std::size_t>(stop - rest_.begin());
            tag_.isEmpty = at > 0 && rest_[at - 1] == '/';
            rest_.remove_prefix(at);
            if (*stop == '>') {
                rest_.remove_prefix(1);
                return true;
            }
            if (!takeUpTo(rest_.substr(0, 1), 1)) {
                return false;
            }
        }
    }

    bool start()
    {
        const Tag tag = tag_;
        if (tag.element == Element::plist) {
            return values_ == 0 && !tag.isEmpty && !std::exchange(wrapped_, true);
        }
        const bool inDictionary = !open_.empty() && open_.back()->asDictionary();
        const bool wantsKey = inDictionary && !keyWaits_;
        const bool wantsValue = open_.empty() ? !hasRoot_ : !wantsKey;
        if (++values_ > kMaxValues || !(tag.element == Element::key ? wantsKey : wantsValue)) {
            return false;
        }
        switch (tag.element) {
        case Element::array: return startContainer(Array());
        case Element::dict: return startContainer(Dictionary());
        default: return takeContent() && endLeaf(tag.element);
        }
    }

    bool startContainer(Value empty)
    {
        Value& container = place(std::move(empty));
        if (!tag_.isEmpty) {
            open_.push_back(&container); // stays where it is: nothing joins its parent while it is open
        }
        return open_.size() + (tag_.isEmpty ? 1 : 0) <= kMaxDepth;
    }

    // The text of a leaf and its end.
    bool takeContent()
    {
        if (tag_.isEmpty) {
            joined_.clear();
            text_ = {};
            return true;
        }
        const Element element = tag_.element;
        return takeText(element) && takeTag() && tag_.isEnd && tag_.element == element;
    }

    bool end()
    {
        if (open_.empty()) {
            return hasRoot_ && tag_.element == Element::plist && std::exchange(wrapped_, false);
        }
        const Element opened = open_.back()->asArray() ? Element::array : Element::dict;
        open_.pop_back();
        return tag_.element == opened && !keyWaits_;
    }

    bool endLeaf(Element element)
    {
        switch (element) {
        case Element::key:
            open_.back()->asDictionary()->entries.emplace_back(takenText(), Null());
            keyWaits_ = true;
            return true;
        case Element::string: place(takenText()); return true;
        case Element::data: return placeIf(dataFrom(text_));
        case Element::date: return secondsOfDate(text_) && placeIf(std::optional(DateText{takenText()}));
        case Element::integer: return placeIf(integerFrom(text_));
        case Element::real: return placeIf(realFrom(text_));
        default: place(element == Element::truth); return isBlank(text_);
        }
    }

    std::string takenText() { return joined_.empty() ? std::string(text_) : std::move(joined_); }

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

    std::string_view rest_;
    std::string_view text_;
    std::string joined_; // text_, where it is none of the file's as it stands
    Tag tag_ = {};
    bool wrapped_ = false; // in <plist>
    bool hasRoot_ = false;
    bool keyWaits_ = false; // the open dictionary's last entry has no value yet
    std::size_t values_ = 0;
    Value root_;
    std::vector<Value*> open_; // containers
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
        return !isControl && !isSurrogate(value) && value != 0xFFFE && value != 0xFFFF;
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

std::optional<Value> readXml(std::string_view text)
{
    return XmlReader(text).read();
}

std::optional<std::string> writeXml(const Value& root)
{
    return XmlWriter().write(root);
}

} // namespace platform::plist
