// Files made to cost time, memory or stack; each is parsed in a process of its own.

#include "platform/plist/PropertyListCodec.h"
#include "tests/platform/plist/PropertyListSamples.h"

#include <gtest/gtest.h>

#include <fstream>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(__linux__)
#include <malloc.h>
#endif

namespace {

using namespace platform::plist;
using namespace std::string_literals;

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
constexpr bool kMemoryIsMeasured = true;
#else
constexpr bool kMemoryIsMeasured = false; // the sanitizer needs memory of its own
#endif

struct Outcome {
    bool accepted;
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
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, (static_cast<double>(usage.ru_maxrss) - before) / 1024};
}

void expectBounded(const std::string& what, const std::string& bytes, bool accepted)
{
    const Outcome outcome = measured(bytes);
    EXPECT_EQ(outcome.accepted, accepted) << what;
    if (kMemoryIsMeasured) {
        EXPECT_LT(outcome.megabytes, 200.0) << what;
    }
    testing::Test::RecordProperty(what, std::to_string(outcome.megabytes) + " MB");
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
        expectBounded("old-style arrays", std::string(levels, '(') + std::string(levels, ')'), accepted);
        expectBounded("old-style dictionaries", repeated("{a=", levels) + "b" + repeated(";}", levels), accepted);
    }
    expectBounded("unclosed", repeated("<array>", 50'000), false);
    expectBounded("unclosed old-style", std::string(60'000'000, '('), false);
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
    expectBounded("declarations", "<!DOCTYPE plist [" + repeated("<!ENTITY a '>'>", 4'000'000) + "]><true/>", true);
    expectBounded("unfinished declarations", "<!DOCTYPE plist [" + repeated("<!ENTITY a '>'", 4'000'000), false);
}

TEST(PropertyListHostile, BoundsWhatXmlAllowsWithoutEnd)
{
    expectBounded("many values", "<array>" + repeated("<true/>", 999'999) + "</array>", true);
    expectBounded("too many values", "<array>" + repeated("<true/>", 1'000'000) + "</array>", false);
    const std::string texts = "<array>" + repeated("<string>sixteen letters.</string>", 17) + "</array>";
    expectBounded("many texts", "<array>" + repeated(texts, 55'000) + "</array>", true);
    expectBounded("comments", "<array>" + repeated("<!---->", 4'000'000) + "</array>", true);
    expectBounded("comments in a text", "<string>" + repeated("a<!---->", 4'000'000) + "</string>", true);
    expectBounded("line feeds", "<string>" + std::string(60'000'000, '\n') + "</string>", true);
    expectBounded("references", "<string>" + repeated("&#9;", 9'000'000) + "</string>", true);
    expectBounded("long reference", "<string>&#" + std::string(60'000'000, '0') + "9;</string>", true);
    expectBounded("ampersands", "<data>" + std::string(30'000'000, '&') + "</data>", true);
    expectBounded("unfinished references", "<data>" + repeated("&#12345678", 6'000'000) + "</data>", true);
    expectBounded("blanks", std::string(30'000'000, ' ') + "<true/>" + std::string(30'000'000, ' '), true);
    expectBounded("tail", "<true/>" + repeated("<array>", 9'000'000), true);
    expectBounded("long comment", "<array><!--" + std::string(60'000'000, 'x') + "--></array>", true);
    expectBounded("comment of dashes", "<array><!--" + std::string(30'000'000, '-') + "--></array>", true);
    expectBounded("unfinished comments", repeated("<!--", 10'000'000), false);
    expectBounded("long name", "<" + std::string(10'000'000, 'x') + "/>", false);
    expectBounded("long attribute", "<string a='" + std::string(60'000'000, 'x') + "'/>", true);
    expectBounded("long text", "<string>" + std::string(67'000'000, 'x') + "</string>", true);
    expectBounded("long text in pieces", "<string>&lt;" + std::string(67'000'000, 'x') + "</string>", true);
    expectBounded("long data", "<data>" + std::string(67'000'000, 'A') + "</data>", true);
    expectBounded("long number", "<real>0." + std::string(67'000'000, '1') + "</real>", false);
    expectBounded("long integer", "<integer>" + std::string(67'000'000, '0') + "</integer>", true);
    expectBounded("too large a file", std::string(67'108'864, ' ') + "<true/>", false);
    expectBounded("attributes", "<array" + repeated(" a=''", 10'000'000) + "/>", true);

    const std::string dates = repeated("<date>2001-01-01T00:00:00Z</date>", 300'000);
    expectBounded("dates", "<array>" + dates + "</array>", true);
    expectBounded("reals", "<array>" + repeated("<real>0.12345678901234567</real>", 300'000) + "</array>", true);
}

TEST(PropertyListHostile, BoundsWhatOldStyleListsAllowWithoutEnd)
{
    expectBounded("many values", "(" + repeated("<>,", 999'999) + ")", true);
    expectBounded("too many values", "(" + repeated("<>,", 1'000'000) + ")", false);
    expectBounded("many keys alone", repeated("a;", 500'000), true);
    expectBounded("too many keys alone", repeated("a;", 500'001), false);
    expectBounded("long key alone", std::string(30'000'000, 'a') + ";", true);
    expectBounded("too long a key alone", std::string(60'000'000, 'a') + ";", false);
    expectBounded("comments", repeated("/**/", 16'000'000) + "a", true);
    expectBounded("lines", repeated("//\n", 16'000'000) + "a", true);
    expectBounded("unfinished comments", repeated("/*", 16'000'000) + "a", false);
    expectBounded("long text", "\"" + std::string(67'000'000, 'x') + "\"", true);
    expectBounded("escapes", "\"" + repeated("\\377", 6'000'000) + "\"", true);
    expectBounded("unfinished text", "(\"" + repeated("\\\"", 15'000'000), false);
    expectBounded("long data", "<" + std::string(67'000'000, 'A') + ">", true);
}

TEST(PropertyListHostile, BoundsEncodings)
{
    const auto declared = [](const std::string& encoding, const std::string& text) {
        return "<?xml version='1.0' encoding='" + encoding + "'?><string>" + text + "</string>";
    };
    std::string wide = "\xFF\xFE";
    for (const char c : "<string>" + std::string(21'000'000, 'x') + "</string>") {
        wide += {c, '\0'};
    }
    expectBounded("UTF-16", wide, true);
    expectBounded("growing", declared("ISO-8859-1", std::string(33'000'000, '\xE9')), true);
    expectBounded("growing too much", declared("ISO-8859-1", std::string(60'000'000, '\xE9')), false);
    expectBounded("most growing", declared("TIS-620", std::string(60'000'000, '\xA1')), false);
    expectBounded("two bytes a letter", declared("GB18030", repeated("\xD2\xF4", 8'000'000)), true);
    expectBounded("slow", declared("IBM932", repeated("\x81\x40", 8'000'000)), true);
    expectBounded("slow and long", declared("IBM932", repeated("\x81\x40", 9'000'000)), false);
    expectBounded("with states", declared("ISO-2022-JP", repeated("\x1B$B2;\x1B(B", 1'000'000)), true);
    expectBounded("UTF-7", declared("UTF-7", repeated("+AOk-", 12'000'000)), true);
    expectBounded("long name of an encoding",
                  "<?xml version='1.0' encoding='" + std::string(60'000'000, 'x') + "'?><true/>", false);
    expectBounded("declaration", "<?xml " + std::string(60'000'000, 'x') + "?><true/>", true);
}

TEST(PropertyListHostile, RefusesEveryTruncatedFile)
{
    for (const Form form : {Form::xml, Form::binary}) {
        const std::string whole = write({sample(), form});
        ASSERT_TRUE(parse(whole));
        for (std::size_t size = 0; size < whole.size() - 1; ++size) { // the line feed after </plist> may be missing
            const auto document = parse(std::string_view(whole).substr(0, size));
            EXPECT_FALSE(document && !document->root.asString()) << size; // "bplist00" is an old-style text
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
                    const bool sameForm = again->form == document->form; // else the text of the date is gone
                    ASSERT_EQ(again->root, sameForm ? document->root : parse(writeBinary(document->root))->root)
                        << at << " " << byte;
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
