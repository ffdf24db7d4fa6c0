#include "platform/PropertyList.h"

#include "platform/PropertyListCodec.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <malloc.h>
#endif

#include <bit>
#include <cmath>
#include <fstream>
#include <limits>

namespace {

using namespace platform::plist;
using namespace std::string_literals;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true; // slower, and in need of memory of its own
#else
constexpr bool kSanitized = false;
#endif
#if defined(__linux__)
constexpr bool kMemoryIsMeasured = !kSanitized;
#else
constexpr bool kMemoryIsMeasured = false;
#endif

const std::string kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                            "<plist version=\"1.0\">\n";
const std::string kFooter = "</plist>\n";

std::string xmlFile(const std::string& body)
{
    return kHeader + body + "\n" + kFooter;
}

std::string bigEndian(std::uint64_t number, std::size_t size)
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

Real realOfBits(std::uint64_t bits)
{
    return Real(std::bit_cast<double>(bits));
}
Real singleOfBits(std::uint32_t bits)
{
    return Real(std::bit_cast<float>(bits));
}
Value dateOf(const char* text)
{
    return DateText{text};
}
Value dateOf(double seconds)
{
    return DateSeconds{Real(seconds)};
}

Value nested(int levels)
{
    Value value = Array{};
    for (int i = 1; i < levels; ++i) {
        Array outer;
        outer.push_back(std::move(value));
        value = std::move(outer);
    }
    return value;
}

std::string repeated(std::string_view piece, std::size_t times)
{
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

// One of everything that both forms hold.
Dictionary sample()
{
    return {{"text", "a & b"},
            {"numbers", Array{Integer(-1), Integer(300), Real(1.5), Real(-0.0)}},
            {"truths", Array{true, false}},
            {"data", Data{"\x01\x02\xFF"}},
            {"when", dateOf("2020-02-29T12:30:45Z")},
            {"\xC3\xA9", Dictionary{{"", Array{}}, {"empty", Dictionary{}}}}};
}

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

// The XML form

TEST(PropertyListXml, WritesTheGoldenFile)
{
    const std::string kGolden = kHeader +
                                "<dict>\n"
                                "\t<key>text</key>\n"
                                "\t<string>a &amp; b</string>\n"
                                "\t<key>numbers</key>\n"
                                "\t<array>\n"
                                "\t\t<integer>-1</integer>\n"
                                "\t\t<integer>300</integer>\n"
                                "\t\t<real>1.5</real>\n"
                                "\t\t<real>-0</real>\n"
                                "\t</array>\n"
                                "\t<key>truths</key>\n"
                                "\t<array>\n"
                                "\t\t<true/>\n"
                                "\t\t<false/>\n"
                                "\t</array>\n"
                                "\t<key>data</key>\n"
                                "\t<data>\n"
                                "\tAQL/\n"
                                "\t</data>\n"
                                "\t<key>when</key>\n"
                                "\t<date>2020-02-29T12:30:45Z</date>\n"
                                "\t<key>\xC3\xA9</key>\n"
                                "\t<dict>\n"
                                "\t\t<key></key>\n"
                                "\t\t<array/>\n"
                                "\t\t<key>empty</key>\n"
                                "\t\t<dict/>\n"
                                "\t</dict>\n"
                                "</dict>\n" +
                                kFooter;
    EXPECT_EQ(write({sample(), Form::xml}), kGolden);
    const auto document = parse(kGolden);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->form, Form::xml);
    EXPECT_EQ(document->root, Value(sample()));
}

TEST(PropertyListXml, WritesEveryValueInItsOneWay)
{
    const std::vector<std::pair<Value, std::string>> kCases = {
        {"", "<string></string>"},
        {"  a ", "<string>  a </string>"},
        {"<a> & \"b\" 'c'", "<string>&lt;a&gt; &amp; \"b\" 'c'</string>"},
        {"a\r\nb\rc\nd\te", "<string>a&#13;\nb&#13;c\nd\te</string>"},
        {"\xF0\x9F\x8E\xB9", "<string>\xF0\x9F\x8E\xB9</string>"},
        {"not \xFF UTF-8\xC3", "<string>not \xEF\xBF\xBD UTF-8\xEF\xBF\xBD</string>"},
        {Integer(std::numeric_limits<std::uint64_t>::max()), "<integer>18446744073709551615</integer>"},
        {Integer(std::numeric_limits<std::int64_t>::min()), "<integer>-9223372036854775808</integer>"},
        {Real(0.1), "<real>0.1</real>"},
        {Real(0.1f), "<real>0.10000000149011612</real>"},
        {Real(HUGE_VAL), "<real>+infinity</real>"},
        {Real(-HUGE_VAL), "<real>-infinity</real>"},
        {realOfBits(0x7FF8000000000000), "<real>nan</real>"},
        {realOfBits(0xFFF8000000000000), "<real>-nan</real>"},
        {Real(5e-324), "<real>4.94065645841247e-324</real>"},
        {dateOf(86400.0), "<date>2001-01-02T00:00:00Z</date>"},
        {Data{}, "<data>\n</data>"},
        {Data{"f"}, "<data>\nZg==\n</data>"},
        {Data{"fo"}, "<data>\nZm8=\n</data>"},
        {Data{std::string(58, 'a')},
         "<data>\nYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFh\nYQ==\n</data>"},
    };
    for (const auto& [value, text] : kCases) {
        EXPECT_EQ(write({value, Form::xml}), xmlFile(text));
    }
}

TEST(PropertyListXml, ReadsEveryWayAValueIsWritten)
{
    const std::vector<std::pair<std::string, Value>> kCases = {
        {"<string>a</string>", "a"},
        {"<string/>", ""},
        {"<string> a\tb </string>", " a\tb "},
        {"<string>a<!-- no -->b<?no really?>c</string>", "abc"},
        {"<string>a<![CDATA[<b> & ]]>]]&gt;</string>", "a<b> & ]]>"},
        {"<string>&amp;&lt;&gt;&quot;&apos;</string>", "&<>\"'"},
        {"<string>&#65;&#x42;&#13;&#x1F3B9;</string>", "AB\r\xF0\x9F\x8E\xB9"},
        {"<string>a\r\nb\rc</string>", "a\nb\nc"},
        {"<string a='1'>x</string >", "x"},
        {"<integer>5</integer>", Integer(5)},
        {"<integer> +5\n</integer>", Integer(5)},
        {"<integer>-0</integer>", Integer(0)},
        {"<integer>007</integer>", Integer(7)},
        {"<integer>0x1F</integer>", Integer(31)},
        {"<integer>-0X8000000000000000</integer>", Integer(std::numeric_limits<std::int64_t>::min())},
        {"<integer>1<!-- -->2</integer>", Integer(12)},
        {"<integer>18446744073709551615</integer>", Integer(std::numeric_limits<std::uint64_t>::max())},
        {"<real>1</real>", Real(1.0)},
        {"<real> +1.5E3 </real>", Real(1500.0)},
        {"<real>-0</real>", Real(-0.0)},
        {"<real>.5</real>", Real(0.5)},
        {"<real>NaN</real>", realOfBits(0x7FF8000000000000)},
        {"<real>-nan</real>", realOfBits(0xFFF8000000000000)},
        {"<real>INF</real>", Real(HUGE_VAL)},
        {"<real>-Infinity</real>", Real(-HUGE_VAL)},
        {"<real>2.2250738585072011e-308</real>", realOfBits(0x000FFFFFFFFFFFFF)},
        {"<true/>", true},
        {"<false> </false>", false},
        {"<data/>", Data{}},
        {"<data>\t Zm\r\n 9v Y\tg = =\n</data>", Data{"foob"}},
        {"<data>Zm9vYg</data>", Data{"foob"}},
        {"<data>Zm9v<!-- -->YmE=</data>", Data{"fooba"}},
        {"<array><data>Zg==</data><data>Zm8=</data><data/></array>", Array{Data{"f"}, Data{"fo"}, Data{}}},
        {"<date>2020-01-01T00:00:00Z</date>", dateOf("2020-01-01T00:00:00Z")},
        {"<date> -0044-03-15 </date>", dateOf(" -0044-03-15 ")},
        {"<array>\n<!-- --><string>a</string><array/> </array>", Array{"a", Array{}}},
        {"<dict><key>b</key><string>1</string>\n<key>a</key><dict></dict></dict>",
         Dictionary{{"b", "1"}, {"a", Dictionary{}}}},
        {"<dict><key>a&amp;<![CDATA[<]]></key><true/><key>a</key><true/><key>a</key><false/></dict>",
         Dictionary{{"a&<", true}, {"a", true}, {"a", false}}},
    };
    for (const auto& [body, value] : kCases) {
        for (const std::string& file :
             {xmlFile(body), body, "<plist>" + body + "</plist>", " \n" + kHeader + body + kFooter}) {
            const auto document = parse(file);
            ASSERT_TRUE(document) << file;
            EXPECT_EQ(document->root, value) << file;
            EXPECT_EQ(document->form, Form::xml);
        }
    }
}

std::string utf16(std::u16string_view text, bool bigEndianOrder)
{
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndianOrder ? high : low;
        bytes += bigEndianOrder ? low : high;
    }
    return bytes;
}

