// Shared mappings: what is listed, what is kept, and what becomes of an earlier library.

#include "tools/community_server/Library.h"
#include "tests/community_server/TestServer.h"
#include "tests/support/OrderFiles.h"
#include "tools/community_server/Pages.h"
#include "tools/community_server/Pins.h"
#include "tools/community_server/Schema.h"

#include <gtest/gtest.h>

namespace {

using namespace community_server;
using Outcome = Library::Outcome;
using test::valueIn;

constexpr std::int64_t kDay = 24LL * 3600 * 1000;

std::string mapping(const std::string& parameter)
{
    return test::orderBytes({"1 " + parameter});
}

class Shared : public testing::Test {
protected:
    void SetUp() override
    {
        database_.execute("PRAGMA synchronous = OFF"); // a thousand flushes would be most of the time
        bringUpToDate(database_, folder_.path());
        ada_ = join("Ada");
    }
    Account join(const std::string& name)
    {
        database_.run("INSERT INTO account (name, nameKey, email, created) VALUES (?1, ?1, '', 0)", name);
        Account account;
        account.id = database_.lastRowId();
        account.name = name;
        return account;
    }
    Outcome share(const Account& account, const std::string& file, const std::string& comments = {})
    {
        return library_.share(account, "Echo", comments, file, "1.1.1.1", {1000, 1000, 1000}, ++now_);
    }
    std::int64_t count(const char* table)
    {
        Statement rows(database_, (std::string("SELECT count(*) FROM ") + table).c_str());
        rows.step();
        return rows.integer(0);
    }
    std::string listed(const std::string& path) { return valueIn(library_.listing("Echo"), path); }

