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

} // namespace
