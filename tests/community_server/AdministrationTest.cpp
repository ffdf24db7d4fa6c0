#include "tools/community_server/Administration.h"

#include "tests/community_server/SharedLibrary.h"
#include "tools/community_server/Pins.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace community_server;

class Administration : public test::SharedLibrary {
protected:
    /// What the tool said, and on standard error, of a command on the folder that the environment names.
    int run(const std::vector<std::string>& arguments)
    {
        std::ostringstream out, err;
        const int status = administer(arguments, {"KV_COMMUNITY_DATA=" + folder_.path().native()}, out, err);
        said_ = out.str();
        complained_ = err.str();
        return status;
    }
    std::string listing(const std::string& plugin) { return Library(database_).listing(plugin); }

    std::string said_;
    std::string complained_;
};

TEST_F(Administration, ListsAndShowsMappings)
{
    addAccount("Ada");
    addAccount("Bob");
    share("Ada", "Echo", "one\ntwo\x1b[31m");
    share("Bob", "Ec\nho\x07\u202e");
    share("Bob", "Echo", "", test::numbered(9));
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(std::count(said_.begin(), said_.end(), '\n'), 4);
    EXPECT_NE(said_.find("\t0\tBob\tEc ho␇\n"), std::string::npos) << said_;
    EXPECT_EQ(said_.find('\x07'), std::string::npos);
    EXPECT_EQ(run({"list", "--plugin", "Echo", "--user", "ada"}), 0);
    EXPECT_EQ(said_.substr(said_.find('\n') + 1, 2), "1\t");
    EXPECT_EQ(std::count(said_.begin(), said_.end(), '\n'), 2);
    EXPECT_EQ(run({"list", "--user", "Eve"}), 3);
    EXPECT_EQ(run({"show", "1"}), 0);
    EXPECT_NE(said_.find("Plug-in: Echo\nUser: Ada\n"), std::string::npos) << said_;
    EXPECT_NE(said_.find("Comments: one\ntwo␛[31m\nPage 1: Cutoff | Resonance | - | - | - | - | - | -\n"),
              std::string::npos)
        << said_;
    for (const char* id : {"4", "0", "x", "1 OR 1=1"}) {
        EXPECT_EQ(run({"show", id}), 3);
        EXPECT_EQ(complained_, "community_admin: There is no mapping " + std::string(id) + ".\n");
    }
}

TEST_F(Administration, DeletesAndRestoresMappings)
{
    addAccount("Ada");
    share("Ada", "Echo");
    const std::string before = listing("Echo");
    EXPECT_EQ(run({"delete", "1"}), 0);
    EXPECT_EQ(listing("Echo"), "[]");
    EXPECT_EQ(run({"list"}), 0);
    EXPECT_EQ(said_.find("Echo"), std::string::npos);
    EXPECT_EQ(run({"list", "--deleted"}), 0);
    EXPECT_NE(said_.find("Echo"), std::string::npos);
    EXPECT_EQ(run({"show", "1"}), 0);
    EXPECT_TRUE(said_.starts_with("Mapping 1, deleted\n")) << said_;
    EXPECT_EQ(run({"restore", "1", "7"}), 3);
    EXPECT_EQ(listing("Echo"), before);
    EXPECT_EQ(said_, "Mapping 1 is restored.\n");
    EXPECT_EQ(complained_, "community_admin: There is no mapping 7.\n");
}

