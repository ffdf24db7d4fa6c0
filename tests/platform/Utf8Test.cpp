#include "platform/Utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Utf8, IsAsciiOnlyWithoutAnyHighByte)
{
    EXPECT_TRUE(platform::isAscii(""));
    EXPECT_TRUE(platform::isAscii("plain <b> & 'text' ~\x7f\t\n"));
    EXPECT_TRUE(platform::isAscii(std::string("a\0b", 3)));
    for (const char* text : {"\x80", "caf\xC3\xA9", "a long plain text and then one \xFF"})
        EXPECT_FALSE(platform::isAscii(text)) << text;
}

TEST(Utf8, IsThatOfWholeShortestCodePointsThroughout)
{
    for (const char* text : {"", "plain", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                             "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(platform::isUtf8(text)) << text;
    for (const char* text : {"\x80", "a\xC3", "\xC0\xAF", "\xC3(", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                             "\xE2\x82", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"})
        EXPECT_FALSE(platform::isUtf8(text)) << text;
}

} // namespace
