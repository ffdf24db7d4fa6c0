#include "tools/community_server/AccessLog.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace community_server;

Access access(std::string target)
{
    return {"192.0.2.1", "POST", std::move(target), 200, 4, 1'795'350'600};
}

TEST(AccessLog, WritesTheCommonFormat)
{
    EXPECT_EQ(accessLine(access("/kv_listplists.php")),
              "192.0.2.1 - - [22/Nov/2026:12:30:00 +0000] \"POST /kv_listplists.php HTTP/1.1\" 200 4\n");
}

TEST(AccessLog, HidesPinsNamesAndAddresses)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/library/checkuser.php?userName=Ada&pinCode=123456", "/library/checkuser.php"},
        {"/checkuserexists.php?userName=Ada&emailAddr=ada@example.org", "/checkuserexists.php"},
        {"/checkuser.php%3FuserName=Ada&pinCode=123456", "/checkuser.php..."},
        {"/checkuser.php;pinCode=123456", "/checkuser.php..."},
        {"/checkuser.php&pinCode=123456", "/checkuser.php..."},
        {"/files/0123456789abcdef.plist", "/files/0123456789abcdef.plist"},
        {"/\" 200 4\n10.0.0.1 - - x", "/..."},
        {"", ""},
    };
    for (const auto& [target, path] : cases)
        EXPECT_EQ(accessLine(access(target)),
                  "192.0.2.1 - - [22/Nov/2026:12:30:00 +0000] \"POST " + std::string(path) + " HTTP/1.1\" 200 4\n");
}

TEST(AccessLog, KeepsALineShortAndWhole)
{
    Access odd = access("/" + std::string(10'000, 'x'));
    odd.method = "GET\" \n";
    odd.address = "::1\n" + std::string(1000, '1');
    const std::string line = accessLine(odd);
    EXPECT_LT(line.size(), 250U);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(AccessLog, GoesOnInANewFileWhenTheOldOneIsMovedAway)
{
    const test::TemporaryFolder folder;
    const auto file = folder / "access.log";
    AccessLog log(file);
    log.write(access("/one"));
    AccessLog(file).write(access("/two"));
    std::filesystem::rename(file, folder / "access.log.1");
    log.write(access("/three"));
    EXPECT_EQ(test::read(folder / "access.log.1"), accessLine(access("/one")) + accessLine(access("/two")));
    EXPECT_EQ(test::read(file), accessLine(access("/three")));
    std::filesystem::remove(file);
    log.write(access("/four"));
    EXPECT_EQ(test::read(file), accessLine(access("/four")));
}

TEST(AccessLog, SaysWhenItCannotBeWritten)
{
    const test::TemporaryFolder folder;
    EXPECT_THROW(AccessLog(folder / "missing" / "access.log"), std::runtime_error);
    AccessLog("").write(access("/"));
}

} // namespace
