#include "platform/plist/PropertyListCodec.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace platform::plist {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

// The high half of an object's first byte; the low half is a size or a count.
enum Kind : unsigned {
    kSimple = 0x0,
    kInteger = 0x1,
    kReal = 0x2,
    kDate = 0x3,
    kData = 0x4,
    kAscii = 0x5,
    kUtf16 = 0x6,
    kUid = 0x8,
    kArray = 0xA,
    kDictionary = 0xD,
};

constexpr unsigned kNull = 0x0; // the low halves of simple values
constexpr unsigned kFalse = 0x8;
constexpr unsigned kTrue = 0x9;
constexpr unsigned kCountFollows = 0xF;

// Reading

unsigned byteOf(char c)
{
    return static_cast<unsigned char>(c);
}

// Big-endian; of more than eight bytes the last ones.
std::uint64_t numberFrom(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | byteOf(byte);
    }
    return number;
}

// The count that precedes a content of fifteen items or more: an integer object of one to eight bytes.
std::optional<std::uint64_t> takeCount(std::string_view& bytes)
{
    const unsigned marker = bytes.empty() ? 0 : byteOf(bytes.front());
    const std::size_t size = std::size_t{1} << (marker & 0xF);
    if (marker >> 4 != kInteger || size > 8 || size >= bytes.size()) {
        return std::nullopt;
    }
    const std::uint64_t count = numberFrom(bytes.substr(1, size));
    bytes.remove_prefix(1 + size);
    return count;
}

// One, two and four bytes are unsigned, eight and sixteen signed.
std::optional<Integer> integerFrom(std::string_view bytes)
{
    const std::uint64_t low = numberFrom(bytes);
    if (bytes.size() < 8) {
        return Integer(low);
    }
    const bool lowIsNegative = low >> 63 != 0;
    const std::uint64_t signs = lowIsNegative ? ~std::uint64_t{0} : 0;
    const std::uint64_t high = bytes.size() == 8 ? signs : numberFrom(bytes.substr(0, 8));
    if (bytes.size() > 16 || (high != 0 && high != signs)) {
        return std::nullopt;
    }
    return high == 0 ? Integer(low) : Integer(static_cast<std::int64_t>(low));
}

// A pair of surrogates is one character, a lone one stays in three bytes.
std::string utf8FromUtf16(std::string_view bytes)
{
    const auto unit = [&](std::size_t at) { return static_cast<char32_t>(numberFrom(bytes.substr(at, 2))); };
    std::string text;
    text.reserve(bytes.size() / 2 * 3); // what it may take at most
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const char32_t first = unit(at);
        const char32_t second = at + 2 < bytes.size() ? unit(at + 2) : 0;
        if (first >> 10 == 0xD800 >> 10 && second >> 10 == 0xDC00 >> 10) {
            appendUtf8(text, 0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF));
            at += 2;
        } else {
            appendUtf8(text, first);
        }
    }
    return text;
}

class BinaryReader {
public:
    BinaryReader(std::string_view bytes, const Unfolded& most)
        : bytes_(bytes), values_(most.values), textBytes_(most.textBytes)
    {}

    std::optional<Value> read()
    {
        Value root;
        return readTrailer() && readObject(top_, 0, root) ? std::optional(std::move(root)) : std::nullopt;
    }

private:
    struct Object {
        unsigned kind;
        unsigned low;
        std::string_view content;
    };

