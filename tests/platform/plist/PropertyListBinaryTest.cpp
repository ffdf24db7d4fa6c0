// The binary form to the byte: what is written, what is read, what is refused.

#include "platform/plist/PropertyListCodec.h"
#include "tests/platform/plist/PropertyListSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace platform::plist;
using namespace std::string_literals;

TEST(PropertyListBinary, WritesTheGoldenFile)
{
    const Dictionary root{{"a", Array{true, "a", Integer(1), Real(1.0), "\xC3\xA9"}}};
    const std::string kGolden = "bplist00"
                                "\xD1\x01\x02" // 0: a dictionary, key 1, value 2
                                "\x51"
                                "a"                                    // 1
                                "\xA5\x03\x01\x04\x05\x06"             // 2
                                "\x09"                                 // 3
                                "\x10\x01"                             // 4
                                "\x23\x3F\xF0\x00\x00\x00\x00\x00\x00" // 5
                                "\x61\x00\xE9"                         // 6
                                "\x08\x0B\x0D\x13\x14\x16\x1F"
                                "\x00\x00\x00\x00\x00\x00\x01\x01\x00\x00\x00\x00\x00\x00\x00\x07"
                                "\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x22"s;
    EXPECT_EQ(write({root, Form::binary}), kGolden);
    const auto document = parse(kGolden);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->form, Form::binary);
    EXPECT_EQ(document->root, Value(root));
}

TEST(PropertyListBinary, ReadsEveryWayAValueIsWritten)
{
    const std::vector<std::pair<std::string, Value>> kCases = {
        {"\x00"s, Null()},
        {"\x08", false},
        {"\x09", true},
        {"\x10\xFF", Integer(255)},
        {"\x11\xFF\xFE", Integer(65534)},
        {"\x12\xFF\xFF\xFF\xFE", Integer(4294967294)},
        {"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE", Integer(-2)},
        {"\x13\x00\x00\x00\x00\x00\x00\x00\x02"s, Integer(2)},
        {"\x14"s + std::string(8, '\0') + std::string(8, '\xFF'), Integer(std::numeric_limits<std::uint64_t>::max())},
        {"\x14"s + std::string(15, '\xFF') + "\xFD", Integer(-3)},
        {"\x22\x3F\x80\x00\x00"s, Real(1.0f)},
        {"\x22\x7F\x80\x00\x01"s, singleOfBits(0x7F800001)}, // a signalling NaN
        {"\x23\x7F\xF0\x00\x00\x00\x00\x00\x01"s, realOfBits(0x7FF0000000000001)},
        {"\x33\x80\x00\x00\x00\x00\x00\x00\x00"s, dateOf(-0.0)},
        {"\x42\x00\xFF"s, Data{"\0\xFF"s}},
        {"\x4F\x10\x01x", Data{"x"}},
        {"\x50", ""},
        {"\x53"s + "a\0b"s, "a\0b"s},
        {"\x5F\x11\x00\x01x"s, "x"},
        {"\x5F\x12\x00\x00\x00\x01x"s, "x"},
        {"\x5F\x13\x00\x00\x00\x00\x00\x00\x00\x01x"s, "x"},
        {"\x60", ""},
        {"\x62\xD8\x3C\xDF\xB9", "\xF0\x9F\x8E\xB9"},
        {"\x61\xD8\x3C", "\xED\xA0\xBC"},
        {"\x62\xDF\xB9\xD8\x3C", "\xED\xBE\xB9\xED\xA0\xBC"},
        {"\x63\xD8\x3C\xD8\x3C\xDF\xB9", "\xED\xA0\xBC\xF0\x9F\x8E\xB9"},
        {"\x62\xFF\xFE\xFF\xFF", "\xEF\xBF\xBE\xEF\xBF\xBF"},
        {"\x80\x07", Uid{7}},
        {"\x82\x01\x00\x00"s, Uid{65536}},
        {"\x87\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", Uid{std::numeric_limits<std::uint64_t>::max()}},
        {"\xA0", Array{}},
        {"\xD0", Dictionary{}},
    };
    for (const auto& [object, value] : kCases) {
        const auto document = parse(BinaryFile{{object}}.bytes());
        ASSERT_TRUE(document) << value.describe();
        EXPECT_EQ(document->root, value) << value.describe();
    }
}

