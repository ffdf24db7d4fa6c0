#include "platform/PropertyListCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>

namespace platform::plist {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

// The high half of an object's first byte; the low half is a size or a count.
enum Marker : unsigned {
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

constexpr unsigned kFalse = 0x08;
constexpr unsigned kTrue = 0x09;
constexpr unsigned kDateMarker = 0x33;
constexpr unsigned kCountFollows = 0xF;

// Reading

// Big-endian, one to eight bytes.
std::uint64_t bigEndian(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

// A pair of surrogates is one character, a lone one stays in three bytes.
struct Utf16Reader {
    std::string_view bytes;
    std::size_t at = 0;

    char32_t next()
    {
        const char32_t first = unit(at);
        at += 2;
        if (first >= 0xD800 && first < 0xDC00 && at < bytes.size()) {
            const char32_t second = unit(at);
            if (second >= 0xDC00 && second < 0xE000) {
                at += 2;
                return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
            }
        }
        return first;
    }
    char32_t unit(std::size_t i) const
    {
        return static_cast<char32_t>(static_cast<unsigned char>(bytes[i]) << 8 |
                                     static_cast<unsigned char>(bytes[i + 1]));
    }
};

std::size_t utf8Length(char32_t point)
{
    return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

char* putUtf8(char* to, char32_t point)
{
    const std::size_t length = utf8Length(point);
    if (length == 1) {
        *to = static_cast<char>(point);
        return to + 1;
    }
    for (std::size_t i = length - 1; i > 0; --i, point >>= 6) {
        to[i] = static_cast<char>(0x80 | (point & 0x3F));
    }
    *to = static_cast<char>((0xF00u >> length & 0xF0u) | point);
    return to + length;
}

class BinaryReader {
public:
    explicit BinaryReader(std::string_view bytes) : bytes_(bytes) {}

    std::optional<Value> read()
    {
        Value root;
        if (!readTrailer() || !budget_.takeValues(1) || !readValue(top_, 0, root)) {
            return std::nullopt;
        }
        return root;
    }

private:
    // A part of the object area that must hold an object's content.
    struct Part {
        std::size_t start;
        std::uint64_t count;
    };

    bool readTrailer()
    {
        if (bytes_.size() < kMagic.size() + kTrailerSize || !bytes_.starts_with(kMagic)) {
            return false;
        }
        const std::size_t trailer = bytes_.size() - kTrailerSize;
        offsetSize_ = static_cast<unsigned char>(bytes_[trailer + 6]);
        referenceSize_ = static_cast<unsigned char>(bytes_[trailer + 7]);
        objects_ = bigEndian(bytes_.substr(trailer + 8, 8));
        top_ = bigEndian(bytes_.substr(trailer + 16, 8));
        table_ = bigEndian(bytes_.substr(trailer + 24, 8));
        const bool sizesFit = offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8;
        const bool tableFits =
            sizesFit && table_ > kMagic.size() && table_ < trailer && objects_ <= (trailer - table_) / offsetSize_;
        return tableFits && top_ < objects_ && offsetsLieInside();
    }

    bool offsetsLieInside() const
    {
        for (std::uint64_t object = 0; object < objects_; ++object) {
            const std::uint64_t offset = offsetOf(object);
            if (offset < kMagic.size() || offset >= table_) {
                return false;
            }
        }
        return true;
    }

    std::uint64_t offsetOf(std::uint64_t object) const
    {
        return bigEndian(bytes_.substr(table_ + object * offsetSize_, offsetSize_));
    }

    unsigned byteAt(std::uint64_t offset) const { return static_cast<unsigned char>(bytes_[offset]); }

    // Where the content of the object at `offset` starts and how many items it has, if they lie in the object area.
    std::optional<Part> partOf(std::size_t offset, std::size_t itemSize) const
    {
        std::uint64_t count = byteAt(offset) & 0xF;
        std::size_t start = offset + 1;
        if (count == kCountFollows) {
            if (start >= table_ || byteAt(start) >> 4 != kInteger || (byteAt(start) & 0xF) > 3) {
                return std::nullopt;
            }
            const std::size_t size = std::size_t{1} << (byteAt(start) & 0xF);
            if (size > table_ - start - 1) {
                return std::nullopt;
            }
            count = bigEndian(bytes_.substr(start + 1, size));
            start += 1 + size;
        }
        return count <= (table_ - start) / itemSize ? std::optional(Part{start, count}) : std::nullopt;
    }

    // The `size` bytes after the marker, if they lie in the object area.
    std::optional<std::string_view> bytesAfter(std::size_t offset, std::size_t size) const
    {
        return size <= table_ - offset - 1 ? std::optional(bytes_.substr(offset + 1, size)) : std::nullopt;
    }

    // The caller has paid for the value itself. Recursion ends at kMaxDepth, which also ends a cycle.
    bool readValue(std::uint64_t object, int depth, Value& value)
    {
        if (object >= objects_) {
            return false;
        }
        const std::size_t offset = offsetOf(object);
        const unsigned marker = byteAt(offset);
        switch (marker >> 4) {
        case kSimple:
            value = marker == 0 ? Value(Null()) : Value(marker == kTrue);
            return marker == 0 || marker == kFalse || marker == kTrue;
        case kInteger: return readInteger(offset, value);
        case kReal: return readReal(offset, value);
        case kDate: return marker == kDateMarker && readDate(offset, value);
        case kData: return readData(offset, value);
        case kAscii:
        case kUtf16: value = std::string(); return readText(offset, *value.as<std::string>());
        case kUid: return readUid(offset, value);
        case kArray: value = Array(); return depth < kMaxDepth && readArray(offset, depth + 1, *value.asArray());
        case kDictionary:
            value = Dictionary();
            return depth < kMaxDepth && readDictionary(offset, depth + 1, *value.asDictionary());
        default: return false;
        }
    }

    // One, two and four bytes are unsigned, eight and sixteen signed.
    bool readInteger(std::size_t offset, Value& value) const
    {
        const unsigned exponent = byteAt(offset) & 0xF;
        const auto content = exponent <= 4 ? bytesAfter(offset, std::size_t{1} << exponent) : std::nullopt;
        if (!content) {
            return false;
        }
        if (exponent < 3) {
            value = Integer(bigEndian(*content));
            return true;
        }
        const std::uint64_t low = bigEndian(content->substr(content->size() - 8));
        const bool lowIsNegative = low >> 63 != 0;
        const std::uint64_t high = exponent == 4 ? bigEndian(content->substr(0, 8)) : lowIsNegative ? ~0ull : 0;
        value = high == 0 ? Integer(low) : Integer(static_cast<std::int64_t>(low));
        return high == 0 || (high == ~0ull && lowIsNegative);
    }

    bool readReal(std::size_t offset, Value& value) const
    {
        const unsigned exponent = byteAt(offset) & 0xF;
        const auto content =
            exponent == 2 || exponent == 3 ? bytesAfter(offset, std::size_t{1} << exponent) : std::nullopt;
        if (!content) {
            return false;
        }
        const std::uint64_t bits = bigEndian(*content);
        value = exponent == 2 ? Real::fromBits32(static_cast<std::uint32_t>(bits)) : Real::fromBits64(bits);
        return true;
    }

    bool readDate(std::size_t offset, Value& value) const
    {
        const auto content = bytesAfter(offset, 8);
        if (!content) {
            return false;
        }
        value = Date(std::bit_cast<double>(bigEndian(*content)));
        return true;
    }

    bool readData(std::size_t offset, Value& value)
    {
        const auto part = partOf(offset, 1);
        if (!part || !budget_.takeText(part->count)) {
            return false;
        }
        value = Data{std::string(bytes_.substr(part->start, part->count))};
        return true;
    }

    bool readUid(std::size_t offset, Value& value) const
    {
        const std::size_t size = (byteAt(offset) & 0xF) + 1;
        const auto content = size <= 8 ? bytesAfter(offset, size) : std::nullopt;
        if (!content) {
            return false;
        }
        value = Uid{bigEndian(*content)};
        return true;
    }

    bool readText(std::size_t offset, std::string& text)
    {
        const bool wide = byteAt(offset) >> 4 == kUtf16;
        const std::size_t unitSize = wide ? 2 : 1;
        const auto part = partOf(offset, unitSize);
        if (!part || !budget_.takeText(part->count)) {
            return false;
        }
        const std::string_view content = bytes_.substr(part->start, part->count * unitSize);
        return wide ? readUtf16(content, text) : readAscii(content, text);
    }

    static bool readAscii(std::string_view content, std::string& text)
    {
        if (asciiLength(content) != content.size()) {
            return false;
        }
        text = content;
        return true;
    }

    // Measured first: a text grown as it comes could take twice its size.
    bool readUtf16(std::string_view content, std::string& text)
    {
        std::size_t length = 0;
        for (Utf16Reader reader{content}; reader.at < content.size();) {
            length += utf8Length(reader.next());
        }
        if (!budget_.takeBytes(length - std::min(length, content.size() / 2))) {
            return false;
        }
        text.resize(length);
        char* to = text.data();
        for (Utf16Reader reader{content}; reader.at < content.size();) {
            to = putUtf8(to, reader.next());
        }
        return true;
    }

    std::uint64_t referenceAt(const Part& part, std::uint64_t i) const
    {
        return bigEndian(bytes_.substr(part.start + i * referenceSize_, referenceSize_));
    }

    // All items are paid for before room is made for them, so that nested claims cannot add up.
    bool readArray(std::size_t offset, int depth, Array& array)
    {
        const auto part = partOf(offset, referenceSize_);
        if (!part || !budget_.takeValues(part->count)) {
            return false;
        }
        array.reserve(part->count);
        for (std::uint64_t i = 0; i < part->count; ++i) {
            if (!readValue(referenceAt(*part, i), depth, array.emplace_back())) {
                return false;
            }
        }
        return true;
    }

    bool readDictionary(std::size_t offset, int depth, Dictionary& dictionary)
    {
        const auto part = partOf(offset, 2 * referenceSize_);
        if (!part || !budget_.takeValues(2 * part->count)) {
            return false;
        }
        dictionary.reserve(part->count);
        for (std::uint64_t i = 0; i < part->count; ++i) {
            std::string key;
            Value value;
            if (!readKey(referenceAt(*part, i), key) || !readValue(referenceAt(*part, part->count + i), depth, value)) {
                return false;
            }
            dictionary.append(std::move(key), std::move(value));
        }
        return true;
    }

    bool readKey(std::uint64_t object, std::string& key)
    {
        if (object >= objects_) {
            return false;
        }
        const std::size_t offset = offsetOf(object);
        const unsigned kind = byteAt(offset) >> 4;
        return (kind == kAscii || kind == kUtf16) && readText(offset, key);
    }

    std::string_view bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t top_ = 0;
    std::uint64_t table_ = 0; // also where the object area ends
    Budget budget_;
};

// Writing

// The smallest power of two of bytes that holds the number.
std::size_t sizeFor(std::uint64_t number)
{
    return number <= 0xFF ? 1 : number <= 0xFFFF ? 2 : number <= 0xFFFFFFFF ? 4 : 8;
}

char* putNumber(char* to, std::uint64_t number, std::size_t size)
{
    for (std::size_t i = size; i > 0; --i, number >>= 8) {
        to[i - 1] = static_cast<char>(number);
    }
    return to + size;
}

void appendNumber(std::string& out, std::uint64_t number, std::size_t size)
{
    std::array<char, 8> bytes;
    putNumber(bytes.data(), number, size);
    out.append(bytes.data(), size);
}

void appendMarker(std::string& out, Marker marker, unsigned low)
{
    out += static_cast<char>(marker << 4 | low);
}

// A number with its own marker.
void appendInteger(std::string& out, std::uint64_t number)
{
    const std::size_t size = sizeFor(number);
    appendMarker(out, kInteger, static_cast<unsigned>(std::countr_zero(size)));
    appendNumber(out, number, size);
}

void appendCounted(std::string& out, Marker marker, std::size_t count)
{
    appendMarker(out, marker, static_cast<unsigned>(std::min<std::size_t>(count, kCountFollows)));
    if (count >= kCountFollows) {
        appendInteger(out, count);
    }
}

void append(std::string& out, Null)
{
    appendMarker(out, kSimple, 0);
}
void append(std::string& out, bool truth)
{
    appendMarker(out, kSimple, truth ? kTrue : kFalse);
}

void append(std::string& out, Integer number)
{
    if (number.isNegative() || !number.toInt64()) {
        // Eight bytes are signed: what is too large for them takes sixteen.
        appendMarker(out, kInteger, number.isNegative() ? 3 : 4);
        appendNumber(out, 0, number.isNegative() ? 0 : 8);
        appendNumber(out, number.bits(), 8);
    } else {
        appendInteger(out, number.bits());
    }
}

void append(std::string& out, Real number)
{
    appendMarker(out, kReal, number.isSingle() ? 2 : 3);
    appendNumber(out, number.bits(), number.isSingle() ? 4 : 8);
}

void append(std::string& out, const Date& date)
{
    appendMarker(out, kDate, 3);
    appendNumber(out, std::bit_cast<std::uint64_t>(date.seconds()), 8);
}

void append(std::string& out, const Data& data)
{
    appendCounted(out, kData, data.bytes.size());
    out += data.bytes;
}

void append(std::string& out, Uid uid)
{
    const std::size_t size = sizeFor(uid.number);
    appendMarker(out, kUid, static_cast<unsigned>(size - 1));
    appendNumber(out, uid.number, size);
}

void append(std::string& out, const std::string& text)
{
    if (asciiLength(text) == text.size()) {
        appendCounted(out, kAscii, text.size());
        out += text;
        return;
    }
    std::size_t units = 0;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = codePointAt(text, at);
        units += point.value > 0xFFFF ? 2 : 1;
        at += point.length;
    }
    appendCounted(out, kUtf16, units);
    out.resize(out.size() + 2 * units);
    char* to = out.data() + out.size() - 2 * units;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint point = codePointAt(text, at);
        if (point.value > 0xFFFF) {
            to = putNumber(to, 0xD7C0 + (point.value >> 10), 2);
            to = putNumber(to, 0xDC00 | (point.value & 0x3FF), 2);
        } else {
            to = putNumber(to, point.value, 2);
        }
        at += point.length;
    }
}

// Numbers the values first, equal leaves once, then writes objects, offsets and trailer. Linear in the document.
class BinaryWriter {
public:
    std::string write(const Value& root)
    {
        numberOf(root);
        const std::size_t referenceSize = sizeFor(objects_.size() - 1);
        std::string out(kMagic);
        out.reserve(leaves_.size() + references_.size() * referenceSize + objects_.size() * 9 + 64);
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            appendObject(out, object, referenceSize);
        }
        const std::size_t table = out.size();
        const std::size_t offsetSize = sizeFor(table);
        for (const std::size_t offset : offsets) {
            appendNumber(out, offset, offsetSize);
        }
        out.append(6, '\0');
        out += static_cast<char>(offsetSize);
        out += static_cast<char>(referenceSize);
        appendNumber(out, objects_.size(), 8);
        appendNumber(out, 0, 8); // the root is the first object
        appendNumber(out, table, 8);
        return out;
    }

private:
    using Number = std::uint32_t;