TEST_F(Administration, BansRenamesAndLimitsAccounts)
{
    addAccount("Ada");
    addAccount("Bob");
    EXPECT_EQ(run({"ban", "ADA"}), 0);
    EXPECT_TRUE(account("Ada").isBanned);
    EXPECT_EQ(run({"users"}), 0);
    EXPECT_NE(said_.find("\t0\tbanned\tdefault\tAda@example.org\n"), std::string::npos) << said_;
    EXPECT_EQ(run({"unban", "Ada"}), 0);
    EXPECT_FALSE(account("Ada").isBanned);
    EXPECT_EQ(run({"quota", "Ada", "1"}), 0);
    EXPECT_EQ(account("Ada").quota, 1);
    EXPECT_TRUE(share("Ada", "Echo"));
    EXPECT_FALSE(share("Ada", "Reverb"));
    EXPECT_EQ(run({"quota", "Ada", "default"}), 0);
    EXPECT_TRUE(share("Ada", "Reverb"));
    for (const char* quota : {"many", "-1", "1x", ""})
        EXPECT_EQ(run({"quota", "Ada", quota}), 2) << quota;
    EXPECT_EQ(run({"rename", "Ada", "bob"}), 1);
    EXPECT_EQ(complained_, "community_admin: The name bob is taken.\n");
    EXPECT_EQ(run({"rename", "Ada", "x"}), 1);
    EXPECT_EQ(run({"rename", "Ada", "Ada Lovelace"}), 0);
    EXPECT_NE(listing("Echo").find("\"uploader\":\"Ada Lovelace\""), std::string::npos);
    for (const char* command : {"ban", "unban", "reset-pin"})
        EXPECT_EQ(run({command, "Ada"}), 3) << command;
    EXPECT_EQ(complained_, "community_admin: There is no account Ada.\n");
}

TEST_F(Administration, GivesAnotherPin)
{
    const std::string old = addAccount("Ada");
    std::string pin;
    do {
        EXPECT_EQ(run({"reset-pin", "Ada"}), 0);
        pin = said_.substr(said_.find(" is ") + 4, 6);
    } while (pin == old);
    EXPECT_EQ(said_, "The new PIN of Ada is " + pin + ". It is not shown again.\n");
    EXPECT_TRUE(isPin(pin, account("Ada").pin));
    EXPECT_FALSE(isPin(old, account("Ada").pin));
}

TEST_F(Administration, CountsWhatThereIs)
{
    addAccount("Ada");
    share("Ada", "Echo");
    share("Ada", "Reverb");
    share("Ada", "Reverb", "", {"0 Other"});
    Library(database_).countDownload(2);
    run({"delete", "3"});
    EXPECT_EQ(run({"statistics"}), 0);
    for (const char* line : {"Accounts: 1\n", "Plug-ins: 2\n", "\nMappings: 2\n", "Deleted mappings: 1\n",
                             "Downloads: 1\n", "Mappings shared in the last 24 hours: 3\n"})
        EXPECT_NE(said_.find(line), std::string::npos) << line << said_;
}

TEST_F(Administration, BacksUpWhileOthersReadAndWrite)
{
    const test::TemporaryFolder copy;
    addAccount("Ada");
    share("Ada", "Echo");
    const std::string before = listing("Echo");
    Statement reader(database_, "SELECT * FROM mapping");
    reader.step();
    Database other(folder_.path());
    {
        Transaction writer(other);
        other.run("UPDATE mapping SET comments = 'not confirmed'");
        EXPECT_EQ(run({"backup", (copy / "library.sqlite").native()}), 0) << complained_;
    }
    Database copied(copy.path());
    EXPECT_TRUE(bringUpToDate(copied, copy.path()).empty());
    EXPECT_EQ(Library(copied).listing("Echo"), before);
    EXPECT_EQ(std::filesystem::status(copy / "library.sqlite").permissions() & std::filesystem::perms(077),
              std::filesystem::perms::none);
    const std::string kept = test::read(copy / "library.sqlite");
    EXPECT_EQ(run({"backup", (copy / "library.sqlite").native()}), 1);
    EXPECT_NE(complained_.find("exists already; nothing was written."), std::string::npos);
    EXPECT_EQ(test::read(copy / "library.sqlite"), kept);
    EXPECT_EQ(run({"backup", (copy / "missing" / "file").native()}), 1);
    EXPECT_FALSE(std::filesystem::exists(copy / "library.sqlite.part"));
}