TEST(PropertyListBinary, ReadsEverySizeOfOffsetsAndReferences)
{
    for (std::size_t size = 1; size <= 8; ++size) {
        const auto reference = [&](std::uint64_t number) { return bigEndian(number, size); };
        const BinaryFile file{{"\x51"
                               "k",
                               "\xA2" + reference(0) + reference(0), "\xD1" + reference(0) + reference(1)},
                              size,
                              9 - size,
                              2};
        const auto document = parse(file.bytes());
        ASSERT_TRUE(document) << size;
        EXPECT_EQ(document->root, Value(Dictionary{{"k", Array{"k", "k"}}}));
    }
}

TEST(PropertyListBinary, ReadsEveryVersionOfItsFamily)
{
    std::string bytes = BinaryFile{{"\x09"}}.bytes();
    for (const char version : {'1', '9', 'A', '\xFF'}) {
        bytes[7] = version;
        const auto document = parse(bytes);
        ASSERT_TRUE(document) << version;
        EXPECT_EQ(document->form, Form::binary);
        EXPECT_EQ(document->root, Value(true));
    }
}

TEST(PropertyListBinary, KeepsRepeatedKeys)
{
    const auto document = parse(BinaryFile{{"\xD2\x01\x01\x02\x03", "\x51k", "\x08", "\x09"}}.bytes());
    ASSERT_TRUE(document);
    EXPECT_EQ(document->root, Value(Dictionary{{"k", false}, {"k", true}}));
    EXPECT_EQ(*document->root.asDictionary()->find("k"), Value(true));
    EXPECT_EQ(parse(write(*document))->root, document->root);
}

TEST(PropertyListBinary, RefusesBrokenObjects)
{
    const std::vector<std::vector<std::string>> kObjects = {
        {"\x01"}, // unknown simple values
        {"\x0F"},
        {"\x15" + std::string(32, '\0')},     // an integer of 32 bytes
        {"\x14\x01" + std::string(15, '\0')}, // beyond 64 bits
        {"\x14"s + std::string(7, '\xFF') + "\xFE" + std::string(8, '\xFF')},
        {"\x14"s + std::string(8, '\xFF') + std::string(8, '\0')},
        {"\x21" + std::string(2, '\0')}, // a real of two bytes
        {"\x24" + std::string(16, '\0')},
        {"\x32" + std::string(4, '\0')}, // a short date
        {"\x13\x01"},                    // cut off
        {"\x23\x01"},
        {"\x33\x01"},
        {"\x42x"},
        {"\x52x"},
        {"\x61x"},
        {"\x81x"},
        {"\xA1"},
        {"\xD1\x00"s},
        {"\x51\x80"},                    // not ASCII
        {"\x88" + std::string(9, '\1')}, // a reference number of nine bytes
        {"\x5F"},                        // counts
        {"\x5F\x08"},
        {"\x5F\x11\x01"},
        {"\x5F\x14" + std::string(15, '\0') + "\x01x"},
        {"\x5F\x13\x7F" + std::string(7, '\xFF')},
        {"\x6F\x13\x80" + std::string(7, '\0')},
        {"\xAF\x13\xFF" + std::string(7, '\xFF')},
        {"\xDF\x13\x80" + std::string(7, '\0')},
        {"\x70"}, // unknown kinds
        {"\x90"},
        {"\xB0"},
        {"\xC0"},
        {"\xE0"},
        {"\xF0"},
        {"\xA1\x02", "\x09"}, // references beyond the table
        {"\xD1\x02\x01", "\x51k"},
        {"\xD1\x01\x02", "\x51k"},
        {"\xD1\x01\x02", "\x09", "\x09"}, // a key that is no text
    };
    for (const auto& objects : kObjects) {
        EXPECT_FALSE(parse(BinaryFile{objects}.bytes())) << testing::PrintToString(objects);
    }
}

