// What holds for values and for both forms alike.

#include "platform/plist/PropertyListCodec.h"
#include "tests/platform/plist/PropertyListSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace platform::plist;
using namespace std::string_literals;

// Values

TEST(PropertyListValue, StaysSmall)
{
    EXPECT_LE(sizeof(Value), 40u);
}

TEST(PropertyListValue, DescribesItselfAsPlainText)
{
    const std::vector<std::pair<Value, std::string>> kCases = {
        {"", ""},
        {"Gain <1>", "Gain <1>"},
        {Integer(0), "0"},
        {Integer(-42), "-42"},
        {Integer(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615"},
        {Integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
        {true, "1"},
        {false, "0"},
        {Real(1.0), "1"},
        {Real(0.1), "0.1"},
        {Real(-2.5), "-2.5"},
        {Array{"1"}, "<value>"},
        {Null(), "<value>"},
    };
    for (const auto& [value, text] : kCases) {
        EXPECT_EQ(value.describe(), text);
    }
}

TEST(PropertyListValue, TellsUnlikeValuesApart)
{
    const std::vector<Value> kUnlike = {Null(),
                                        false,
                                        true,
                                        Integer(0),
                                        Integer(1),
                                        Integer(-1),
                                        Integer(std::numeric_limits<std::uint64_t>::max()),
                                        Real(0.0),
                                        Real(-0.0),
                                        Real(1.0),
                                        Real(1.0f),
                                        "1",
                                        "",
                                        Data{"1"},
                                        Uid{1},
                                        dateOf(0.0),
                                        dateOf(-0.0),
                                        dateOf("2001-01-01T00:00:00Z"),
                                        dateOf("2001-01-01"),
                                        Array{},
                                        Array{"1"},
                                        Dictionary{},
                                        Dictionary{{"a", "1"}, {"b", "2"}},
                                        Dictionary{{"b", "2"}, {"a", "1"}}};
    for (std::size_t i = 0; i < kUnlike.size(); ++i) {
        for (std::size_t j = 0; j < kUnlike.size(); ++j) {
            EXPECT_EQ(kUnlike[i] == kUnlike[j], i == j) << i << " and " << j;
        }
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Value(Real(nan)), Value(Real(nan)));
}

TEST(PropertyListValue, GivesOutOnlyWhatItHolds)
{
    Value text = "a";
    EXPECT_EQ(*text.asString(), "a");
    EXPECT_EQ(text.asArray(), nullptr);
    EXPECT_EQ(text.asDictionary(), nullptr);
    Value dictionary = Dictionary{{"a", "b"}};
    dictionary.asDictionary()->set("a", "c");
    EXPECT_EQ(dictionary, Value(Dictionary{{"a", "c"}}));
}

TEST(PropertyListDictionary, FindsTheLastOfARepeatedKey)
{
    const Dictionary dictionary{{"a", "1"}, {"b", "2"}, {"a", "3"}};
    EXPECT_EQ(*dictionary.find("a"), Value("3"));
    EXPECT_EQ(dictionary.find("c"), nullptr);
    EXPECT_EQ(dictionary.size(), 3u);
}

TEST(PropertyListDictionary, SetsInPlaceOrAtTheEndAndLeavesOneEntry)
{
    Dictionary dictionary{{"a", "1"}, {"b", "2"}, {"a", "3"}, {"c", "4"}, {"a", "5"}};
    dictionary.set("a", "x");
    EXPECT_EQ(dictionary, (Dictionary{{"a", "x"}, {"b", "2"}, {"c", "4"}}));
    dictionary.set("d", "y");
    EXPECT_EQ(dictionary, (Dictionary{{"a", "x"}, {"b", "2"}, {"c", "4"}, {"d", "y"}}));
}

TEST(PropertyListDate, CountsSecondsSince2001)
{
    const std::vector<std::pair<const char*, double>> kCases = {
        {"2001-01-01T00:00:00Z", 0},
        {"2001-01-01T00:00:00", 0},
        {"2001-01-01T00:00Z", 0},
        {"2001-01-01T00", 0},
        {"2001-01-01", 0},
        {" 2001-01-01T00:00:00Z\n", 0},
        {"2001-1-1T0:0:1", 1},
        {"2001-01-01T00:00:00.25Z", 0.25},
        {"2001-01-02T03:04:05Z", 86400 + 3 * 3600 + 4 * 60 + 5},
        {"2000-12-31T23:59:59Z", -1},
        {"2000-02-29T00:00:00Z", -26524800},
        {"2016-12-31T23:59:60Z", 504921600},
        {"1970-01-01T00:00:00Z", -978307200},
        {"4001-01-01T00:00:00Z", 63113904000},
        {"0001-01-01T00:00:00Z", -63113904000},
        {"0000-12-31T00:00:00Z", -63113990400},
        {"-0001-01-01", -63113904000.0 - 86400.0 * (366 + 365)},
        {"12345-01-01T00:00:00Z", 326425075200},
    };
    for (const auto& [text, seconds] : kCases) {
        EXPECT_EQ(secondsOfDate(text), seconds) << text;
    }
}

TEST(PropertyListDate, RefusesWhatIsNoDate)
{
    for (const char* text : {"",
                             " ",
                             "Z",
                             "yesterday",
                             "2001",
                             "2001-",
                             "2001-01",
                             "2001-01-",
                             "2001-01-01T",
                             "2001-01-01T00:",
                             "2001-01-01T00:00:",
                             "2001-01-01T00:00:xx",
                             "2001-01-01T00:00:1.2.3",
                             "2001-01-01T00:00:00ZZ",
                             "2001-01-01T00:00:00+01:00",
                             "12345678901-01-01",
                             "--2001",
                             "2001-01-01T00:00:-1",
                             "2001/01/01",
                             "2001-01-01T00:00:1e9",
                             "2001-01-01T00:00:0.1e9",
                             "2001-13-01",
                             "2001-00-01",
                             "2001-01-32",
                             "2001-01-00",
                             "40000-01-01",
                             "2001-01-01.5"}) {
        EXPECT_FALSE(secondsOfDate(text)) << text;
    }
}

TEST(PropertyListDate, WritesSecondsAsTextWhereTheyReadBack)
{
    EXPECT_EQ(dateOfSeconds(Real(0.0)), "2001-01-01T00:00:00Z");
    EXPECT_EQ(dateOfSeconds(Real(-1.0)), "2000-12-31T23:59:59Z");
    EXPECT_EQ(dateOfSeconds(Real(-63113904000.0)), "0001-01-01T00:00:00Z");
    EXPECT_EQ(dateOfSeconds(Real(252423993599.0)), "9999-12-31T23:59:59Z");
    for (const double seconds :
         {0.5, -0.5, -0.0, -63113904001.0, 252423993600.0, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_EQ(dateOfSeconds(Real(seconds)), std::nullopt) << seconds;
    }
}

// Both forms

TEST(PropertyListRoundTrip, KeepsEveryValueBothFormsHold)
{
    std::vector<Value> values = {nested(512), true, false,
                                 Array{Array{}, Dictionary{}, "", Data{}, true, Integer(1), Real(1.0)}};
    for (const char* text : {"", " ", " a ", "\n", "\r", "\r\n", "a\rb\r\n", "\t", "]]>", "&amp;", "\xEF\xBB\xBF",
                             "\xC2\x85\xE2\x80\xA8", "\x7F", "\xF4\x8F\xBF\xBF", "\xEF\xBF\xBD"}) {
        values.push_back(text);
        values.push_back(Dictionary{{text, text}});
    }
    for (const std::uint64_t number : {0ull, 1ull, 255ull, 256ull, 65535ull, 65536ull, 4294967295ull, 4294967296ull,
                                       9223372036854775807ull, 9223372036854775808ull, 18446744073709551615ull}) {
        values.push_back(Integer(number));
        values.push_back(Integer(-static_cast<std::int64_t>(number >> 1) - 1));
    }
    for (const double number : {0.0, -0.0, 1.0, 0.1, -1e300, 5e-324, -2.2250738585072009e-308, HUGE_VAL, -HUGE_VAL,
                                std::numeric_limits<double>::quiet_NaN(), 1.7976931348623157e308, 1e22, 123456.789}) {
        values.push_back(Real(number));
    }
    for (const std::size_t size : {1u, 2u, 3u, 14u, 15u, 57u, 256u, 65536u, 1000000u}) {
        values.push_back(Data{repeated("\xA5", size)});
    }
    for (const Value& value : values) {
        for (const Form form : {Form::xml, Form::binary}) {
            const auto document = parse(write({value, form}));
            ASSERT_TRUE(document) << value.describe();
            EXPECT_EQ(document->form, form) << value.describe();
            EXPECT_EQ(document->root, value) << value.describe();
        }
    }
}

TEST(PropertyListRoundTrip, ComesOutBinaryWhereXmlCannotHoldAValue)
{
    const std::vector<Value> kValues = {Null(),
                                        Uid{1},
                                        "\0"s,
                                        "a\x01",
                                        "\x1F",
                                        "\x0B",
                                        "\xEF\xBF\xBE",
                                        "\xEF\xBF\xBF",
                                        "\xED\xA0\x80",
                                        "\xED\xBF\xBF",
                                        realOfBits(0x7FF8000000000001),
                                        realOfBits(0x7FF0000000000001),
                                        realOfBits(0xFFFFFFFFFFFFFFFF),
                                        singleOfBits(0x7FC00001),
                                        singleOfBits(0x7F800001),
                                        dateOf(0.25),
                                        dateOf(-0.0),
                                        dateOf(1e18),
                                        dateOf(std::bit_cast<double>(0x7FF8000000000123))};
    for (const Value& value : kValues) {
        for (const Value& root : {value, Value(Array{"a", Array{value}}), Value(Dictionary{{"a", value}})}) {
            const auto document = parse(write({root, Form::xml}));
            ASSERT_TRUE(document);
            EXPECT_EQ(document->form, Form::binary) << value.describe();
            EXPECT_EQ(document->root, root) << value.describe();
        }
        if (value.asString()) {
            const Value root = Dictionary{{*value.asString(), "a"}};
            const auto document = parse(write({root, Form::xml}));
            ASSERT_TRUE(document);
            EXPECT_EQ(document->form, Form::binary);
            EXPECT_EQ(document->root, root);
        }
    }
}

TEST(PropertyListRoundTrip, KeepsTheTextOfADateAndTheWidthOfAReal)
{
    const std::string file = xmlFile("<date> 2001-01-02T00:00:00.50</date>");
    const auto document = parse(file);
    ASSERT_TRUE(document);
    EXPECT_EQ(write(*document), file);
    EXPECT_EQ(parse(write({document->root, Form::binary}))->root, Value(dateOf(86400.5)));
    EXPECT_EQ(parse(write({Real(0.1f), Form::binary}))->root, Value(Real(0.1f)));
    EXPECT_EQ(parse(write({Real(0.1f), Form::xml}))->root, Value(Real(static_cast<double>(0.1f))));
}

TEST(PropertyListRoundTrip, ReplacesBytesThatAreNoText)
{
    for (const char* text : {"\x80", "\xC0\x80", "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80",
                             "\xF5\x80\x80\x80", "\xC3", "\xE2\x82", "\xF0\x9F\x8E", "\xC3(", "\xFE"}) {
        for (const Form form : {Form::xml, Form::binary}) {
            const auto document = parse(write({text, form}));
            ASSERT_TRUE(document);
            EXPECT_EQ(document->form, form);
            EXPECT_EQ(document->root.asString()->find("\xEF\xBF\xBD"), 0u) << testing::PrintToString(text);
        }
    }
}

} // namespace
