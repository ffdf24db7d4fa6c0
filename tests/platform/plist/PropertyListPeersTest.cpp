// Our property lists against other programs': plistlib makes documents and we read and rewrite them, we make documents
// and plistlib reads them, and plistutil converts between our forms. Python runs twice, whatever the number of files.

#include "platform/plist/PropertyListCodec.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace {

using namespace platform::plist;
namespace fs = std::filesystem;

std::string hex(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4];
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

std::string hexOfBits(double number)
{
    std::array<char, 17> text;
    std::snprintf(text.data(), text.size(), "%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(number)));
    return text.data();
}

// The notation of plist_peer.py.
struct Canon {
    static std::string of(const Value& value) { return std::visit(Canon(), value.held); }

    std::string operator()(Null) const { return "n"; }
    std::string operator()(bool truth) const { return truth ? "t" : "f"; }
    std::string operator()(Integer number) const { return "i" + number.toString(); }
    std::string operator()(Real number) const { return "r" + hexOfBits(number.toDouble()); }
    std::string operator()(const std::string& text) const { return "s" + hex(text); }
    std::string operator()(const Data& data) const { return "d" + hex(data.bytes); }
    std::string operator()(DateSeconds date) const { return "D" + hexOfBits(date.seconds.toDouble()); }
    std::string operator()(const DateText& date) const { return "D" + hexOfBits(secondsOfDate(date.text).value()); }
    std::string operator()(Uid uid) const { return "u" + std::to_string(uid.number); }
    std::string operator()(const Array& array) const
    {
        std::string text;
        for (const Value& value : array) {
            text += (text.empty() ? "" : ",") + of(value);
        }
        return "[" + text + "]";
    }
    std::string operator()(const Dictionary& dictionary) const
    {
        std::string text;
        for (const auto& [key, value] : dictionary.entries) {
            text += (text.empty() ? "" : ",") + of(key) + ":" + of(value);
        }
        return "{" + text + "}";
    }
};

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void store(const fs::path& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

int runPeer(const char* command, const fs::path& folder)
{
    const std::string script = std::string(KV_TESTS_DIR) + "/platform/plist/plist_peer.py";
    const pid_t child = fork();
    if (child == 0) {
        execlp("python3", "python3", "-B", script.c_str(), command, folder.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// Random values of every kind that plistlib can hold.
class Maker {
public:
    Maker(unsigned seed, Form form) : random_(seed), form_(form) {}

    Value document()
    {
        Dictionary root;
        root.set("leaf", leaf());
        root.set("tree", value(3));
        root.set("more", Array{value(2), value(2), value(2), value(1)});
        return root;
    }

private:
    std::uint64_t below(std::uint64_t limit) { return random_() % limit; }

    std::string text()
    {
        static const std::array<std::string, 10> kPieces = {
            "a", " ", "\r", "\r\n", "&<>", "é", "日本", "\xF0\x9F\x8E\xB9", "\xEF\xBF\xBD", "\t\n"};
        std::string text;
        for (std::uint64_t count = below(12); count > 0; --count) {
            text += kPieces[below(kPieces.size())];
        }
        return form_ == Form::binary && below(10) == 0 ? text + std::string(1, '\0') + "\x1F" : text;
    }

    Value leaf()
    {
        switch (below(form_ == Form::xml ? 7 : 10)) {
        case 0: return below(2) == 0;
        case 1: return Integer(random_() >> below(64));
        case 2: return Integer(-static_cast<std::int64_t>(random_() >> (1 + below(63))));
        case 3: {
            const auto number = std::bit_cast<double>(random_());
            return Real(number == number ? number : -0.0);
        }
        case 4: return Data{text() + text()};
        case 5: return DateSeconds{Real(static_cast<double>(below(300'000'000'000)) - 60'000'000'000)};
        case 7: return Null();
        case 8: return Uid{random_() >> below(64)};
        case 9: return Real(static_cast<float>(below(1'000'000)) / 7);
        default: return text();
        }
    }

    Value value(int depth)
    {
        const std::uint64_t choice = depth == 0 ? 0 : below(4);
        if (choice < 2) {
            return leaf();
        }
        const std::uint64_t count = below(18);
        Array array;
        Dictionary dictionary;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (choice == 2) {
                array.push_back(value(depth - 1));
            } else {
                dictionary.set(text(), value(depth - 1));
            }
        }
        return choice == 2 ? Value(array) : Value(dictionary);
    }

    std::mt19937_64 random_;
    Form form_;
};

class PropertyListPeers : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "plist-peers-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { fs::remove_all(folder_); }

    // Reads what a peer made, compares it with what it meant, and writes it in both forms for the peer to read.
    void readAndRewrite(const fs::path& path, const std::string& expected, bool xmlHolds)
    {
        SCOPED_TRACE(path.filename());
        const auto document = parse(contentOf(path));
        ASSERT_TRUE(document);
        ASSERT_EQ(document->form, path.extension() == ".bin" ? Form::binary : Form::xml);
        ASSERT_EQ(Canon::of(document->root), expected);
        for (const Form form : {Form::xml, Form::binary}) {
            const bool binary = form == Form::binary || !xmlHolds;
            const std::string from = path.stem().string() + ".from" + path.extension().string().substr(1);
            const std::string bytes = write({document->root, form});
            const auto again = parse(bytes);
            ASSERT_TRUE(again);
            ASSERT_EQ(again->form, binary ? Form::binary : Form::xml);
            ASSERT_EQ(Canon::of(again->root), expected);
            store(folder_ / (from + (form == Form::xml ? "toxml" : "tobin") + (binary ? ".bin" : ".xml")), bytes);
        }
    }

    fs::path folder_;
};

TEST_F(PropertyListPeers, ReadWhatWeWriteAndWriteWhatWeRead)
{
    ASSERT_EQ(runPeer("make", folder_), 0);
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder_)) {
        if (entry.path().extension() != ".canon") {
            files.push_back(entry.path());
        }
    }
    ASSERT_GE(files.size(), 400u);
    for (const fs::path& path : files) {
        const bool xmlHolds = !path.filename().string().starts_with("binary");
        readAndRewrite(path, contentOf(fs::path(path).replace_extension(".canon")), xmlHolds);
    }

    for (unsigned i = 0; i < 150; ++i) {
        const Form form = i % 3 == 0 ? Form::binary : Form::xml;
        const Value root = Maker(i, form).document();
        const std::string name = "ours" + std::to_string(i);
        store(folder_ / (name + ".canon"), Canon::of(root));
        store(folder_ / (name + ".made.bin"), write({root, Form::binary}));
        if (form == Form::xml) {
            store(folder_ / (name + ".made.xml"), write({root, Form::xml}));
        }
    }

    EXPECT_EQ(runPeer("check", folder_), 0) << "what differs is on standard output";
}

// What values.txt says is ours, and of plistlib whether it reads a file as the same.
TEST_F(PropertyListPeers, ReadEveryFileOfTheRulesAsTheTableSays)
{
    EXPECT_EQ(runPeer("rules", fs::path(KV_TESTS_DIR) / "data/plist"), 0) << "what differs is on standard output";
}

} // namespace