TEST(PropertyListXml, ReadsEveryEncoding)
{
    const std::u16string_view kWide = u"\uFEFF<?xml version='1.0' encoding='UTF-16'?><string>é\U0001F3B9</string>";
    const std::u16string_view kBare = u"\uFEFF<string>é\U0001F3B9</string>";
    const std::u16string_view kMislabelled =
        u"\uFEFF<?xml version='1.0' encoding='UTF-8'?><string>é\U0001F3B9</string>";
    const std::string kPiano = "\xC3\xA9\xF0\x9F\x8E\xB9";
    const std::vector<std::pair<std::string, std::string>> kCases = {
        {utf16(kWide, true), kPiano},
        {utf16(kWide, false), kPiano},
        {utf16(kBare, true), kPiano},
        {utf16(kBare, false), kPiano},
        {utf16(kMislabelled, true), kPiano},
        {utf16(kMislabelled, false), kPiano},
        {"<string>" + kPiano + "</string>", kPiano},
        {"\xEF\xBB\xBF<string>" + kPiano + "</string>", kPiano},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><string>" + kPiano + "</string>", kPiano},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><string>\xE9\x80</string>", "\xC3\xA9\xC2\x80"},
        {"<?xml version='1.0' encoding='us-ascii'?><string>a&#233;</string>", "a\xC3\xA9"},
    };
    for (const auto& [file, text] : kCases) {
        const auto document = parse(file);
        ASSERT_TRUE(document) << file;
        EXPECT_EQ(document->root, Value(text)) << file;
    }
}

