// What the user guide states beside what the program does: names on screen, the files beside a plug-in, where things
// lie, and how the guide itself is opened.

#include "app/interface/Actions.h"
#include "mapping/MappingFile.h"
#include "tests/guide/GuidePages.h"
#include "tests/support/DelegateTest.h"
#include "tests/support/WindowTest.h"
#include "tests/support/WindowlessTest.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTreeView>

#include <set>

namespace test {

using testing::ElementsAre;

class Guide : public WindowTest {
protected:
    Guide() { launch(); }

    /// Every text that is on screen by itself: menus and their items, buttons, headings, captions, columns, groups.
    std::set<std::string> namesOnScreen() const
    {
        std::set<std::string> names = {"Show in Finder", "Show in Folder"}; // the one here, the other elsewhere
        const auto add = [&names](QString name) { names.insert(name.remove(QLatin1Char('&')).toStdString()); };
        for (const interface::Action& action : interface::Action::all()) {
            add(action.translated(action.text));
            add(action.translated(action.caption));
        }
        for (const QAction* menu : find<QMenuBar>("menuBar")->actions())
            add(menu->text());
        for (const char* window : {"cwinMainWindow", "cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
            for (const QLabel* label : find<>(window)->findChildren<QLabel*>())
                add(label->text());
            for (const QAbstractButton* button : find<>(window)->findChildren<QAbstractButton*>())
                add(button->text());
            for (const QGroupBox* box : find<>(window)->findChildren<QGroupBox*>())
                add(box->title());
            for (const QLineEdit* field : find<>(window)->findChildren<QLineEdit*>())
                add(field->placeholderText());
            for (const QTreeView* list : find<>(window)->findChildren<QTreeView*>()) {
                for (int column = 0; list->model() && column < list->model()->columnCount(); ++column)
                    add(list->model()->headerData(column, Qt::Horizontal).toString());
            }
        }
        return names;
    }
};

TEST_F(Guide, NamesInBoldTypeAreOnScreen)
{
    const auto names = namesOnScreen();
    int bold = 0;
    for (const std::string& page : guidePages()) {
        for (const QString& name : found(guidePage(page), QStringLiteral(R"(\*\*([^*]+)\*\*)"))) {
            ++bold;
            EXPECT_TRUE(names.contains(name.toStdString()))
                << "docs/guide/" << page << " names what is not on screen: " << name.toStdString();
        }
    }
    EXPECT_GE(bold, 60);
}

TEST_F(Guide, TellsOfEveryItemOfTheMenus)
{
    QString all;
    for (const std::string& page : guidePages())
        all += guidePage(page).simplified();
    // Of each desktop's own, or said by their texts.
    const std::set<std::string> kNeedNothing = {"minimiseWindow", "zoomWindow", "about", "userGuide"};
    for (const interface::Action& action : interface::Action::all()) {
        if (action.menu == interface::Menu::none || kNeedNothing.contains(action.name) || action.pot > 1)
            continue;
        const QString text = action.translated(action.text);
        EXPECT_TRUE(all.contains(text) ||
                    (action.caption &&
                     all.contains(QLatin1String("**") + action.translated(action.caption) + QLatin1String("**"))))
            << "docs/guide does not tell of " << text.toStdString();
    }
}

TEST_F(Guide, QuotesWhatThePanelSays)
{
    writeDictionary(builtIn("Synth"), orderFile({"1 Master Volume"}));
    writeDictionary(builtIn("EQ"), orderFile({"1 Gain"}));
    launch();
    const QString modes = guidePage("modes.md");
    for (const char* plugin : {"Synth", "EQ"}) {
        select(plugin);
        EXPECT_TRUE(modes.contains(QString::fromStdString('"' + text("mainTitle_Sub") + '"')));
    }
    EXPECT_TRUE(guidePage("first-mapping.md")
                    .contains(QString::fromStdString('"' + columnOf("tablePlistOfSelectedPlugin", 2).front() + '"')));
    EXPECT_TRUE(guidePage("finding-plugins.md")
                    .contains(QString::fromStdString('"' + columnOf("pluginTableView", 1).front() + '"')));
}

class GuideFiles : public WindowlessTest {
protected:
    static std::set<std::string> namesIn(const Path& folder)
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
    void mapFirst(int row)
    {
        selectParameter(row);
        controller_.clickControl(0);
    }
};

TEST_F(GuideFiles, BesideAPluginAreThoseOfTheTable)
{
    const Path file = edit({"1 One", "2 Two", "3 Three"});
    const auto beside = [&file](const char* ending) { return Path(file.native() + ending); };
    const std::string untouched = read(file);

    mapFirst(2);
    controller_.exportToPlist();
    EXPECT_EQ(read(beside(".original")), untouched);
    EXPECT_EQ(read(beside(".prev")), untouched); // equal after the first save
    const std::string first = read(file);
    mapFirst(3);
    controller_.exportToPlist();
    EXPECT_EQ(read(beside(".original")), untouched);
    EXPECT_EQ(read(beside(".prev")), first);
    const std::string second = read(file);

    test::write(beside(".downloaded"), orderBytes({"2 Two"}));
    controller_.downloadDidFinish();
    EXPECT_EQ(pots().front(), "Two");
    EXPECT_EQ(read(file), second); // loading alone changes nothing
    controller_.kvCreateChart();

    std::set<std::string> written;
    for (const QStringList& row :
         tableBelow(guidePage("comparing-and-recalling.md"), QStringLiteral("The files beside a plug-in")))
        written.insert(QString(row.front()).remove(QLatin1Char('`')).toStdString());
    EXPECT_EQ(namesIn(file.parent_path()), written);

    // By hand, as the guide has it: each of the mappings can take the place of the first.
    for (const auto& [ending, name] : {std::pair{".prev", "Two"}, {".original", "One"}, {".downloaded", "Two"}}) {
        std::filesystem::copy_file(beside(ending), file, std::filesystem::copy_options::overwrite_existing);
        controller_.btnRunCheck();
        select("EQ One");
        EXPECT_EQ(pots().front(), name) << ending;
    }

    // A new original is made when there is none.
    std::filesystem::remove(beside(".original"));
    const std::string now = read(file);
    controller_.exportToPlist();
    EXPECT_EQ(read(beside(".original")), now);
}

TEST_F(GuideFiles, ThatAreNoPropertyListAreSetAside)
{
    const Path file = builtIn("EQ One");
    test::write(file, "no property list");
    controller_.btnRunCheck();
    select("EQ One");
    const QString page = guidePage("comparing-and-recalling.md");
    for (const std::string& name : namesIn(file.parent_path()))
        EXPECT_TRUE(page.contains(QString::fromStdString('`' + name + '`'))) << name;
    EXPECT_THAT(namesIn(file.parent_path()), ElementsAre("CSParameterOrder.plist.unreadable"));
}

TEST_F(GuideFiles, LieWhereTheGuideSays)
{
    const platform::qt::UserFolders folders;
    EXPECT_TRUE(guidePage("finding-plugins.md")
                    .contains(QStringLiteral("`/Library/Application Support/Logic/Plug-In Settings`")));
    ::unsetenv("KV_LOCAL_LIBRARY");
    EXPECT_EQ(folders.localApplicationSupport(), "/Library/Application Support");

    const QString drafts = guidePage("drafts.md");
    EXPECT_TRUE(drafts.contains(QStringLiteral("`~/Library/Autosave Information/" KV_BUNDLE_IDENTIFIER "`")));
    EXPECT_TRUE(drafts.contains(QStringLiteral("`~/.local/state/%1/drafts`").arg(QCoreApplication::applicationName())));
    ::unsetenv("XDG_STATE_HOME");
    const Path home = folders.home();
    const auto below = folders.drafts().lexically_relative(home).string();
    EXPECT_TRUE(drafts.contains(QString::fromStdString("`~/" + below + '`'))) << below;
}

class OpeningTheGuide : public WindowTest {
protected:
    Path guide_ = home_ / "resources/guide/index.html";
    FoldersWithResources folders_{home_ / "resources"};
    platform::qt::SystemPlatform effects_{kPreferences, {nullptr, &workspace_, &folders_, &log_, nullptr}};
    ViewController controller_{effects_.platform};
};

TEST_F(OpeningTheGuide, IsDoneByTheSystemFromTheHelpMenu)
{
    test::write(guide_, "<html>");
    const interface::Interface window(controller_);
    auto* item = window.find<QAction>("userGuide");
    EXPECT_TRUE(item->isVisible());
    EXPECT_TRUE(item->isEnabled());
    EXPECT_EQ(qobject_cast<QMenu*>(item->parent())->title(), QStringLiteral("&Help"));
    item->trigger();
    EXPECT_THAT(workspace_.opened, ElementsAre(guide_));
}

TEST_F(OpeningTheGuide, IsNotOfferedWhereThereIsNone)
{
    const interface::Interface window(controller_);
    EXPECT_FALSE(window.find<QAction>("userGuide")->isVisible());
}

} // namespace test
