#include "tests/support/WindowlessTest.h"

namespace {

using test::Texts;
using testing::Contains;
using testing::ElementsAre;

class Rescan : public test::WindowlessTest {
protected:
    Texts plugins() const
    {
        Texts names;
        for (const auto& row : controller_.myArrayController()->content())
            names.emplace_back(row.text("Plugin"));
        return names;
    }
};

TEST_F(Rescan, ListsLogicsPluginsBeforeTheUsers)
{
    test::write(thirdParty("Maker", "Synth X"), "");
    test::write(builtIn("EQ One"), "");
    controller_.btnRunCheck();
    EXPECT_THAT(plugins(), ElementsAre("EQ One", "Synth X"));
    EXPECT_EQ(controller_.myArrayController()->content()[0].text("Type"), "Logic Built-In");
    EXPECT_EQ(controller_.myArrayController()->content()[1].text("Type"), "Maker");
    EXPECT_THAT(logLines_, Contains(builtIn("EQ One").native()));
    EXPECT_THAT(logLines_, Contains(builtIn("EQ One").parent_path().native()));
    EXPECT_THAT(logLines_, Contains(thirdParty("Maker", "Synth X").native()));
}

TEST_F(Rescan, AsksForAPluginInItsTwoWays)
{
    controller_.btnRunCheck();
    EXPECT_EQ(controller_.labKOScreen_Title()->stringValue.get(), "Please Select a plugin");
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Please Select a Plugin");
}

TEST_F(Rescan, TheTypeGivenIsInNoRow)
{
    test::write(builtIn("EQ One"), "");
    controller_.checkFilesAndType((home_ / "Library/Application Support").native(), "3rd Party");
    ASSERT_EQ(plugins().size(), 1u);
    const auto& row = controller_.myArrayController()->content().front();
    for (const std::string& key : row.keys())
        EXPECT_NE(row.text(key), "3rd Party") << key;
}

TEST_F(Rescan, EmptiesTheParameterListAsWellAsThePluginList)
{
    const test::Path file = edit({"1 A"});
    ASSERT_EQ(controller_.arrayControllerPlistSelected()->arrangedCount(), 2);
    std::filesystem::remove(file);
    controller_.btnRunCheck();
    EXPECT_EQ(controller_.arrayControllerPlistSelected()->arrangedCount(), 0);
    EXPECT_EQ(controller_.myArrayController()->arrangedCount(), 0);
}

TEST_F(Rescan, ListsEveryPluginOnceHoweverOftenItRuns)
{
    test::write(builtIn("EQ One"), "");
    controller_.btnRunCheck();
    controller_.btnRunCheck();
    EXPECT_THAT(plugins(), ElementsAre("EQ One"));
}

TEST_F(Rescan, LeavesNoPluginSelected)
{
    edit({"1 A"});
    controller_.btnRunCheck();
    EXPECT_EQ(controller_.myArrayController()->selection(), nullptr);
}

} // namespace