TEST(PropertyListXml, RefusesWhatIsNoPropertyList)
{
    const std::vector<std::string> kFiles = {
        "",
        " ",
        "hello",
        "{ a = b; }",
        "<plist/>",
        "<plist></plist>",
        "<plist><string>a</string><string>b</string></plist>",
        "<plist><plist><string>a</string></plist></plist>",
        "<plist>junk<string>a</string></plist>",
        "<plist><string>a</string>junk</plist>",
        "<string>a</string>junk",
        "<string>a</string><string>b</string>",
        "<string>a",
        "<string>a</array>",
        "<junk/>",
        "<array><junk/></array>",
        "<array>junk</array>",
        "<array><key>a</key></array>",
        "<array><plist><true/></plist></array>",
        "<key>a</key>",
        "<string>a<string>b</string></string>",
        "<string>a<b/></string>",
        "<true>1</true>",
        "<true><false/></true>",
        "<dict><string>a</string></dict>",
        "<dict><key>a</key></dict>",
        "<dict><key>a</key><key>b</key></dict>",
        "<dict>junk</dict>",
        "<dict><key>a</key><true/><true/></dict>",
        "<integer/>",
        "<integer>1.5</integer>",
        "<integer>1 2</integer>",
        "<integer>+-1</integer>",
        "<integer>0x</integer>",
        "<integer>18446744073709551616</integer>",
        "<integer>-9223372036854775809</integer>",
        "<real/>",
        "<real>1,5</real>",
        "<real>+-1</real>",
        "<real>nan(1)</real>",
        "<real>1e999</real>",
        "<real>1e-999</real>",
        "<date/>",
        "<date>yesterday</date>",
        "<data>Z</data>",
        "<data>Zg=</data>",
        "<data>Zm9v=</data>",
        "<data>====</data>",
        "<data>Zg==Zg==</data>",
        "<data>Zm9v!</data>",
        "<string>\x01</string>",
        "<string>&#1;</string>",
        "<string>&#xFFFE;</string>",
        "<string>&#xD800;</string>",
        "<string>\xED\xA0\x80</string>",
        "<string>\xFF</string>",
        "<string>\0</string>"s,
        "<string>]]></string>",
        "<string>&undefined;</string>",
        xmlFile("<string>&undefined;</string>"),
        "<?xml version='1.0' encoding='us-ascii'?><string>\xE9</string>",
        "<?xml version='1.0' encoding='unheard-of'?><string>a</string>",
        utf16(u"\uFEFF<string>a\xD800z</string>", true),
        utf16(u"\uFEFF<string>a\xDC00z</string>", false),
        utf16(u"\uFEFF<string>a</string>", false) + "x",
    };
    for (const std::string& file : kFiles) {
        EXPECT_FALSE(parse(file)) << file;
    }
}

