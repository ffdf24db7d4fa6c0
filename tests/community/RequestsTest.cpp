#include "community/Requests.h"

#include <gtest/gtest.h>

namespace community {

namespace {

const std::string kBase = "http://library.example/";

TEST(Escaping, ChangesExactlyWhatMayNotStandInAnAddress)
{
    const std::string escapedCharacters = " \"#%<>[\\]^`{|}\x7f";
    for (int byte = 0; byte < 0x100; ++byte) {
        const auto character = static_cast<char>(byte);
        const bool isEscaped = byte < 0x20 || byte >= 0x80 || escapedCharacters.find(character) != std::string::npos;
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(byte));
        EXPECT_EQ(escaped(std::string(1, character)), isEscaped ? code : std::string(1, character)) << byte;
    }
}

TEST(Escaping, WritesEveryByteOfACharacterOutsideAscii)
{
    EXPECT_EQ(escaped("d’été 🌊"), "d%E2%80%99%C3%A9t%C3%A9%20%F0%9F%8C%8A");
    EXPECT_EQ(escaped("100% %20"), "100%25%20%2520");
    EXPECT_EQ(escaped("(null)"), "(null)");
    EXPECT_EQ(escaped(""), "");
}

TEST(Addresses, CarryTheirValuesEscapedInTheOrderGiven)
{
    EXPECT_EQ(loginCheckAddress(kBase, "Ada L", "12 34"),
              "http://library.example/checkuser.php?userName=Ada%20L&pinCode=12%2034");
    EXPECT_EQ(newUserAddress(kBase, "Ada L", "ada@example.org"),
              "http://library.example/checkuserexists.php?userName=Ada%20L&emailAddr=ada@example.org");
    EXPECT_EQ(uploadAddress(kBase, "NOONEHERE", "Quillmoor Echo", "a\nb"),
              "http://library.example/kv_upload.php?user=NOONEHERE&plugin=Quillmoor%20Echo&comments=a%0Ab");
    EXPECT_EQ(listingAddress(kBase, "Quillmoor Echo"),
              "http://library.example/kv_listplists.php?plugin=Quillmoor%20Echo");
}

TEST(Addresses, LeaveDelimitersInAValue)
{
    EXPECT_EQ(loginCheckAddress(kBase, "A&B=C?D/E+F:G", "1"),
              "http://library.example/checkuser.php?userName=A&B=C?D/E+F:G&pinCode=1");
}

TEST(Addresses, TellAbsentFromEmpty)
{
    EXPECT_EQ(loginCheckAddress(kBase, std::nullopt, std::nullopt),
              "http://library.example/checkuser.php?userName=(null)&pinCode=(null)");
    EXPECT_EQ(loginCheckAddress(kBase, "", ""), "http://library.example/checkuser.php?userName=&pinCode=");
    EXPECT_EQ(listingAddress(kBase, std::nullopt), "http://library.example/kv_listplists.php?plugin=(null)");
    EXPECT_EQ(downloadRegistrationAddress(kBase, std::nullopt),
              "http://library.example/kv_downloadreg.php?patchID=(null)");
}

TEST(Addresses, DoNotEscapeThePatchIdentifier)
{
    EXPECT_EQ(downloadRegistrationAddress(kBase, "42"), "http://library.example/kv_downloadreg.php?patchID=42");
    EXPECT_EQ(downloadRegistrationAddress(kBase, "a b%"), "http://library.example/kv_downloadreg.php?patchID=a b%");
}

TEST(Addresses, EscapeASharedFilesAddressOnceAsAWhole)
{
    EXPECT_EQ(sharedFileAddress(kBase, "files/Quillmoor Echo/my map.plist"),
              "http://library.example/files/Quillmoor%20Echo/my%20map.plist");
    EXPECT_EQ(sharedFileAddress(kBase, "a%20b/../c?d=é#e"), "http://library.example/a%2520b/../c?d=%C3%A9%23e");
}

TEST(UploadForm, IsExactlyTheFileBetweenItsDelimiters)
{
    const std::string boundary(27, '-');
    const std::string delimiter = boundary + "14737809831466499882746641449";
    ASSERT_EQ(delimiter.size(), 56u);
    EXPECT_EQ(uploadContentType(), "multipart/form-data; boundary=" + delimiter);
    const std::string file("a\0\r\n--b", 8);
    EXPECT_EQ(uploadBody(file),
              "\r\n--" + delimiter +
                  "\r\nContent-Disposition: form-data; name=\"userfile\"; filename=\"CSParameterOrder.plist\"\r\n"
                  "Content-Type: application/octet-stream\r\n\r\n" +
                  file + "\r\n--" + delimiter + "--\r\n");
}

TEST(UploadForm, Is252BytesLongerThanTheFile)
{
    EXPECT_EQ(uploadBody("").size(), 252u);
    EXPECT_EQ(uploadBody(std::string(1000, 'x')).size(), 1252u);
}

TEST(Replies, AreTheBytesThatAreUtf8)
{
    for (const std::string text :
         {"", "\nOK\n", "<html>é</html>", "\u0800\uffff", "\U00010000\U0010ffff", "\ud7ff\ue000"})
        EXPECT_EQ(replyText(text), text);
    EXPECT_EQ(replyText(std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(replyText(std::nullopt), "");
}

TEST(Replies, ReadAsEmptyWhenTheyAreNotUtf8)
{
    for (const char* bytes :
         {"OK\xff", "\x80", "\xc3", "\xc0\xaf", "\xc1\xbf", "\xe0\x80\xaf", "\xe2\x82", "\xed\xa0\x80",
          "\xf0\x80\x80\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf0\x9f\x8c", "\xe9t\xe9"})
        EXPECT_EQ(replyText(bytes), "") << bytes;
}

TEST(Replies, AcceptALoginInExactlyOneForm)
{
    EXPECT_TRUE(isLoginAccepted("\nOK\n"));
    for (const char* other : {"", "OK", "\nOK", "OK\n", "\nOK\n\n", "\nok\n", "\r\nOK\r\n", " \nOK\n", "\nOK\n "})
        EXPECT_FALSE(isLoginAccepted(other)) << other;
}

} // namespace

} // namespace community
