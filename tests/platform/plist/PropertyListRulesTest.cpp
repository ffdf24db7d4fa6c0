// A file for each rule of what is read, and what it says: tests/data/plist, where values.txt has the values.

#include "platform/plist/PropertyListCodec.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <variant>

namespace {

using namespace platform::plist;
namespace fs = std::filesystem;

// The notation of values.txt; plist_peer.py writes it too.
struct Plain {
    static std::string of(const Value& value) { return std::visit(Plain(), value.held); }

    std::string operator()(Null) const { return "null"; }
    std::string operator()(bool truth) const { return truth ? "true" : "false"; }
    std::string operator()(Integer number) const { return number.toString(); }
    std::string operator()(Real number) const { return "real " + digits(number.toDouble()); }
    std::string operator()(DateSeconds date) const { return "date " + digits(date.seconds.toDouble()); }
    std::string operator()(const DateText& date) const { return "date " + digits(secondsOfDate(date.text).value()); }
    std::string operator()(Uid uid) const { return "uid " + std::to_string(uid.number); }
    std::string operator()(const std::string& text) const
    {
        std::string shown = "\"";
        for (const char c : text) {
            const bool isPlain = c >= ' ' && c < '\x7F' && c != '"' && c != '\\';
            shown += isPlain ? std::string(1, c) : "\\x" + hex(c);
        }
        return shown + "\"";
    }
    std::string operator()(const Data& data) const
    {
        std::string shown = "<";
        for (const char c : data.bytes) {
            shown += hex(c);
        }
        return shown + ">";
    }
    std::string operator()(const Array& array) const
    {
        std::string shown;
        for (const Value& value : array) {
            shown += (shown.empty() ? "" : ", ") + of(value);
        }
        return "[" + shown + "]";
    }
    std::string operator()(const Dictionary& dictionary) const
    {
        Dictionary once; // each key with the value that counts
        for (const auto& [key, value] : dictionary.entries) {
            once.set(key, *dictionary.find(key));
        }
        std::string shown;
        for (const auto& [key, value] : once.entries) {
            shown += (shown.empty() ? "" : ", ") + of(key) + ": " + of(value);
        }
        return "{" + shown + "}";
    }

    static std::string hex(char c)
    {
        const auto byte = static_cast<unsigned char>(c);
        return {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    }
    static std::string digits(double number)
    {
        std::array<char, 32> text;
        std::snprintf(text.data(), text.size(), "%.17g", number);
        return text.data();
    }
};

class PropertyListRules : public testing::Test {
protected:
    // By file name.
    static std::map<std::string, std::string> expectedValues()
    {
        std::map<std::string, std::string> values;
        std::istringstream lines(test::read(folder() / "values.txt"));
        for (std::string name, peer, value; std::getline(lines, name, '\t');) {
            std::getline(lines, peer, '\t');
            std::getline(lines, value);
            values[name + ".plist"] = value;
        }
        return values;
    }
    static fs::path folder() { return fs::path(KV_TESTS_DIR) / "data/plist"; }
};

TEST_F(PropertyListRules, EveryFileIsReadAsItIsMeant)
{
    for (const auto& [file, value] : expectedValues()) {
        const auto document = parse(test::read(folder() / file));
        EXPECT_EQ(document ? Plain::of(document->root) : "refused", value) << file;
    }
}

TEST_F(PropertyListRules, WhatIsReadIsReadAgainWhenItWasWritten)
{
    int written = 0;
    for (const auto& [file, value] : expectedValues()) {
        const auto document = parse(test::read(folder() / file));
        if (document) {
            const auto again = parse(write(*document));
            ASSERT_TRUE(again) << file;
            EXPECT_EQ(Plain::of(again->root), value) << file;
            ++written;
        }
    }
    EXPECT_GT(written, 70);
}

TEST_F(PropertyListRules, EveryFileIsListed)
{
    auto values = expectedValues();
    EXPECT_GT(values.size(), 150u);
    for (const auto& entry : fs::directory_iterator(folder())) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "values.txt" || values.contains(name)) << name;
    }
}

} // namespace
