// The XML form to the byte: what is written, what is read, what is refused.

#include "platform/plist/PropertyListCodec.h"
#include "tests/platform/plist/PropertyListSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace platform::plist;
using namespace std::string_literals;

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
        {"<string>a\r\nb\rc</string>", "a\r\nb\rc"},
        {"<string>a\x01\x1F</string>", "a\x01\x1F"},
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
        {"<data>Z</data>", Data{}},
        {"<data>Zg=</data>", Data{"f"}},
        {"<data>Zm9v=</data>", Data{"foo"}},
        {"<data>====</data>", Data{}},
        {"<data>Zg==Zg==</data>", Data{"ff"}},
        {"<data>Zm9v&v;</data>", Data{"foo"}},
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
        {"<?xml version='1.0' encodings='utf-16'?><string>a</string>", "a"},
        {"<?xml encoding?><string>a</string>", "a"},
        {"<?xml encoding=?><string>a</string>", "a"},
        {"<?xmlx encoding='unheard-of'?><string>a</string>", "a"},
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
        "<plist/>",
        "<plist></plist>",
        "<plist><string>a</string><string>b</string></plist>",
        "<plist><plist><string>a</string></plist></plist>",
        "<plist>junk<string>a</string></plist>",
        "<plist><string>a</string>junk</plist>",
        "<plist><string>a</string>",
        "<plist><string>a</string></plists>",
        "<plist><!DOCTYPE plist><string>a</string></plist>",
        "<string>a",
        "<string>a</array>",
        "<string>a</string",
        "<string>a</string x>",
        "<strings>a</strings>",
        "<stringa>a</stringa>",
        "<string a='>a</string>",
        "<string><![CDATA[a</string>",
        "<string><!-- a</string>",
        "<string>a<",
        "<array></array",
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
        "<data>\x80</data>",
        "<data>Zg==<true/></data>",
        "<date/>",
        "<date>yesterday</date>",
        "<string>&#xD800;</string>",
        "<string>\xED\xA0\x80</string>",
        "<string>\xFF</string>",
        "<string>&undefined;</string>",
        xmlFile("<string>&undefined;</string>"),
        "<?xml version='1.0' encoding='us-ascii'?><string>\xE9</string>",
        "<?xml version='1.0' encoding='unheard-of'?><string>a</string>",
        "<?xml version='1.0' encoding=''?><string>a</string>",
        "<?xml version='1.0' encoding='UTF-8//IGNORE'?><string>a</string>",
        "<?xml version='1.0' encoding='" + std::string(1000, 'x') + "'?><string>a</string>",
        utf16(u"\uFEFF<string>a\xD800z</string>", true),
        utf16(u"\uFEFF<string>a\xDC00z</string>", false),
    };
    for (const std::string& file : kFiles) {
        EXPECT_FALSE(parse(file)) << file;
    }
}

TEST(PropertyListXml, KnowsNoEntityOfAFilesOwn)
{
    const std::string kStart = "<?xml version='1.0'?><!DOCTYPE plist ";
    const std::vector<std::string> kTypes = {
        "[<!ENTITY a 'x'>]",
        "[<!ENTITY a SYSTEM 'file:///etc/passwd'>]",
        "[<!ENTITY a SYSTEM 'file:///etc/passwd' NDATA b>]",
        "[<!ENTITY % b SYSTEM 'file:///etc/passwd'> %b;]",
        "[<!ENTITY % b '<!ENTITY a \"]>\">'> %b;]",
        "[%a;]",
        "[<!ATTLIST plist version CDATA '1.0'>]",
        "SYSTEM 'file:///dev/zero'",
        "PUBLIC '[<' \">\" [<!-- ]> ' --><?a ]> \" ?><![INCLUDE[<!ENTITY a ']>'>]]>]",
    };
    for (const std::string& type : kTypes) {
        const auto harmless = parse(kStart + type + "><string>x</string>");
        ASSERT_TRUE(harmless) << type;
        EXPECT_EQ(harmless->root, Value("x")) << type;
        EXPECT_FALSE(parse(kStart + type + "><string>&a;</string>")) << type;
    }
    for (const char* type : {"", "[", "[<!ENTITY a 'x'>", "['", "'", "[<!-- ]>", "[<? ]>", "]", "[<]"}) {
        EXPECT_FALSE(parse(kStart + type + "<string>x</string>")) << type;
    }
}

} // namespace