    const test::TemporaryFolder folder_;
    Database database_{folder_.path()};
    Library library_{database_};
    Account ada_;
    std::int64_t now_ = 0;
};

TEST_F(Shared, AreListedNewestFirst)
{
    share(ada_, mapping("a"), "first");
    share(join("Bob"), mapping("b"), "second");
    EXPECT_EQ(listed("$[0].userComments"), "second");
    EXPECT_EQ(listed("$[0].uploader"), "Bob");
    EXPECT_EQ(listed("$[1].userComments"), "first");
    EXPECT_EQ(listed("$[1].uploadDate"), "1970-01-01");
    EXPECT_EQ(listed("$[2]"), "");
    EXPECT_EQ(library_.listing("Other"), "[]");
}

TEST_F(Shared, AreListedOnceOfEachUploaderAndContent)
{
    const Account bob = join("Bob");
    share(ada_, mapping("a"), "first");
    share(bob, mapping("a"), "the same of another");
    library_.countDownload(1);
    EXPECT_EQ(share(ada_, mapping("a"), "again"), Outcome::done);
    EXPECT_EQ(listed("$[0].userComments"), "again");
    EXPECT_EQ(listed("$[0].downloads"), "1");
    EXPECT_EQ(listed("$[1].uploader"), "Bob");
    EXPECT_EQ(listed("$[2]"), "");
    EXPECT_EQ(count("file"), 1);
}

TEST_F(Shared, AreListedUpToANumberAndASize)
{
    for (int i = 0; i < kMostListed + 10; ++i)
        share(ada_, mapping(std::to_string(i)), std::to_string(i));
    EXPECT_EQ(listed("$[0].userComments"), std::to_string(kMostListed + 9));
    EXPECT_EQ(listed("$[#-1].userComments"), "10");
    // A zero byte takes six in JSON, the longest of all.
    for (int i = 0; i < kMostListed; ++i)
        share(ada_, mapping("long " + std::to_string(i)), std::string(4000, '\1'));
    const std::string listing = library_.listing("Echo");
    EXPECT_LE(listing.size(), kLongestListing);
    EXPECT_GT(listing.size(), kLongestListing - 25'000);
    EXPECT_EQ(valueIn(listing, "$[0].userComments"), std::string(4000, '\1'));
}

TEST_F(Shared, FilesComeBackToTheByte)
{
    const std::string file = mapping("a") + std::string(" \0 ", 3);
    share(ada_, file);
    const std::string location = listed("$[0].fileLocation");
    ASSERT_EQ(location.substr(0, 6), "files/");
    EXPECT_EQ(library_.file(location.substr(6)), file);
    EXPECT_EQ(library_.file(""), std::nullopt);
}

TEST_F(Shared, AreGivenToNobodyOnceTheHostDeletedThem)
{
    share(ada_, mapping("a"));
    const std::string name = listed("$[0].fileLocation").substr(6);
    EXPECT_TRUE(library_.setDeleted(1, true));
    EXPECT_EQ(library_.listing("Echo"), "[]");
    EXPECT_EQ(library_.file(name), std::nullopt);
    EXPECT_FALSE(library_.countDownload(1));
    EXPECT_EQ(share(ada_, mapping("a")), Outcome::deleted);
    EXPECT_EQ(library_.listing("Echo"), "[]");
    EXPECT_TRUE(library_.setDeleted(1, false));
    EXPECT_EQ(listed("$[0].patchID"), "1");
    EXPECT_FALSE(library_.setDeleted(2, true));
}

TEST_F(Shared, CountOnlyWhenTheyWereShared)
{
    const Quotas quotas{2, 3, 0};
    const Account bob = join("Bob");
    const auto shareAt = [&](const Account& account, const std::string& name, std::int64_t now) {
        return library_.share(account, "Echo", "", mapping(name), "1.1.1.1", quotas, now);
    };
    EXPECT_EQ(shareAt(ada_, "a", 0), Outcome::done);
    library_.setDeleted(1, true);
    EXPECT_EQ(shareAt(ada_, "a", 0), Outcome::deleted);
    EXPECT_EQ(shareAt(ada_, "b", 0), Outcome::done);
    EXPECT_EQ(shareAt(ada_, "c", 0), Outcome::tooManyOfUser);
    EXPECT_EQ(shareAt(bob, "c", 0), Outcome::done);
    EXPECT_EQ(shareAt(bob, "d", 0), Outcome::tooManyOfAddress);
    EXPECT_EQ(shareAt(bob, "d", kDay), Outcome::done);
    Account eve = join("Eve");
    eve.quota = 0;
    EXPECT_EQ(shareAt(eve, "e", kDay), Outcome::tooManyOfUser);
    EXPECT_EQ(count("usage"), 2); // of the day alone
}

TEST(Mappings, AreListsOfTexts)
{
    EXPECT_TRUE(isMapping(mapping("a")));
    EXPECT_TRUE(isMapping(test::orderBytes({})));
    for (const char* text :
         {"", "nonsense", "<plist version=\"1.0\"><dict/></plist>", "{ControlSurfaceParameterOrder = a;}",
          "{ControlSurfaceParameterOrder = (a, (b));}", "(ControlSurfaceParameterOrder)"})
        EXPECT_FALSE(isMapping(text)) << text;
    EXPECT_FALSE(isMapping(mapping("a") + std::string(kLargestFile, ' ')));
}

TEST(Mappings, DoNotUnfoldIntoMuchMore)
{
    // A binary list keeps a text once however often it is used.
    const auto file = [](std::size_t count, std::size_t length) {
        auto order = test::orderFile(test::Texts(count, std::string(length, 'x')));
        return platform::plist::write({std::move(order), platform::plist::Form::binary});
    };
    EXPECT_TRUE(isMapping(file(200'000, 20)));
    for (const auto& bomb : {file(300'000, 1), file(100'000, 100)}) {
        EXPECT_LT(bomb.size(), kLargestFile);
        EXPECT_TRUE(platform::plist::parse(bomb));
        EXPECT_FALSE(isMapping(bomb));
        EXPECT_FALSE(pages::chartOf(bomb, 1));
    }
}

/// A library of the form that kept its files in a folder.
class Earlier : public testing::Test {
protected:
    void SetUp() override
    {
        Database database(folder_.path());
        database.execute(R"(
            CREATE TABLE account (
                userName TEXT PRIMARY KEY, email TEXT NOT NULL, salt BLOB NOT NULL, hash BLOB NOT NULL);
            CREATE TABLE mapping (
                patchID INTEGER PRIMARY KEY AUTOINCREMENT, plugin TEXT NOT NULL, userName TEXT NOT NULL,
                comments TEXT NOT NULL, fileName TEXT NOT NULL, uploaded TEXT NOT NULL DEFAULT (datetime('now')),
                downloads INTEGER NOT NULL DEFAULT 0);
            CREATE INDEX mappingsOfPlugin ON mapping (plugin);
            INSERT INTO account VALUES ('Ada', 'ada@example.org', x'000102030405060708090a0b0c0d0e0f',
                x'3e3d2422f00f2cc1d1bad045819bfb8360117d59c588035c4294f3403ac097a5');
            INSERT INTO account VALUES ('ada', 'other@example.org', x'00', x'00');
            INSERT INTO account VALUES ('A', 'short@example.org', x'00', x'00');
        )");
        insert(database, "Ada", 'a', "first", 3);
        insert(database, "Ada", 'b', "second", 5);
        insert(database, "Ada", 'c', "lost", 7);
        insert(database, "Isolde Karn", 'd', "of nobody", 0);
        test::write(folder_ / "files" / nameOf('a'), mapping("a"));
        test::write(folder_ / "files" / nameOf('b'), mapping("a"));
        test::write(folder_ / "files" / nameOf('d'), mapping("d"));
        test::write(folder_ / "files" / nameOf('e'), "never listed");
        test::write(folder_ / "files" / "notes.txt", "the host's");
    }
    static std::string nameOf(char c) { return std::string(32, c) + ".plist"; }
    static void insert(Database& database, const char* user, char c, const char* comments, std::int64_t downloads)
    {
        database.run("INSERT INTO mapping (plugin, userName, comments, fileName, uploaded, downloads) "
                     "VALUES ('Echo', ?, ?, ?, '2026-01-02 03:04:05', ?)",
                     user, comments, nameOf(c), downloads);
    }

    const test::TemporaryFolder folder_;
};

TEST_F(Earlier, IsTakenOverWhole)
{
    Database database(folder_.path());
    const auto problems = bringUpToDate(database, folder_.path());
    Library library(database);
    const std::string listing = library.listing("Echo");
    EXPECT_EQ(valueIn(listing, "$[0].userComments"), "of nobody");
    EXPECT_EQ(valueIn(listing, "$[0].uploader"), "Isolde Karn");
    EXPECT_EQ(valueIn(listing, "$[1].userComments"), "second"); // the same as the first
    EXPECT_EQ(valueIn(listing, "$[1].downloads"), "8");
    EXPECT_EQ(valueIn(listing, "$[1].uploadDate"), "2026-01-02");
    EXPECT_EQ(valueIn(listing, "$[2]"), "");
    EXPECT_EQ(library.file(nameOf('b')), mapping("a"));
    EXPECT_EQ(library.file(nameOf('d')), mapping("d"));

    ASSERT_EQ(problems.size(), 1U);
    EXPECT_NE(problems[0].find("mapping 3"), std::string::npos) << problems[0];
    EXPECT_EQ(library.file(nameOf('c')), std::nullopt);
    EXPECT_FALSE(library.countDownload(3));

    Accounts accounts(database);
    EXPECT_TRUE(isPin("123456", accounts.find("Ada")->pin));
    EXPECT_EQ(accounts.find("ADA")->email, "ada@example.org");
    EXPECT_EQ(accounts.find("ada")->email, "other@example.org");
    EXPECT_EQ(accounts.find("A")->email, "short@example.org");
    EXPECT_FALSE(isPin("", accounts.find("Isolde Karn")->pin));
}

TEST_F(Earlier, LeavesNoOrphan)
{
    Database database(folder_.path());
    bringUpToDate(database, folder_.path());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "files" / nameOf('a')));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "files" / nameOf('e')));
    EXPECT_EQ(test::read(folder_ / "files" / "notes.txt"), "the host's");
    EXPECT_TRUE(bringUpToDate(database, folder_.path()).empty());
    EXPECT_NE(Library(database).listing("Echo"), "[]");
}

TEST_F(Earlier, IsNotTouchedWhereItIsALaterOne)
{
    Database database(folder_.path());
    database.execute("PRAGMA user_version = 1000");
    EXPECT_THROW(bringUpToDate(database, folder_.path()), std::runtime_error);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "files" / nameOf('a')));
}

} // namespace