    struct Object {
        Marker kind;       // kSimple for any leaf
        std::size_t start; // in leaves_ or references_
        std::size_t count; // of bytes, items or entries
    };
    struct Slot {
        std::uint32_t hash = 0;
        Number numberPlusOne = 0; // 0 is a free slot
    };

    Number numberOf(const Value& value)
    {
        return std::visit([&](const auto& held) { return numberOfHeld(held); }, value.storage());
    }

    Number add(Object object)
    {
        objects_.push_back(object);
        return static_cast<Number>(objects_.size() - 1);
    }

    Number numberOfHeld(const Array& array)
    {
        std::size_t next = references_.size();
        const Number number = add({kArray, next, array.size()});
        references_.resize(next + array.size());
        for (const Value& value : array) {
            const Number item = numberOf(value);
            references_[next++] = item;
        }
        return number;
    }

    Number numberOfHeld(const Dictionary& dictionary)
    {
        std::size_t next = references_.size();
        const Number number = add({kDictionary, next, dictionary.size()});
        references_.resize(next + 2 * dictionary.size());
        for (const auto& [key, value] : dictionary) {
            const Number keyNumber = numberOfHeld(key);
            const Number valueNumber = numberOf(value);
            references_[next] = keyNumber;
            references_[next + dictionary.size()] = valueNumber;
            ++next;
        }
        return number;
    }

