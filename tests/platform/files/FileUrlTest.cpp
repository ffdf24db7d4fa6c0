#include "platform/files/FileUrl.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

using platform::fileUrl;

TEST(FileUrl, KeepsEveryByteOfThePath)
{
    struct Row {
        const char* path;
        const char* url;
    };
    const Row rows[] = {
        {"/", "file:///"},
        {"/Library/Audio/Presets", "file:///Library/Audio/Presets"},
        {"/a-b._~/0189AZaz", "file:///a-b._~/0189AZaz"},
        {"/EQ One/CSParameterOrder.plist.html", "file:///EQ%20One/CSParameterOrder.plist.html"},
        {"/a#b?c%d", "file:///a%23b%3Fc%25d"},
        {"/50%20", "file:///50%2520"},
        {"/\"quoted\" 'single'", "file:///%22quoted%22%20%27single%27"},
        {"/R&D <b>;:@=+,!$*()[]", "file:///R%26D%20%3Cb%3E%3B%3A%40%3D%2B%2C%21%24%2A%28%29%5B%5D"},
        {"/\\|^`{}", "file:///%5C%7C%5E%60%7B%7D"},
        {"/\xC3\x89"
         "cho",
         "file:///%C3%89cho"},
        {"/\xF0\x9F\x8C\x8A", "file:///%F0%9F%8C%8A"},
        {"/caf\xE9\xFF", "file:///caf%E9%FF"}, // no UTF-8
        {"/a\nb\tc\x7F", "file:///a%0Ab%09c%7F"},
        {"/a//b/", "file:///a//b/"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(fileUrl(row.path), row.url);
}

TEST(FileUrl, EscapesEveryByteButTheUnreservedOnesAndTheSlash)
{
    const std::string plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    for (int byte = 1; byte < 256; ++byte) {
        const std::string character(1, static_cast<char>(byte));
        char escaped[4];
        std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(byte));
        const std::string expected = plain.find(character) != std::string::npos ? character : escaped;
        EXPECT_EQ(fileUrl("/" + character), "file:///" + expected) << byte;
    }
}

} // namespace
