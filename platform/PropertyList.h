#pragma once

// Property lists: values, the XML and the binary form, and the way from bytes to values and back.
// What is read, written and read again is the same to the byte and to the bit, the order of keys included. Any bytes
// may be handed in: what is not a property list is refused, within bounds of depth, time and memory.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform::plist {

class Value;
using Array = std::vector<Value>;

// The binary form's null; the XML form has none.
struct Null {
    bool operator==(const Null&) const = default;
};

// A whole number from -2^63 to 2^64-1.
class Integer {
public:
    template <std::integral T>
    requires(!std::same_as<T, bool>) constexpr explicit Integer(T number)
        : bits_(static_cast<std::uint64_t>(number)), negative_(std::cmp_less(number, 0))
    {}

    bool isNegative() const { return negative_; }
    // Two's complement where the number is negative.
    std::uint64_t bits() const { return bits_; }
    std::optional<std::int64_t> toInt64() const;
    std::string toString() const; // decimal
    bool operator==(const Integer&) const = default;

private:
    std::uint64_t bits_;
    bool negative_;
};

// A floating-point number that keeps its bits (the sign of zero, the payload of a NaN) and, in the binary form, its
// width. The XML form is always read as 64 bits wide.
class Real {
public:
    explicit Real(double number);
    explicit Real(float number);
    static Real fromBits64(std::uint64_t bits) { return Real(bits, false); }
    static Real fromBits32(std::uint32_t bits) { return Real(bits, true); }

    bool isSingle() const { return single_; }
    // 32 or 64 bits, as isSingle() says.
    std::uint64_t bits() const { return bits_; }
    double toDouble() const;
    // The shortest text that reads back as the same number of the same width; 1.0 is "1".
    std::string toString() const;
    // The same bits and the same width.
    bool operator==(const Real&) const = default;

private:
    Real(std::uint64_t bits, bool single) : bits_(bits), single_(single) {}

    std::uint64_t bits_;
    bool single_;
};

struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

// A moment, kept as its file wrote it: a text in the XML form, seconds in the binary form.
class Date {
public:
    // Seconds since 2001-01-01T00:00:00Z.
    explicit Date(double seconds);
    // [+-]Y[-M[-D[THH[:MM[:SS[.fraction]]]]]][Z], proleptic Gregorian, with a year 0; the text is kept as it is.
    // A field beyond its range counts on into the next one. Nothing if the text is of another shape.
    static std::optional<Date> fromText(std::string_view text);

    double seconds() const { return seconds_; }
    // The text of the XML file it came from; null where it came from seconds.
    const std::string* text() const { return text_.get(); }
    // YYYY-MM-DDTHH:MM:SSZ or the file's own text; nothing if such a text would not read back as the same seconds.
    std::optional<std::string> toText() const;
    // Both written the same way: the same text, or the same bits.
    bool operator==(const Date& other) const;

private:
    double seconds_;
    std::shared_ptr<const std::string> text_;
};

// A reference of a keyed archive. Binary form only.
struct Uid {
    std::uint64_t number = 0;
    bool operator==(const Uid&) const = default;
};

// Keys and values in the order of the file. A lookup is linear, from the end.
class Dictionary {
public:
    using Entry = std::pair<std::string, Value>;
    using iterator = std::vector<Entry>::iterator;
    using const_iterator = std::vector<Entry>::const_iterator;

    Dictionary();
    Dictionary(std::initializer_list<Entry> entries);

    // The last one where a file repeats a key; null if there is none.
    const Value* find(std::string_view key) const;
    Value* find(std::string_view key);
    // In the place of the key's first entry, or at the end; leaves exactly one entry of that key.
    void set(std::string key, Value value);
    // Every entry of that key.
    void remove(std::string_view key);
    // At the end, without looking for the key. For readers.
    void append(std::string key, Value value);
    void reserve(std::size_t entries);

    std::size_t size() const;
    bool empty() const;
    const_iterator begin() const;
    const_iterator end() const;
    iterator begin();
    iterator end();

    // The same entries in the same order.
    bool operator==(const Dictionary& other) const;

private:
    std::vector<Entry> entries_;
};

// Any value of a property list. Texts are UTF-8; a lone surrogate of a binary file is kept as its three bytes (WTF-8).
class Value {
public:
    using Storage = std::variant<Null, bool, Integer, Real, std::string, Data, Date, Uid, Array, Dictionary>;

    Value() = default; // Null
    Value(Null) {}
    Value(std::same_as<bool> auto truth) : storage_(truth) {}
    Value(Integer number) : storage_(number) {}
    template <std::integral T>
    requires(!std::same_as<T, bool>) Value(T number) : storage_(Integer(number)) {}
    Value(Real number) : storage_(number) {}
    Value(std::string text) : storage_(std::move(text)) {}
    Value(std::string_view text) : storage_(std::in_place_type<std::string>, text) {}
    Value(std::nullptr_t) = delete;
    Value(const char* text) : storage_(std::in_place_type<std::string>, text) {}
    Value(Data data) : storage_(std::move(data)) {}
    Value(Date date) : storage_(std::move(date)) {}
    Value(Uid uid) : storage_(uid) {}
    Value(Array array) : storage_(std::move(array)) {}
    Value(Dictionary dictionary) : storage_(std::move(dictionary)) {}

    // Null where the value is of another type.
    template <typename T>
    const T* as() const
    {
        return std::get_if<T>(&storage_);
    }
    template <typename T>
    T* as()
    {
        return std::get_if<T>(&storage_);
    }
    const std::string* asString() const { return as<std::string>(); }
    const Integer* asInteger() const { return as<Integer>(); }
    const Array* asArray() const { return as<Array>(); }
    Array* asArray() { return as<Array>(); }
    const Dictionary* asDictionary() const { return as<Dictionary>(); }
    Dictionary* asDictionary() { return as<Dictionary>(); }
    const Storage& storage() const { return storage_; }

    // How the value reads as plain text: a text as it is, a number in decimal, a truth "1" or "0", anything else a
    // remark in angle brackets.
    std::string describe() const;

    bool operator==(const Value& other) const;

private:
    Storage storage_;
};

enum class Form { xml, binary };

struct Document {
    Value root;
    Form form = Form::xml;
};

// The document in these bytes, in whichever form; nothing if they are no property list. Refused are also entities of a
// file's own, more than 512 levels, and more than about two million values or 64 MiB of text, counted at every use.
std::optional<Document> parse(std::string_view bytes);

// The bytes of a file in the document's form. A document with a value that XML cannot hold (a control character, a
// lone surrogate, U+FFFE or U+FFFF, a null, a reference, an odd NaN, a fraction of a second in a date) comes out
// binary. Bytes of a text that are no UTF-8 become U+FFFD; a 32-bit real becomes 64 bits wide in XML.
std::string write(const Document& document);

} // namespace platform::plist
