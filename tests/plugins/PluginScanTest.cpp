#include "plugins/PluginScan.h"

#include "platform/files/Files.h"
#include "tests/support/FilesIn.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UnhelpfulFileSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using platform::Record;
using plugins::rowForFile;
using test::Path;
using test::write;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

/// Notes down its lines.
class LineLog final : public platform::Log {
public:
    void write(std::string_view line) override { lines.emplace_back(line); }
    void flush() override {}

    std::vector<std::string> lines;
};

Record row(const std::string& type, const std::string& plugin, const Path& file)
{
    return {{"Type", type}, {"Plugin", plugin}, {"State", "Editable"}, {"fileLocation", file.native()}};
}

TEST(RowForFile, NamesPluginAndTypeAfterTheFoldersAbove)
{
    struct Row {
        const char* path;
        const char* type;
        const char* plugin;
    };
    const Row rows[] = {
        {"/L/Plug-In Settings/EQ One/CSParameterOrder.plist", "Logic Built-In", "EQ One"},
        {"/h/Library/Audio/Presets/Maker/Synth X/CSParameterOrder.plist", "Maker", "Synth X"},
        {"/L/Plug-In Settings/Group/EQ One/CSParameterOrder.plist", "Group", "EQ One"},
        {"/L/plug-in settings/EQ One/CSParameterOrder.plist", "plug-in settings", "EQ One"},
        {"/L/Plug-In Settings/CSParameterOrder.plist", "L", "Plug-In Settings"},
        {"/h/R&D <b>/a#b %20/CSParameterOrder.plist", "R&D <b>", "a#b %20"},
        {"/h/caf\xE9/\xFF\xFE/CSParameterOrder.plist", "caf\xE9", "\xFF\xFE"},
        {"/x/CSParameterOrder.plist", "", "x"},
        {"/CSParameterOrder.plist", "", ""},
        {"CSParameterOrder.plist", "", ""},
    };
    for (const Row& expected : rows)
        EXPECT_EQ(rowForFile(expected.path), row(expected.type, expected.plugin, expected.path)) << expected.path;
}

TEST(RowForFile, IsNoneForAnyOtherName)
{
    for (const char* name :
         {"csparameterorder.plist", "CSPARAMETERORDER.PLIST", "CSParameterOrder.Plist", "CSParameterOrder.plist.prev",
          "CSParameterOrder.plist.original", "CSParameterOrder.plist.html", "CSParameterOrder.plist.downloaded",
          "~SParameterOrder.plist", "xCSParameterOrder.plist", "CSParameterOrder", "CSParameterOrder.plist ", ""}) {
        EXPECT_EQ(rowForFile("/L/Plug-In Settings/EQ One/" + std::string(name)), std::nullopt) << name;
        EXPECT_EQ(rowForFile(name), std::nullopt) << name;
    }
    EXPECT_EQ(rowForFile("/a/CSParameterOrder.plist/read me.txt"), std::nullopt);
}

class ScanFolder : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    LineLog log_;
};

TEST_F(ScanFolder, FindsThePluginsOfLogicAndOfAMaker)
{
    const Path logic = folder_ / "Logic/Plug-In Settings";
    const Path presets = folder_ / "home/Library/Audio/Presets";
    write(logic / "EQ One/CSParameterOrder.plist", "");
    write(logic / "EQ One/Vocal.pst", "");
    write(presets / "Maker/Synth X/CSParameterOrder.plist", "");
    write(presets / "Maker/Synth Y/CSParameterOrder.plist", "");
    EXPECT_THAT(plugins::scanFolder(logic, log_),
                ElementsAre(row("Logic Built-In", "EQ One", logic / "EQ One/CSParameterOrder.plist")));
    EXPECT_THAT(plugins::scanFolder(presets, log_),
                UnorderedElementsAre(row("Maker", "Synth X", presets / "Maker/Synth X/CSParameterOrder.plist"),
                                     row("Maker", "Synth Y", presets / "Maker/Synth Y/CSParameterOrder.plist")));
}

TEST_F(ScanFolder, FindsFilesAtAnyDepthAndInHiddenFolders)
{
    const Path root = folder_ / "Presets";
    write(root / "CSParameterOrder.plist", "");
    write(root / "a/b/c/d/CSParameterOrder.plist", "");
    write(root / ".hidden/Synth/CSParameterOrder.plist", "");
    EXPECT_THAT(plugins::scanFolder(root, log_),
                UnorderedElementsAre(row(folder_.path().filename(), "Presets", root / "CSParameterOrder.plist"),
                                     row("c", "d", root / "a/b/c/d/CSParameterOrder.plist"),
                                     row(".hidden", "Synth", root / ".hidden/Synth/CSParameterOrder.plist")));
}

