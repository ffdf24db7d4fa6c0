#pragma once
// Property lists in the making: files put together by hand and values, for the tests of both forms.

#include "platform/plist/PropertyList.h"

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::plist {

inline const std::string kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                   "<plist version=\"1.0\">\n";
inline const std::string kFooter = "</plist>\n";

inline std::string xmlFile(const std::string& body)
{
    return kHeader + body + "\n" + kFooter;
}

inline std::string bigEndian(std::uint64_t number, std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[size - 1 - i] = static_cast<char>(number >> (8 * i));
    }
    return bytes;
}

// A binary file of these objects, the first one on top.
struct BinaryFile {
    std::vector<std::string> objects;
    std::size_t referenceSize = 1;
    std::size_t offsetSize = 2;
    std::uint64_t top = 0;

    std::string bytes() const
    {
        std::string out = "bplist00";
        std::string table;
        for (const std::string& object : objects) {
            table += bigEndian(out.size(), offsetSize);
            out += object;
        }
        const std::size_t tableStart = out.size();
        return out + table + trailer(objects.size(), top, tableStart);
    }
    std::string trailer(std::uint64_t count, std::uint64_t topObject, std::uint64_t tableStart) const
    {
        return std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1) + bigEndian(count, 8) +
               bigEndian(topObject, 8) + bigEndian(tableStart, 8);
    }
};

inline Real realOfBits(std::uint64_t bits)
{
    return Real(std::bit_cast<double>(bits));
}
inline Real singleOfBits(std::uint32_t bits)
{
    return Real(std::bit_cast<float>(bits));
}
inline Value dateOf(const char* text)
{
    return DateText{text};
}
inline Value dateOf(double seconds)
{
    return DateSeconds{Real(seconds)};
}

inline Value nested(int levels)
{
    Value value = Array{};
    for (int i = 1; i < levels; ++i) {
        Array outer;
        outer.push_back(std::move(value));
        value = std::move(outer);
    }
    return value;
}

inline std::string repeated(std::string_view piece, std::size_t times)
{
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

// One of everything that both forms hold.
inline Dictionary sample()
{
    return {{"text", "a & b"},
            {"numbers", Array{Integer(-1), Integer(300), Real(1.5), Real(-0.0)}},
            {"truths", Array{true, false}},
            {"data", Data{"\x01\x02\xFF"}},
            {"when", dateOf("2020-02-29T12:30:45Z")},
            {"\xC3\xA9", Dictionary{{"", Array{}}, {"empty", Dictionary{}}}}};
}

} // namespace platform::plist