    bool readTrailer()
    {
        if (bytes_.size() < kMagic.size() + kTrailerSize || !bytes_.starts_with(kBinaryStart)) {
            return false;
        }
        const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailerSize);
        const std::size_t end = bytes_.size() - kTrailerSize;
        offsetSize_ = byteOf(trailer[6]);
        referenceSize_ = byteOf(trailer[7]);
        objects_ = numberFrom(trailer.substr(8, 8));
        top_ = numberFrom(trailer.substr(16, 8));
        table_ = numberFrom(trailer.substr(24, 8));
        const bool sizesFit = offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8;
        return sizesFit && table_ > kMagic.size() && table_ < end && objects_ <= (end - table_) / offsetSize_;
    }

    // Nothing if the object or its content does not lie in the object area.
    std::optional<Object> objectAt(std::uint64_t number) const
    {
        if (number >= objects_) {
            return std::nullopt;
        }
        const std::uint64_t offset = numberFrom(bytes_.substr(table_ + number * offsetSize_, offsetSize_));
        if (offset < kMagic.size() || offset >= table_) {
            return std::nullopt;
        }
        const unsigned kind = byteOf(bytes_[offset]) >> 4;
        const unsigned low = byteOf(bytes_[offset]) & 0xF;
        std::string_view rest = bytes_.substr(offset + 1, table_ - offset - 1);
        const std::size_t itemSize = itemSizeOf(kind);
        std::optional<std::uint64_t> count;
        switch (kind) {
        case kSimple: count = 0; break;
        case kInteger:
        case kReal:
        case kDate: count = std::uint64_t{1} << low; break;
        case kUid: count = low + 1; break;
        default: count = low == kCountFollows ? takeCount(rest) : low;
        }
        if (!count || *count > rest.size() / itemSize) {
            return std::nullopt;
        }
        return Object{kind, low, rest.substr(0, *count * itemSize)};
    }

    std::size_t itemSizeOf(unsigned kind) const
    {
        switch (kind) {
        case kUtf16: return 2;
        case kArray: return referenceSize_;
        case kDictionary: return 2 * referenceSize_;
        default: return 1;
        }
    }

    static bool set(Value& value, Value content)
    {
        value = std::move(content);
        return true;
    }

    // Recursion ends at kMaxDepth, which also ends a cycle.
    bool readObject(std::uint64_t number, std::size_t depth, Value& value)
    {
        const auto object = objectAt(number);
        if (!object) {
            return false;
        }
        const std::string_view content = object->content;
        switch (object->kind) {
        case kSimple:
            value = object->low == kNull ? Value() : Value(object->low == kTrue);
            return object->low == kNull || object->low == kFalse || object->low == kTrue;
        case kInteger: {
            const auto integer = integerFrom(content);
            return integer && set(value, *integer);
        }
        case kReal:
            value = content.size() == 4 ? Real(std::bit_cast<float>(static_cast<std::uint32_t>(numberFrom(content))))
                                        : Real(std::bit_cast<double>(numberFrom(content)));
            return content.size() == 4 || content.size() == 8;
        case kDate: value = DateSeconds{Real(std::bit_cast<double>(numberFrom(content)))}; return content.size() == 8;
        case kData: return take(textBytes_, content.size()) && set(value, Data{std::string(content)});
        case kAscii: return isAscii(content) && take(textBytes_, content.size()) && set(value, std::string(content));
        case kUtf16: return take(textBytes_, content.size() / 2 * 3) && set(value, utf8FromUtf16(content));
        case kUid: value = Uid{numberFrom(content)}; return content.size() <= 8;
        case kArray: return depth < kMaxDepth && readArray(content, depth + 1, value);
        case kDictionary: return depth < kMaxDepth && readDictionary(content, depth + 1, value);
        default: return false;
        }
    }

    bool readArray(std::string_view references, std::size_t depth, Value& value)
    {
        const std::size_t count = references.size() / referenceSize_;
        if (!take(values_, count)) {
            return false;
        }
        Array array(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (!readObject(referenceAt(references, i), depth, array[i])) {
                return false;
            }
        }
        value = std::move(array);
        return true;
    }

    bool readDictionary(std::string_view references, std::size_t depth, Value& value)
    {
        const std::size_t count = references.size() / referenceSize_ / 2;
        if (!take(values_, 2 * count)) {
            return false;
        }
        Dictionary dictionary;
        dictionary.entries.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            auto& entry = dictionary.entries[i];
            Value key;
            if (!readObject(referenceAt(references, i), depth, key) || !key.asString() ||
                !readObject(referenceAt(references, count + i), depth, entry.second)) {
                return false;
            }
            entry.first = std::move(std::get<std::string>(key.held));
        }
        value = std::move(dictionary);
        return true;
    }

    std::uint64_t referenceAt(std::string_view references, std::size_t i) const
    {
        return numberFrom(references.substr(i * referenceSize_, referenceSize_));
    }

    // A value or text that a file shares is paid for at every use, and before there is room for it, so that a small
    // file cannot unfold into a large tree.
    static bool take(std::size_t& left, std::size_t count)
    {
        const bool enough = count <= left;
        left -= enough ? count : 0;
        return enough;
    }

    std::string_view bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t top_ = 0;
    std::uint64_t table_ = 0; // also where the object area ends
    std::size_t values_;
    std::size_t textBytes_;
};

// Writing

// The smallest power of two of bytes that holds the number.
std::size_t sizeFor(std::uint64_t number)
{
    return number <= 0xFF ? 1 : number <= 0xFFFF ? 2 : number <= 0xFFFFFFFF ? 4 : 8;
}

void appendNumber(std::string& out, std::uint64_t number, std::size_t size)
{
    for (std::size_t i = size; i > 0; --i) {
        out += static_cast<char>(number >> 8 * (i - 1));
    }
}

// An object of a marker and a number of 1, 2, 4 or 8 bytes, or the start of a larger one.
std::string objectOf(Kind kind, std::size_t low, std::uint64_t number = 0, std::size_t size = 0)
{
    std::string object(1, static_cast<char>(kind << 4 | low));
    appendNumber(object, number, size);
    return object;
}

std::string integerOf(std::uint64_t number)
{
    const std::size_t size = sizeFor(number);
    return objectOf(kInteger, static_cast<std::size_t>(std::countr_zero(size)), number, size);
}