TEST(PropertyListXml, RefusesEntitiesOfAFilesOwn)
{
    const std::string kStart = "<?xml version='1.0'?><!DOCTYPE plist ";
    const std::vector<std::string> kFiles = {
        kStart + "[<!ENTITY a 'x'>]><string>&a;</string>",
        kStart + "[<!ENTITY a 'x'>]><string>unused</string>",
        kStart + "[<!ENTITY a SYSTEM 'file:///etc/passwd'>]><string>&a;</string>",
        kStart + "[<!ENTITY a SYSTEM 'file:///etc/passwd' NDATA b>]><string>x</string>",
        kStart + "[<!ENTITY % a SYSTEM 'file:///etc/passwd'> %a;]><string>x</string>",
        kStart + "[<!ENTITY % a '<!ENTITY b \"x\">'> %a;]><string>x</string>",
        kStart + "[%a;]><string>x</string>",
        kStart + "[<!ATTLIST plist version CDATA '1.0'>]><string>x</string>",
        kStart + "SYSTEM 'file:///dev/zero'><string>&a;</string>",
    };
    for (const std::string& file : kFiles) {
        EXPECT_FALSE(parse(file)) << file;
    }
    const auto harmless = parse(kStart + "SYSTEM 'file:///dev/zero'><!-- a --><string>x</string>");
    ASSERT_TRUE(harmless);
    EXPECT_EQ(harmless->root, Value("x"));
}

// The binary form

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
    EXPECT_FALSE(parse("bplist00"));
    EXPECT_FALSE(parse("bplist00" + kForm.trailer(1, 0, 8)));
    EXPECT_FALSE(parse("bplist01\x51x\x08" + kForm.trailer(1, 0, 10)));
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

// Hostile files

struct Outcome {
    bool accepted;
    double seconds;   // of processor time
    double megabytes; // at the peak, beyond what was there before
};

// Memory in use, in kibibytes; what was freed is given back first, so that it cannot hide what a parse takes.
double residentMemory()
{
#if defined(__linux__)
    malloc_trim(0);
    long pages = 0;
    std::ifstream("/proc/self/statm").ignore(32, ' ') >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
#else
    return 0;
#endif
}

// Parses in a process of its own and measures it.
Outcome measured(const std::string& bytes)
{
    const double before = residentMemory();
    const pid_t child = fork();
    if (child == 0) {
        _exit(parse(bytes) ? 0 : 1);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    EXPECT_TRUE(WIFEXITED(status));
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, seconds(usage.ru_utime) + seconds(usage.ru_stime),
            (static_cast<double>(usage.ru_maxrss) - before) / 1024};
}

void expectBounded(const std::string& what, const std::string& bytes, bool accepted)
{
    const Outcome outcome = measured(bytes);
    EXPECT_EQ(outcome.accepted, accepted) << what;
    EXPECT_LT(outcome.seconds, kSanitized ? 20.0 : 1.0) << what;
    if (kMemoryIsMeasured) {
        EXPECT_LT(outcome.megabytes, 200.0) << what;
    }
    testing::Test::RecordProperty(what,
                                  std::to_string(outcome.seconds) + " s, " + std::to_string(outcome.megabytes) + " MB");
}

// Arrays in arrays, a binary file of one object per level; every level refers `times` to the next.
std::string binaryLevels(std::size_t levels, std::size_t times, const std::string& leaf)
{
    BinaryFile file{{}, 2, 4};
    for (std::size_t i = 1; i <= levels; ++i) {
        file.objects.push_back(static_cast<char>(0xA0 + times) + repeated(bigEndian(i, 2), times));
    }
    file.objects.push_back(leaf);
    return file.bytes();
}

