#include "platform/plist/PropertyListCodec.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

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
    explicit BinaryReader(std::string_view bytes) : bytes_(bytes) {}

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
    std::size_t values_ = kMaxValues;
    std::size_t textBytes_ = kMaxTextBytes;
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
void appendObject(std::string& out, Kind kind, std::size_t low, std::uint64_t number = 0, std::size_t size = 0)
{
    out += static_cast<char>(kind << 4 | low);
    appendNumber(out, number, size);
}

void appendInteger(std::string& out, std::uint64_t number)
{
    const std::size_t size = sizeFor(number);
    appendObject(out, kInteger, static_cast<std::size_t>(std::countr_zero(size)), number, size);
}

void appendCounted(std::string& out, Kind kind, std::size_t count, std::string_view content = {})
{
    appendObject(out, kind, std::min<std::size_t>(count, kCountFollows));
    if (count >= kCountFollows) {
        appendInteger(out, count);
    }
    out += content;
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

// Numbers the objects first, equal leaves once, then writes them, their offsets and the trailer.
class BinaryWriter {
public:
    std::string write(const Value& root)
    {
        add(root);
        const std::size_t referenceSize = sizeFor(objects_.size() - 1);
        std::string out(kMagic);
        out.reserve(bytes_.size() + references_.size() * referenceSize + objects_.size() * sizeof(Number));
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            out += bytesOf(object);
            for (std::size_t i = 0; i < object.referenceCount; ++i) {
                appendNumber(out, references_[object.firstReference + i], referenceSize);
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
    using Number = std::uint32_t;

    // A piece of bytes_, followed by a piece of references_.
    struct Object {
        std::size_t firstByte;
        std::size_t size;
        std::size_t firstReference = 0;
        std::size_t referenceCount = 0;
    };

    Number add(const Value& value)
    {
        return std::visit([&](const auto& held) { return addHeld(held); }, value.held);
    }

    Number addHeld(const Array& array)
    {
        const std::size_t count = array.size();
        const Number number = addContainer(kArray, count, count);
        const std::size_t first = objects_[number].firstReference;
        for (std::size_t i = 0; i < count; ++i) {
            const Number item = add(array[i]);
            references_[first + i] = item;
        }
        return number;
    }

    Number addHeld(const Dictionary& dictionary)
    {
        const std::size_t count = dictionary.entries.size();
        const Number number = addContainer(kDictionary, count, 2 * count);
        const std::size_t first = objects_[number].firstReference; // of all keys, then of all values
        for (std::size_t i = 0; i < count; ++i) {
            const Number key = addHeld(dictionary.entries[i].first);
            const Number value = add(dictionary.entries[i].second);
            references_[first + i] = key;
            references_[first + count + i] = value;
        }
        return number;
    }

    // Leaves are equal where their bytes are: 1, 1.0 and true differ, and so do 0.0 and -0.0.
    Number addHeld(const auto& leaf)
    {
        const std::size_t start = bytes_.size();
        encode(leaf);
        Number& known = leafSlot(std::string_view(bytes_).substr(start));
        if (known == kNone) {
            known = addObject(start);
        } else {
            bytes_.resize(start);
        }
        return known;
    }

    Number addContainer(Kind kind, std::size_t count, std::size_t referenceCount)
    {
        const std::size_t start = bytes_.size();
        appendCounted(bytes_, kind, count);
        const Number number = addObject(start);
        objects_[number].firstReference = references_.size();
        objects_[number].referenceCount = referenceCount;
        references_.resize(references_.size() + referenceCount);
        return number;
    }

    Number addObject(std::size_t firstByte)
    {
        objects_.push_back({firstByte, bytes_.size() - firstByte});
        return static_cast<Number>(objects_.size() - 1);
    }

    std::string_view bytesOf(const Object& object) const
    {
        return std::string_view(bytes_).substr(object.firstByte, object.size);
    }

    // Where the number of the leaf with these bytes stands or belongs. The table is at most half full: there may be
    // one leaf more after this than there are objects now.
    Number& leafSlot(std::string_view bytes)
    {
        if (2 * (objects_.size() + 1) > leaves_.size()) {
            growLeaves();
        }
        const std::size_t mask = leaves_.size() - 1;
        std::size_t slot = std::hash<std::string_view>()(bytes) & mask;
        while (leaves_[slot] != kNone && bytesOf(objects_[leaves_[slot]]) != bytes) {
            slot = (slot + 1) & mask;
        }
        return leaves_[slot];
    }

    void growLeaves()
    {
        const std::vector<Number> former = std::exchange(leaves_, {});
        leaves_.assign(std::max<std::size_t>(64, 4 * former.size()), kNone);
        const std::size_t mask = leaves_.size() - 1;
        for (const Number number : former) {
            if (number == kNone) {
                continue;
            }
            std::size_t slot = std::hash<std::string_view>()(bytesOf(objects_[number])) & mask;
            while (leaves_[slot] != kNone) {
                slot = (slot + 1) & mask;
            }
            leaves_[slot] = number;
        }
    }

    void encode(Null) { appendObject(bytes_, kSimple, kNull); }
    void encode(bool truth) { appendObject(bytes_, kSimple, truth ? kTrue : kFalse); }
    void encode(Real number) { appendObject(bytes_, kReal, number.single ? 2 : 3, number.bits, number.single ? 4 : 8); }
    void encode(DateSeconds date) { appendObject(bytes_, kDate, 3, date.seconds.bits, 8); }
    void encode(const DateText& date) { encode(DateSeconds{Real(secondsOfDate(date.text).value_or(0))}); }
    void encode(Uid uid) { appendObject(bytes_, kUid, sizeFor(uid.number) - 1, uid.number, sizeFor(uid.number)); }
    void encode(const Data& data) { appendCounted(bytes_, kData, data.bytes.size(), data.bytes); }
    void encode(Integer number)
    {
        if (number.negative) {
            appendObject(bytes_, kInteger, 3, number.bits, 8);
        } else if (number.bits >> 63 == 0) {
            appendInteger(bytes_, number.bits);
        } else { // eight bytes are signed: what is too large takes sixteen
            appendObject(bytes_, kInteger, 4, 0, 8);
            appendNumber(bytes_, number.bits, 8);
        }
    }
    void encode(const std::string& text)
    {
        if (isAscii(text)) {
            appendCounted(bytes_, kAscii, text.size(), text);
            return;
        }
        const std::string units = utf16FromUtf8(text);
        appendCounted(bytes_, kUtf16, units.size() / 2, units);
    }

    static constexpr Number kNone = static_cast<Number>(-1);

    std::string bytes_;
    std::vector<Number> references_;
    std::vector<Object> objects_;
    std::vector<Number> leaves_; // hashed by the leaf's bytes; as many as a power of two
};

} // namespace

std::optional<Value> readBinary(std::string_view bytes)
{
    return BinaryReader(bytes).read();
}

std::string writeBinary(const Value& root)
{
    return BinaryWriter().write(root);
}

} // namespace platform::plist