    // Leaves are equal where their bytes are: 1, 1.0 and true differ, and so do 0.0 and -0.0.
    template <typename Leaf>
    Number numberOfHeld(const Leaf& leaf)
    {
        constexpr std::size_t kMaxProbes = 64; // a file made of colliding texts is written without sharing them
        const std::size_t start = leaves_.size();
        append(leaves_, leaf);
        const auto bytes = std::string_view(leaves_).substr(start);
        const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(bytes));
        growSlots();
        std::size_t at = hash & (slots_.size() - 1);
        for (std::size_t probe = 0; probe < kMaxProbes && slots_[at].numberPlusOne != 0; ++probe) {
            if (slots_[at].hash == hash && bytesOf(slots_[at]) == bytes) {
                leaves_.resize(start);
                return slots_[at].numberPlusOne - 1;
            }
            at = (at + 1) & (slots_.size() - 1);
        }
        const Number number = add({kSimple, start, bytes.size()});
        if (slots_[at].numberPlusOne == 0) {
            slots_[at] = {hash, number + 1};
            ++usedSlots_;
        }
        return number;
    }

    std::string_view bytesOf(const Slot& slot) const
    {
        const Object& object = objects_[slot.numberPlusOne - 1];
        return std::string_view(leaves_).substr(object.start, object.count);
    }

