#pragma once

// Property lists: values, the XML, the binary and the old-style form, and the way from bytes to values and back.
// What is read, written and read again is the same to the byte and to the bit, the order of keys included. Any bytes
// may be handed in: what is not a property list is refused, within bounds of depth, time and memory.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform::plist {

struct Value;
using Array = std::vector<Value>;
using Null = std::monostate; // binary form only

// A whole number from -2^63 to 2^64-1.
struct Integer {
    std::uint64_t bits; // two's complement where it is negative
    bool negative;

    constexpr explicit Integer(std::integral auto number)
        : bits(static_cast<std::uint64_t>(number)), negative(std::cmp_less(number, 0))
    {}
    std::string toString() const; // decimal
    bool operator==(const Integer&) const = default;
};

// A floating-point number that keeps its bits (the sign of zero, the payload of a NaN) and, in the binary form, its
// width.
struct Real {
    std::uint64_t bits;
    bool single; // 32 bits wide

    explicit Real(double number);
    explicit Real(float number);
    double toDouble() const;
    // The same bits and the same width.
    bool operator==(const Real&) const = default;
};

struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

// A moment as an XML file writes it: [-]YYYY-MM-DDThh:mm:ssZ, and wider: [-]Y-M-D[Thh[:mm[:ss[.fraction]]]][Z].
struct DateText {
    std::string text;
    bool operator==(const DateText&) const = default;
};

// A moment as a binary file writes it: seconds since 2001-01-01T00:00:00Z.
struct DateSeconds {
    Real seconds;
    bool operator==(const DateSeconds&) const = default;
};

// A reference of a keyed archive. Binary form only.
struct Uid {
    std::uint64_t number = 0;
    bool operator==(const Uid&) const = default;
};

// Keys and values in the order of the file.
struct Dictionary {
    using Entry = std::pair<std::string, Value>;
    std::vector<Entry> entries;

    Dictionary() = default;
    Dictionary(std::initializer_list<Entry> list);
    std::size_t size() const;
    // The last one where a file repeats a key; null if there is none.
    const Value* find(std::string_view key) const;
    // In the place of the key's first entry, or at the end; leaves exactly one entry of that key.
    void set(std::string key, Value value);
    // The same entries in the same order.
    bool operator==(const Dictionary& other) const;
};

template <typename T, typename... Types>
concept OneOf = (std::same_as<T, Types> || ...);

// Any value of a property list. Texts are UTF-8; a lone surrogate of a binary file is kept as its three bytes (WTF-8).
struct Value {
    std::variant<Null, bool, Integer, Real, std::string, Data, DateText, DateSeconds, Uid, Array, Dictionary> held;

    Value() = default; // Null
    Value(const char* text) : held(std::string(text)) {}
    // Of these types as they are, so that nothing turns into a truth or a number by accident.
    template <OneOf<Null, bool, Integer, Real, std::string, Data, DateText, DateSeconds, Uid, Array, Dictionary> T>
    Value(T value) : held(std::move(value))
    {}

    // Null where the value is of another type.
    const std::string* asString() const { return std::get_if<std::string>(&held); }
    const Array* asArray() const { return std::get_if<Array>(&held); }
    const Dictionary* asDictionary() const { return std::get_if<Dictionary>(&held); }
    Dictionary* asDictionary() { return std::get_if<Dictionary>(&held); }

    // How the value reads as plain text: a text as it is, a number in decimal, a truth "1" or "0", anything else
    // "<value>".
    std::string describe() const;

    bool operator==(const Value& other) const;
};

enum class Form { xml, binary };

struct Document {
    Value root;
    Form form = Form::xml;
};

// What a binary file, which may hold a value once and use it often, may unfold into, counted at every use.
struct Unfolded {
    std::size_t values = 1'000'000;
    std::size_t textBytes = std::size_t{64} << 20;
};

// The document in these bytes, in whichever form; nothing if they are no property list. An old-style list, which is
// never written, counts as XML. Refused are also files of more than 64 MiB, as they stand or as UTF-8, more than 512
// levels, more than a million values or 64 MiB of text, and a binary file that unfolds into more than `most`.
std::optional<Document> parse(std::string_view bytes, const Unfolded& most = {});

// The bytes of a file in the document's form. A document with a value that XML cannot hold (a control character, a
// lone surrogate, U+FFFE or U+FFFF, a null, a reference, an odd NaN, a fraction in the seconds of a date) comes out
// binary. Bytes of a text that are no UTF-8 become U+FFFD; a 32-bit real becomes 64 bits wide in XML.
std::string write(const Document& document);

} // namespace platform::plist