std::string countedOf(Kind kind, std::size_t count, std::string_view content = {})
{
    std::string object = objectOf(kind, std::min<std::size_t>(count, kCountFollows));
    if (count >= kCountFollows) {
        object += integerOf(count);
    }
    return object += content;
}

std::string utf16FromUtf8(std::string_view text)
{
    std::string units;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = codePointAt(text, at);
        if (point.value > 0xFFFF) {
            appendNumber(units, 0xD7C0 + (point.value >> 10), 2);
        }
        appendNumber(units, point.value > 0xFFFF ? 0xDC00 | (point.value & 0x3FF) : point.value, 2);
        at += point.length;
    }
    return units;
}

std::string leafOf(Null)
{
    return objectOf(kSimple, kNull);
}

std::string leafOf(bool truth)
{
    return objectOf(kSimple, truth ? kTrue : kFalse);
}

std::string leafOf(Integer number)
{
    if (number.negative) {
        return objectOf(kInteger, 3, number.bits, 8);
    }
    if (number.bits >> 63 == 0) {
        return integerOf(number.bits);
    }
    std::string object = objectOf(kInteger, 4, 0, 8); // eight bytes are signed: what is too large takes sixteen
    appendNumber(object, number.bits, 8);
    return object;
}

std::string leafOf(Real number)
{
    return objectOf(kReal, number.single ? 2 : 3, number.bits, number.single ? 4 : 8);
}

std::string leafOf(DateSeconds date)
{
    return objectOf(kDate, 3, date.seconds.bits, 8);
}

std::string leafOf(const DateText& date)
{
    return leafOf(DateSeconds{Real(secondsOfDate(date.text).value_or(0))});
}

std::string leafOf(Uid uid)
{
    return objectOf(kUid, sizeFor(uid.number) - 1, uid.number, sizeFor(uid.number));
}

std::string leafOf(const Data& data)
{
    return countedOf(kData, data.bytes.size(), data.bytes);
}

std::string leafOf(const std::string& text)
{
    if (isAscii(text)) {
        return countedOf(kAscii, text.size(), text);
    }
    const std::string units = utf16FromUtf8(text);
    return countedOf(kUtf16, units.size() / 2, units);
}

// Numbers the objects first, equal leaves once, then writes them, their offsets and the trailer.
class BinaryWriter {
public:
    std::string write(const Value& root)
    {
        add(root);
        const std::size_t referenceSize = sizeFor(objects_.size() - 1);
        std::string out(kMagic);
        std::vector<std::size_t> offsets;
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            out += object.bytes;
            for (const std::size_t reference : object.references) {
                appendNumber(out, reference, referenceSize);
            }
        }
        const std::size_t table = out.size();
        const std::size_t offsetSize = sizeFor(table);
        for (const std::size_t offset : offsets) {
            appendNumber(out, offset, offsetSize);
        }
        appendNumber(out, offsetSize, 7);
        appendNumber(out, referenceSize, 1);
        appendNumber(out, objects_.size(), 8);
        appendNumber(out, 0, 8); // the root is the first object
        appendNumber(out, table, 8);
        return out;
    }

private:
    struct Object {
        std::string bytes;
        std::vector<std::size_t> references; // behind the bytes
    };

    std::size_t add(const Value& value)
    {
        return std::visit([&](const auto& held) { return addHeld(held); }, value.held);
    }

    std::size_t addHeld(const Array& array)
    {
        Object& object = addObject(countedOf(kArray, array.size()));
        const std::size_t number = objects_.size() - 1;
        for (const Value& value : array) {
            object.references.push_back(add(value));
        }
        return number;
    }

    std::size_t addHeld(const Dictionary& dictionary)
    {
        Object& object = addObject(countedOf(kDictionary, dictionary.size()));
        const std::size_t number = objects_.size() - 1;
        std::vector<std::size_t> values;
        for (const auto& [key, value] : dictionary.entries) {
            object.references.push_back(addHeld(key));
            values.push_back(add(value));
        }
        object.references.insert(object.references.end(), values.begin(), values.end());
        return number;
    }

    // Leaves are equal where their bytes are: 1, 1.0 and true differ, and so do 0.0 and -0.0.
    std::size_t addHeld(const auto& leaf)
    {
        const Object& object = addObject(leafOf(leaf));
        const auto [known, isNew] = leaves_.try_emplace(object.bytes, objects_.size() - 1);
        if (!isNew) {
            objects_.pop_back();
        }
        return known->second;
    }

    Object& addObject(std::string bytes) { return objects_.emplace_back(Object{std::move(bytes), {}}); }

    std::deque<Object> objects_; // which stay where they are
    std::unordered_map<std::string_view, std::size_t> leaves_;
};

} // namespace

std::optional<Value> readBinary(std::string_view bytes, const Unfolded& most)
{
    return BinaryReader(bytes, most).read();
}

std::string writeBinary(const Value& root)
{
    return BinaryWriter().write(root);
}

} // namespace platform::plist