    // Keeps at least half of the slots free.
    void growSlots()
    {
        if (usedSlots_ * 2 < slots_.size()) {
            return;
        }
        std::vector<Slot> grown(std::max<std::size_t>(64, slots_.size() * 2));
        for (const Slot& slot : slots_) {
            std::size_t at = slot.hash & (grown.size() - 1);
            while (slot.numberPlusOne != 0 && grown[at].numberPlusOne != 0) {
                at = (at + 1) & (grown.size() - 1);
            }
            if (slot.numberPlusOne != 0) {
                grown[at] = slot;
            }
        }
        slots_ = std::move(grown);
    }

    void appendObject(std::string& out, const Object& object, std::size_t referenceSize) const
    {
        if (object.kind == kSimple) {
            out.append(leaves_, object.start, object.count);
            return;
        }
        appendCounted(out, object.kind, object.count);
        const std::size_t references = object.kind == kArray ? object.count : 2 * object.count;
        for (std::size_t i = 0; i < references; ++i) {
            appendNumber(out, references_[object.start + i], referenceSize);
        }
    }

    std::string leaves_; // one after the other, as they will stand in the file
    std::vector<Object> objects_;
    std::vector<Number> references_;
    std::vector<Slot> slots_;
    std::size_t usedSlots_ = 0;
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