TEST(PropertyListHostile, BoundsDepth)
{
    for (const std::size_t levels : {512u, 513u, 50'000u}) {
        const bool accepted = levels <= 512;
        const std::string arrays = repeated("<array>", levels);
        expectBounded("xml arrays", arrays + repeated("</array>", levels), accepted);
        const std::string dicts = repeated("<dict><key>a</key>", levels - 1) + "<dict>";
        expectBounded("xml dictionaries", dicts + repeated("</dict>", levels), accepted);
        expectBounded("binary arrays", binaryLevels(levels, 1, "\x09"), accepted);
    }
    expectBounded("unclosed", repeated("<array>", 50'000), false);
    expectBounded("unknown elements", repeated("<a>", 50'000), false);
}

TEST(PropertyListHostile, BoundsSharing)
{
    const std::string leaf = "\x4F\x12" + bigEndian(1'000'000, 4) + std::string(1'000'000, 'x');
    expectBounded("two to the power of 18", binaryLevels(18, 2, "\x09"), true);
    expectBounded("two to the power of 64", binaryLevels(64, 2, "\x09"), false);
    expectBounded("fourteen to the power of 500", binaryLevels(500, 14, "\x09"), false);
    expectBounded("empty arrays", binaryLevels(20, 14, "\xA0"), false);
    expectBounded("shared megabyte", binaryLevels(6, 2, leaf), true);
    expectBounded("shared megabyte, too often", binaryLevels(7, 2, leaf), false);
    std::vector<std::string> dictionaries(60);
    for (std::size_t i = 0; i < dictionaries.size(); ++i) {
        const char next = static_cast<char>(i + 1), key = static_cast<char>(60);
        dictionaries[i] = std::string{'\xD2', key, key, next, next};
    }
    dictionaries.push_back("\x51k");
    expectBounded("dictionaries", BinaryFile{dictionaries}.bytes(), false);
    const std::string wide = "\xAF\x12" + bigEndian(1'000'000, 4) + std::string(2'000'000, '\0');
    expectBounded("a million of itself", BinaryFile{{wide}, 2, 4}.bytes(), false);
    const std::string many = "\xAF\x12" + bigEndian(900'000, 4) + repeated("\1", 900'000);
    expectBounded("many short texts", BinaryFile{{many, "\x5F\x10\x18" + std::string(24, 'x')}, 1, 4}.bytes(), true);
    const std::string wideText = "\x6F\x12" + bigEndian(8'000'000, 4) + repeated("\x65\xE5", 8'000'000);
    expectBounded("long wide texts", BinaryFile{{"\xA2\1\1", wideText}, 1, 4}.bytes(), true);
    expectBounded("too long wide texts", BinaryFile{{"\xA3\1\1\1", wideText}, 1, 4}.bytes(), false);
}

TEST(PropertyListHostile, BoundsCycles)
{
    expectBounded("itself", BinaryFile{{"\xA1\x00"s}}.bytes(), false);
    expectBounded("itself twice", BinaryFile{{"\xA2\x00\x00"s}}.bytes(), false);
    expectBounded("each other", BinaryFile{{"\xA1\x01", "\xD1\x02\x00"s, "\x51k"}}.bytes(), false);
    expectBounded("itself after much", BinaryFile{{"\xA3\x01\x01\x00"s, "\x09"}}.bytes(), false);
    expectBounded("own value", BinaryFile{{"\xD1\x01\x00"s, "\x51k"}}.bytes(), false);
    expectBounded("own key", BinaryFile{{"\xD1\x00\x00"s}}.bytes(), false);
}

TEST(PropertyListHostile, BoundsEntities)
{
    std::string laughs = "<?xml version='1.0'?><!DOCTYPE plist [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 20; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ";";
        laughs += "<!ENTITY a" + std::to_string(i) + " '" + repeated(before, 10) + "'>";
    }
    expectBounded("nested", laughs + "]><string>&a19;</string>", false);
    expectBounded("repeated",
                  "<!DOCTYPE plist [<!ENTITY a '" + std::string(100'000, 'x') + "'>]><string>" +
                      repeated("&a;", 100'000) + "</string>",
                  false);
}

TEST(PropertyListHostile, BoundsWhatXmlAllowsWithoutEnd)
{
    expectBounded("many values", "<array>" + repeated("<true/>", 999'999) + "</array>", true);
    expectBounded("too many values", "<array>" + repeated("<true/>", 1'000'000) + "</array>", false);
    const std::string texts = "<array>" + repeated("<string>sixteen letters.</string>", 17) + "</array>";
    expectBounded("many texts", "<array>" + repeated(texts, 55'000) + "</array>", true);
    expectBounded("comments", "<array>" + repeated("<!---->", 4'000'000) + "</array>", true);
    expectBounded("line feeds", "<string>" + std::string(10'000'000, '\n') + "</string>", false);
    expectBounded("references", "<string>" + repeated("&#9;", 9'000'000) + "</string>", false);
    expectBounded("blanks", std::string(10'000'000, ' ') + "<true/>" + std::string(10'000'000, ' '), true);
    expectBounded("long comment", "<array><!--" + std::string(10'000'000, 'x') + "--></array>", false);
    expectBounded("long comments", "<array>" + repeated("<!--" + std::string(1'900'000, 'x') + "-->", 10) + "</array>",
                  true);
    expectBounded("long name", "<" + std::string(10'000'000, 'x') + "/>", false);
    expectBounded("long attribute", "<string a='" + std::string(10'000'000, 'x') + "'/>", false);
    expectBounded("long text", "<string>" + std::string(67'000'000, 'x') + "</string>", true);
    expectBounded("long data", "<data>" + std::string(67'000'000, 'A') + "</data>", true);
    expectBounded("long number", "<real>0." + std::string(67'000'000, '1') + "</real>", false);
    expectBounded("too large a file", std::string(67'108'864, ' ') + "<true/>", false);

    std::string attributes, elements = "<array>";
    for (int i = 0; i < 1'000'000; ++i) {
        const std::string name = " a" + std::to_string(i) + "=''";
        attributes += i < 400'000 ? name : "";
        elements += i % 16 == 0 ? "<true" : "";
        elements += name;
        elements += i % 16 == 15 ? "/>" : "";
    }
    expectBounded("attributes", "<array" + attributes + "/>", false);
    expectBounded("attributes of many elements", elements + "</array>", false);

    const std::string dates = repeated("<date>2001-01-01T00:00:00Z</date>", 300'000);
    expectBounded("dates", "<array>" + dates + "</array>", true);
    expectBounded("reals", "<array>" + repeated("<real>0.12345678901234567</real>", 300'000) + "</array>", true);
}

TEST(PropertyListHostile, RefusesEveryTruncatedFile)
{
    for (const Form form : {Form::xml, Form::binary}) {
        const std::string whole = write({sample(), form});
        ASSERT_TRUE(parse(whole));
        for (std::size_t size = 0; size < whole.size() - 1; ++size) { // the line feed after </plist> may be missing
            EXPECT_FALSE(parse(std::string_view(whole).substr(0, size))) << size;
        }
    }
}

TEST(PropertyListHostile, SurvivesEveryChangedByte)
{
    Dictionary rich = sample();
    rich.set("uid", Uid{300});
    rich.set("null", Null());
    rich.set("single", Real(1.5f));
    rich.set("wide", "\xE6\x97\xA5\xF0\x9F\x8E\xB9 and more than fifteen");
    int accepted = 0, refused = 0;
    for (const std::string& whole : {write({rich, Form::binary}), write({sample(), Form::xml})}) {
        for (std::size_t at = 0; at < whole.size(); ++at) {
            std::string changed = whole;
            for (int byte = 0; byte < 256; byte += byte < 16 ? 1 : 5) {
                changed[at] = static_cast<char>(byte);
                const auto document = parse(changed);
                ++(document ? accepted : refused);
                if (document) {
                    const auto again = parse(write(*document));
                    ASSERT_TRUE(again) << at << " " << byte;
                    ASSERT_EQ(again->root, document->root) << at << " " << byte;
                }
            }
        }
    }
    EXPECT_GT(accepted, 1000);
    EXPECT_GT(refused, 1000);
}

TEST(PropertyListHostile, WritesDeepDocumentsWithoutFillingThemWithTabs)
{
    Value deep = nested(500);
    Array* innermost = std::get_if<Array>(&deep.held);
    while (!innermost->empty()) {
        innermost = std::get_if<Array>(&innermost->front().held);
    }
    innermost->assign(100'000, "x");
    innermost->push_back(Data{std::string(1'000'000, 'x')});
    const std::string bytes = write({deep, Form::xml});
    EXPECT_LT(bytes.size(), 8'000'000u);
    EXPECT_EQ(parse(bytes)->root, deep);
}

} // namespace
