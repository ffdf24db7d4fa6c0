// Requests taken apart: queries with "&" in their values, and forms.

#include "tools/community_server/Protocol.h"
#include "community/Requests.h"

#include <gtest/gtest.h>

namespace {

using namespace community_server;

std::string queryOf(const std::string& address)
{
    return std::string(targetIn(address).query);
}

TEST(Target, EndsAtItsFirstQuestionMark)
{
    EXPECT_EQ(targetIn("/a.php?b=c?d").path, "/a.php");
    EXPECT_EQ(targetIn("/a.php?b=c?d").query, "b=c?d");
    EXPECT_EQ(targetIn("/a.php").path, "/a.php");
    EXPECT_EQ(targetIn("http://host:8765/a.php?b").path, "/a.php");
    EXPECT_EQ(targetIn("http://host").path, "/");
}

TEST(Uploads, ComeWholeWhateverTheirTextsHold)
{
    struct Case {
        const char* user;
        const char* plugin;
        const char* comments;
    };
    for (const Case& sent : {Case{"Ada", "Echo", "nice"}, Case{"Ada & Eve", "Drum & Bass", "nice & warm"},
                             Case{"A=b+c", "50% +", "1+1=2&comments=&plugin=x&user=y"}, Case{"Ada", "Echo", ""},
                             Case{"Ada", "?&=#", "\n\t\"\\😀"}}) {
        const auto read = uploadQuery(queryOf(community::uploadAddress("/", sent.user, sent.plugin, sent.comments)));
        EXPECT_EQ(read.user, sent.user);
        EXPECT_EQ(read.plugin, sent.plugin);
        EXPECT_EQ(read.comments, sent.comments);
    }
}

TEST(Uploads, KeepTheirCommentsWhereAPluginsNameCouldEndInTwoPlaces)
{
    const auto read = uploadQuery("user=Ada&plugin=A&comments=B&comments=C");
    EXPECT_EQ(read.plugin, "A");
    EXPECT_EQ(read.comments, "B&comments=C");
}

TEST(Uploads, AreEmptyWhereTheQueryIsAnother)
{
    for (const char* query : {"", "plugin=a&comments=b", "users=a&plugin=b", "user", "&plugin=&comments="}) {
        const auto read = uploadQuery(query);
        EXPECT_EQ(read.user, "") << query;
    }
}

TEST(Accounts, ComeWholeWhateverTheNameHolds)
{
    auto read = accountQuery(queryOf(community::loginCheckAddress("/", "a&pinCode=1 & b", "123456")), "pinCode");
    EXPECT_EQ(read.userName, "a&pinCode=1 & b");
    EXPECT_EQ(read.other, "123456");
    read = accountQuery(queryOf(community::newUserAddress("/", "Rock & Roll", "a+b@example.org")), "emailAddr");
    EXPECT_EQ(read.userName, "Rock & Roll");
    EXPECT_EQ(read.other, "a+b@example.org");
    EXPECT_EQ(accountQuery("userName=a", "pinCode").other, "");
}

TEST(PatchIds, AreWholeNumbers)
{
    EXPECT_EQ(patchIdIn("42"), 42);
    for (const char* text : {"", "0", "-1", "1 ", " 1", "1.0", "1x", "99999999999999999999", "(null)"})
        EXPECT_EQ(patchIdIn(text), std::nullopt) << text;
}

TEST(Forms, HoldTheClientsFile)
{
    for (const std::string& file :
         {std::string("mapping"), std::string(), std::string("\r\n"), std::string("\r\n--\r\n"), std::string("a\0b", 3),
          community::uploadContentType().substr(30), "--" + community::uploadContentType().substr(30)})
        EXPECT_EQ(fileInForm(community::uploadContentType(), community::uploadBody(file)), file);
}

TEST(Forms, MayComeFromOthers)
{
    const std::string part = "Content-disposition: form-data; filename=x; name=userfile\r\n\r\nbytes";
    const std::string other = "Content-Disposition: form-data; name=\"other\"\r\n\r\nname=\"userfile\"";
    EXPECT_EQ(fileInForm("Multipart/Form-Data; Boundary=\"e\"", "--e\r\n" + part + "\r\n--e--"), "bytes");
    EXPECT_EQ(fileInForm("multipart/form-data; boundary=e; charset=utf-8",
                         "--e\r\n" + other + "\r\n--e\r\n" + part + "\r\n--e--\r\n"),
              "bytes");
}

TEST(Forms, HaveNoFileWhereTheyAreCutOffOrOthers)
{
    const std::string type = "multipart/form-data; boundary=e";
    const std::string form = "--e\r\nContent-Disposition: form-data; name=\"userfile\"\r\n\r\nbytes\r\n--e--";
    ASSERT_TRUE(fileInForm(type, form));
    for (std::size_t length = 0; length < form.size() - 2; ++length)
        EXPECT_FALSE(fileInForm(type, form.substr(0, length))) << length;
    EXPECT_FALSE(fileInForm("multipart/form-data", form));
    EXPECT_FALSE(fileInForm("multipart/form-data; boundary=", form));
    EXPECT_FALSE(fileInForm("text/plain; boundary=e", form));
    EXPECT_FALSE(fileInForm(type, "--e\r\nContent-Disposition: form-data; filename=\"userfile\"\r\n\r\nb\r\n--e--"));
}

} // namespace
