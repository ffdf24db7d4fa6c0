#include "platform/UserPreferences.h"
#include "platform/files/Files.h"
#include "tests/support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace platform {

namespace {

namespace fs = std::filesystem;

class PreferencesFile : public testing::Test {
protected:
    static unsigned modeOf(const fs::path& path)
    {
        struct stat status = {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
    }

    test::TemporaryHome home_;
    fs::path file_ = home_.path() / "config/org.example.kv-test.plist";
};

TEST_F(PreferencesFile, TellsAbsentFromEmpty)
{
    UserPreferences preferences("org.example.kv-test");
    EXPECT_EQ(preferences.text("uName"), std::nullopt);
    preferences.setTexts({{"uName", ""}});
    EXPECT_EQ(preferences.text("uName"), "");
    EXPECT_EQ(preferences.text("uPIN"), std::nullopt);
}

TEST_F(PreferencesFile, KeepsTextsAsTypedFromRunToRun)
{
    const std::string texts[] = {"  blanks \t ", "d’été 🌊 <&\"]]>", std::string("\x01\x00\x7f", 3),
                                 "\r\n",         "(null)",          "007"};
    for (const std::string& text : texts) {
        UserPreferences("org.example.kv-test").setTexts({{"uName", text}, {"uPIN", text + "!"}});
        EXPECT_EQ(UserPreferences("org.example.kv-test").text("uName"), text);
        EXPECT_EQ(UserPreferences("org.example.kv-test").text("uPIN"), text + "!");
    }
}

TEST_F(PreferencesFile, IsNeverOpenToOthersWhileItIsWritten)
{
    const mode_t mask = ::umask(0);
    const fs::path folder = home_.path() / "secrets";
    fs::create_directory(folder);
    const files::PartialFile file(folder / "secret", fs::perms(0644));
    EXPECT_EQ(modeOf(fs::directory_iterator(folder)->path()), 0600u);
    ::umask(mask);
}

TEST_F(PreferencesFile, KeepsWhatOthersStored)
{
    UserPreferences preferences("org.example.kv-test");
    preferences.setTexts({{"other", "stays"}});
    preferences.setTexts({{"uName", "Ada"}});
    EXPECT_EQ(preferences.text("other"), "stays");
}

#ifndef __APPLE__ // where they are no file of ours
TEST_F(PreferencesFile, CanBeReadByItsOwnerOnly)
{
    const mode_t mask = ::umask(0);
    UserPreferences("org.example.kv-test").setTexts({{"uPIN", "123456"}});
    EXPECT_EQ(modeOf(file_), 0600u);
    fs::permissions(file_, fs::perms::all);
    UserPreferences("org.example.kv-test").setTexts({{"uPIN", "654321"}});
    EXPECT_EQ(modeOf(file_), 0600u);
    ::umask(mask);
}

TEST_F(PreferencesFile, ReadsADamagedFileAsEmptyAndReplacesIt)
{
    test::write(file_, "<plist");
    UserPreferences preferences("org.example.kv-test");
    EXPECT_EQ(preferences.text("uName"), std::nullopt);
    preferences.setTexts({{"uName", "Ada"}});
    EXPECT_EQ(preferences.text("uName"), "Ada");
}

TEST_F(PreferencesFile, MakesItsFolder)
{
    ::setenv("XDG_CONFIG_HOME", (home_.path() / "new").c_str(), 1);
    UserPreferences("org.example.kv-test").setTexts({{"uName", "Ada"}});
    EXPECT_EQ(UserPreferences("org.example.kv-test").text("uName"), "Ada");
    EXPECT_EQ(modeOf(home_.path() / "new"), 0700u);
}

TEST_F(PreferencesFile, MakesTheFoldersAboveItToo)
{
    const fs::path config = home_.path() / "not/there/yet";
    ::setenv("XDG_CONFIG_HOME", config.c_str(), 1);
    UserPreferences("org.example.kv-test").setTexts({{"uName", "Ada"}});
    EXPECT_EQ(UserPreferences("org.example.kv-test").text("uName"), "Ada");
    EXPECT_EQ(modeOf(config), 0700u);
    EXPECT_EQ(modeOf(config / "org.example.kv-test.plist"), 0600u);
}

TEST_F(PreferencesFile, LiesInTheHomeFolderWithoutAConfigurationFolder)
{
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    UserPreferences("org.example.kv-test").setTexts({{"uName", "Ada"}});
    EXPECT_TRUE(fs::exists(home_ / "home/.config/org.example.kv-test.plist"));
}
#endif

} // namespace

} // namespace platform