TEST_F(Administration, ChecksEveryFile)
{
    addAccount("Ada");
    for (const char* plugin : {"A", "B", "C", "D"})
        share("Ada", plugin, "", {std::string("0 ") + plugin});
    EXPECT_EQ(run({"check"}), 0);
    EXPECT_EQ(said_, "All is well with 4 mappings and 4 files.\n");
    database_.run("UPDATE file SET bytes = ? WHERE hash = (SELECT hash FROM mapping WHERE patchID = 1)",
                  Blob{test::orderBytes({"0 Else"})});
    const std::string nonsense = "nonsense";
    database_.execute("PRAGMA foreign_keys = OFF");
    database_.run("UPDATE mapping SET hash = ? WHERE patchID = 2", Blob{keepFile(database_, nonsense)});
    database_.run("UPDATE mapping SET hash = NULL WHERE patchID = 3");
    database_.run("UPDATE mapping SET account = 77 WHERE patchID = 4");
    EXPECT_EQ(run({"check"}), 1);
    for (const char* line :
         {"Mapping 1 has a file that is not the one which was shared.\n", "Mapping 2 has a file that is no mapping.\n",
          "Mapping 3 has lost its file and is not listed.\n", "belongs to no mapping.\n",
          "Row 4 of mapping refers to nothing.\n"})
        EXPECT_NE(said_.find(line), std::string::npos) << line << said_;
    EXPECT_EQ(complained_, "community_admin: 6 problems.\n");
}

TEST_F(Administration, SaysWhenTheDatabaseIsDamaged)
{
    addAccount("Ada");
    for (int i = 0; i < 50; ++i)
        share("Ada", "Plug-in " + std::to_string(i));
    const test::TemporaryFolder damaged;
    ASSERT_EQ(run({"backup", (damaged / "library.sqlite").native()}), 0);
    std::string bytes = test::read(damaged / "library.sqlite");
    bytes.replace(bytes.size() / 2, 8192, std::string(8192, 'x'));
    test::write(damaged / "library.sqlite", bytes);
    EXPECT_EQ(run({"--data", damaged.path().native(), "check"}), 1) << said_;
    EXPECT_NE((said_ + complained_).find("alformed"), std::string::npos) << said_ << complained_;
}

TEST_F(Administration, IsRefusedInWords)
{
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    } cases[] = {
        {{}, 2, "what is to be done?"},
        {{"erase"}, 2, "there is no command \"erase\"."},
        {{"--folder", "x", "list"}, 2, "there is no option \"--folder\", or it needs a value."},
        {{"--data"}, 2, "there is no option \"--data\", or it needs a value."},
        {{"show"}, 2, "show takes ID."},
        {{"rename", "Ada"}, 2, "rename takes NAME NEW-NAME."},
        {{"check", "all"}, 2, "check takes nothing."},
        {{"list", "--plugin"}, 2, "list takes --plugin NAME, --user NAME and --deleted."},
        {{"--data", "/nowhere", "list"}, 1, "there is no library in /nowhere."},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(run(each.arguments), each.status) << each.says;
        EXPECT_EQ(complained_.substr(0, complained_.find('\n')), std::string("community_admin: ") + each.says);
    }
    EXPECT_EQ(run({"--help"}), 0);
    for (std::size_t start = 0; start < said_.size(); start = said_.find('\n', start) + 1)
        EXPECT_LE(said_.find('\n', start) - start, 80U);
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_EQ(said_, "community_admin " KV_VERSION "\n");
}

TEST_F(Administration, LeavesALibraryOfAnotherVersionAlone)
{
    database_.execute("PRAGMA user_version = 99");
    EXPECT_EQ(run({"list"}), 1);
    EXPECT_EQ(complained_,
              "community_admin: the library is of another version; start its server of this version once.\n");
}

} // namespace