TEST_F(ScanFolder, PassesOverDecoys)
{
    const Path root = folder_ / "Plug-In Settings";
    for (const char* name :
         {"csparameterorder.plist", "CSParameterOrder.plist.prev", "CSParameterOrder.plist.original",
          "CSParameterOrder.plist.html", "CSParameterOrder.plist.downloaded", "CSParameterOrder.xml"})
        write(root / "Retired" / name, "");
    write(root / "Folder In Disguise/CSParameterOrder.plist/read me.txt", "");
    write(folder_ / "elsewhere/Synth/CSParameterOrder.plist", "");
    std::filesystem::create_directory_symlink("../elsewhere", root / "link to elsewhere");
    EXPECT_THAT(plugins::scanFolder(root, log_), IsEmpty());
}

TEST_F(ScanFolder, ListsALinkNamedLikeAnOrderFile)
{
    const Path root = folder_ / "Plug-In Settings";
    write(folder_ / "target.plist", "");
    std::filesystem::create_directories(root / "EQ");
    std::filesystem::create_symlink(folder_ / "target.plist", root / "EQ/CSParameterOrder.plist");
    EXPECT_THAT(plugins::scanFolder(root, log_),
                ElementsAre(row("Logic Built-In", "EQ", root / "EQ/CSParameterOrder.plist")));
}

TEST_F(ScanFolder, LogsThePathOfEveryItem)
{
    const Path root = folder_ / "Plug-In Settings";
    write(root / "EQ One/CSParameterOrder.plist", "");
    write(root / "EQ One/Vocal.pst", "");
    write(root / ".DS_Store", "");
    plugins::scanFolder(root, log_);
    EXPECT_THAT(log_.lines,
                UnorderedElementsAre((root / "EQ One").native(), (root / "EQ One/CSParameterOrder.plist").native(),
                                     (root / "EQ One/Vocal.pst").native(), (root / ".DS_Store").native()));
}

TEST_F(ScanFolder, ClearsWhatAKilledRunLeftAndNothingElse)
{
    const Path eq = folder_ / "Plug-In Settings/EQ";
    std::vector<Path> others;
    for (const char* name : {"CSParameterOrder.plist", "CSParameterOrder.plist.12-3", "~CSParameterOrder.plist",
                             "~CSParameterOrder.plist.1", "~CSParameterOrder.plist.prev.1-",
                             "~CSParameterOrder.plists.1-1", "~Vocal.pst.12-3", "1"})
        others.push_back(eq / name);
    for (const Path& file : others)
        write(file, "");
    const platform::files::PartialFile beingMade(eq / "CSParameterOrder.plist");
    ASSERT_TRUE(beingMade.isOpen());
    for (const char* ending : {".12345-1", ".prev.12345-12", ".html.12345-3"})
        write(eq / (std::string("~CSParameterOrder.plist") + ending), "half of a muc");
    EXPECT_EQ(plugins::scanFolder(folder_.path(), log_).size(), 1u);
    const std::string ours = "~CSParameterOrder.plist." + std::to_string(::getpid());
    std::vector<Path> left = test::filesIn(eq);
    EXPECT_EQ(std::erase_if(left, [&](const Path& file) { return file.filename().native().starts_with(ours); }), 1u);
    EXPECT_THAT(left, UnorderedElementsAreArray(others));
}

TEST_F(ScanFolder, OfAMissingRootHasNoRowsAndSaysWhyInTheLog)
{
    const Path missing = folder_ / "missing";
    EXPECT_THAT(plugins::scanFolder(missing, log_), IsEmpty());
    EXPECT_THAT(log_.lines, ElementsAre("Cannot read " + missing.native() + ": No such file or directory"));
}

TEST_F(ScanFolder, ErrorHereStandsInTheLogForAnItemThatWouldNotSayWhatItIs)
{
    const Path root = folder_ / "Plug-In Settings";
    for (const char* plugin : {"EQ A", "EQ B", "EQ C"})
        write(root / plugin / "CSParameterOrder.plist", "");
    write(root / "EQ B/gone", "");
    const test::UnhelpfulFileSystem fileSystem("gone");
    EXPECT_THAT(plugins::scanFolder(root, log_),
                UnorderedElementsAre(row("Logic Built-In", "EQ A", root / "EQ A/CSParameterOrder.plist"),
                                     row("Logic Built-In", "EQ B", root / "EQ B/CSParameterOrder.plist"),
                                     row("Logic Built-In", "EQ C", root / "EQ C/CSParameterOrder.plist")));
    EXPECT_EQ(log_.lines.size(), 3u + 3u + 1u + 1u);
    const auto path = std::find(log_.lines.begin(), log_.lines.end(), (root / "EQ B/gone").native());
    ASSERT_NE(path, log_.lines.end());
    ASSERT_NE(path + 1, log_.lines.end());
    EXPECT_EQ(*(path + 1), "Error Here");
    EXPECT_EQ(std::count(log_.lines.begin(), log_.lines.end(), "Error Here"), 1);
}

TEST_F(ScanFolder, AnOrderFileThatWouldNotSayWhatItIsHasNoRow)
{
    write(folder_ / "Plug-In Settings/EQ/CSParameterOrder.plist", "");
    const test::UnhelpfulFileSystem fileSystem("CSParameterOrder.plist");
    EXPECT_THAT(plugins::scanFolder(folder_.path(), log_), IsEmpty());
    EXPECT_THAT(log_.lines, Contains("Error Here"));
}

} // namespace