TEST(PropertyListBinary, RefusesBrokenTrailers)
{
    const BinaryFile kForm{{}, 1, 1};
    const std::string kStart = "bplist00\x51x\x08"; // one text, and a table of its offset
    struct Case {
        const char* what;
        BinaryFile form;
        std::uint64_t count, top, table;
    };
    const std::uint64_t kHuge = ~std::uint64_t{0};
    ASSERT_TRUE(parse(kStart + kForm.trailer(1, 0, 10)));
    for (const Case& test :
         {Case{"no object", kForm, 0, 0, 10}, Case{"top beyond the table", kForm, 1, 1, 10},
          Case{"more offsets than room", kForm, 2, 0, 10}, Case{"enormous count", kForm, kHuge, 0, 10},
          Case{"count that overflows", {{}, 1, 8}, std::uint64_t{1} << 61, 0, 10},
          Case{"enormous top", kForm, 1, kHuge, 10}, Case{"table at the end", kForm, 1, 0, 11},
          Case{"table outside", kForm, 1, 0, kHuge}, Case{"table in the magic", kForm, 1, 0, 8},
          Case{"table at the start", kForm, 1, 0, 0}, Case{"no offset size", {{}, 1, 0}, 1, 0, 10},
          Case{"wide offsets", {{}, 1, 9}, 1, 0, 10}, Case{"no reference size", {{}, 0, 1}, 1, 0, 10},
          Case{"wide references", {{}, 9, 1}, 1, 0, 10}}) {
        EXPECT_FALSE(parse(kStart + test.form.trailer(test.count, test.top, test.table))) << test.what;
    }
    for (const char offset : {'\0', '\x07', '\x0A', '\x0B', '\x7F'}) {
        EXPECT_FALSE(parse("bplist00\x51x"s + offset + kForm.trailer(1, 0, 10))) << int{offset};
    }
    EXPECT_FALSE(parse("bplist00" + kForm.trailer(1, 0, 8)));
    EXPECT_FALSE(parse("bplist10\x51x\x08" + kForm.trailer(1, 0, 10)));
    EXPECT_FALSE(readBinary("bplist00"));
    EXPECT_FALSE(readBinary("bplist0"));
}

TEST(PropertyListBinary, SharesEqualLeavesOnly)
{
    const auto sizeOf = [](const Array& array) { return write({array, Form::binary}).size(); };
    const std::string text = "a text of some length";
    EXPECT_EQ(sizeOf({text, text}), sizeOf({text}) + 1);
    const Array unlike{Real(0.0), Real(-0.0), Integer(1), Real(1.0), true, "1", Data{"1"}, Uid{1}, Real(1.0f)};
    EXPECT_EQ(parse(write({unlike, Form::binary}))->root, Value(unlike));
}

TEST(PropertyListBinary, TakesTheSmallestSizes)
{
    const auto sizes = [](std::size_t texts) {
        Array array;
        for (std::size_t i = 0; i < texts; ++i) {
            array.push_back(std::to_string(i));
        }
        const std::string bytes = write({array, Form::binary});
        EXPECT_EQ(parse(bytes)->root, Value(array));
        return std::pair<int, int>(bytes[bytes.size() - 26], bytes[bytes.size() - 25]);
    };
    EXPECT_EQ(sizes(10), std::pair(1, 1));
    EXPECT_EQ(sizes(255), std::pair(2, 1));
    EXPECT_EQ(sizes(256), std::pair(2, 2));
    EXPECT_EQ(sizes(20'000), std::pair(4, 2));
    EXPECT_EQ(sizes(70'000), std::pair(4, 4));
}

} // namespace
