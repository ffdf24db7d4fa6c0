// What the main window does on screens of all sizes, with letters of all sizes, and for those who read from the right.

#include "app/interface/RowButton.h"
#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/Drafts.h"
#include "platform/qt/ElidedLabel.h"
#include "tests/support/Pictures.h"
#include "tests/support/WindowTest.h"

#include <QAccessible>
#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QStyledItemDelegate>
#include <QTest>
#include <QTreeView>

#include <cstdlib>
#include <ctime>
#include <optional>

namespace test {

using interface::RowButton;
using platform::qt::ElidedLabel;

class FittingTest : public WindowTest {
protected:
    ~FittingTest() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

    /// The window of a plug-in with ten pages.
    void open(int fontPixels, const QSize& size, const std::string& plugin = "Synth")
    {
        look_.reset();
        look_.emplace(lightPalette(), fontPixels);
        writeDictionary(builtIn(plugin), orderFile(numbered(80)));
        launch();
        window()->resize(size);
        select(plugin);
        QApplication::processEvents();
    }
    QWidget* window() const { return find<>("cwinMainWindow"); }
    void resize(const QSize& size) const
    {
        window()->resize(size);
        QApplication::processEvents();
    }
    QRect place(const QWidget* widget) const { return {widget->mapTo(window(), QPoint()), widget->size()}; }
    QRect place(const char* name) const { return place(find<>(name)); }

    /// All that is wrong with the buttons that are seen: too small, over one another, or out of the window.
    std::string faults() const
    {
        QStringList found;
        std::vector<const RowButton*> seen;
        for (const auto* button : window()->findChildren<RowButton*>()) {
            if (button->isVisible())
                seen.push_back(button);
        }
        for (const RowButton* button : seen) {
            if (button->size() != button->sizeHint() || !window()->rect().contains(place(button)))
                found += button->objectName() + QStringLiteral(" is cut");
            for (const RowButton* other : seen) {
                if (other < button && place(button).intersects(place(other)))
                    found += button->objectName() + QStringLiteral(" over ") + other->objectName();
            }
        }
        return found.join(QStringLiteral(", ")).toStdString();
    }
    /// What is drawn there on the colour of the first pixel, but for what is nearly that.
    static QRect inkOf(const QImage& picture, const QRect& within)
    {
        const int ground = qGray(picture.pixel(within.topLeft()));
        QRect ink;
        for (int y = within.top(); y <= within.bottom(); ++y) {
            for (int x = within.left(); x <= within.right(); ++x) {
                if (std::abs(qGray(picture.pixel(x, y)) - ground) > 60)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return ink;
    }
    bool showsWords(const char* name) const
    {
        const auto* button = find<RowButton>(name);
        return button->isVisible() && button->width() == button->sizeFor(true).width();
    }

private:
    std::optional<FixedLook> look_;
};

TEST_F(FittingTest, EveryScreenShowsAllOfItWithAllBarsAndHints)
{
    const std::string longName(200, 'x');
    const std::pair<QSize, int> screens[] = {{{1024, 640}, 13}, {{1440, 900}, 20}};
    for (const auto& [size, fontPixels] : screens) {
        for (const std::string& plugin : {std::string("Synth"), longName}) {
            Texts emptied = numbered(80);
            emptied[0] = "-1";
            mapping::Drafts(home_.path() / "state/kvOrvantaLogic_Tool/drafts")
                .keep({builtIn(plugin).native(), emptied, 10, 1, 0, std::time(nullptr)});
            open(fontPixels, size, plugin);
            find<QAction>("compareWithSaved")->trigger();
            click("clearAllPagesButtonPressed");
            controller().placed.set({1, 2, {"Cutoff"}});
            QApplication::processEvents();
            for (const char* shown : {"draftBar", "differenceHint", "leftoverHint", "placedHint", "unsavedReadOut"})
                EXPECT_TRUE(find<>(shown)->isVisible()) << shown;
            EXPECT_EQ(window()->size(), size);
            EXPECT_EQ(faults(), "");
            EXPECT_FALSE(find<ElidedLabel>("unsavedReadOut")->isShortened());
            EXPECT_FALSE(find<ElidedLabel>("labLoggedInAs")->isShortened());
            EXPECT_FALSE(find<ElidedLabel>("mainTitle_Sub")->isShortened());
            EXPECT_GE(find<>("tablePlistOfSelectedPlugin")->height(), 5 * fontPixels);
        }
    }
}

TEST_F(FittingTest, ButtonsGiveUpTheirWordsTheLastGroupFirst)
{
    open(13, {1280, 800});
    EXPECT_TRUE(showsWords("kvHelpMe") && showsWords("kvExportToPlist") && showsWords("kvMovePage_Next"));
    bool couldHelp = true;
    bool couldMap = true;
    bool couldSave = true;
    for (int width = 1280; width >= 760; width -= 10) {
        resize({width, 800});
        EXPECT_EQ(window()->width(), width);
        EXPECT_EQ(faults(), "") << width;
        const bool helps = showsWords("kvHelpMe");
        const bool maps = showsWords("kvRecallOriginalMapping");
        const bool saves = showsWords("kvExportToPlist");
        EXPECT_TRUE(!helps || (maps && couldHelp)) << width;
        EXPECT_TRUE(!maps || (saves && couldMap)) << width;
        EXPECT_TRUE(!saves || couldSave) << width;
        EXPECT_EQ(maps, showsWords("kvCreateChart")) << "a group looks alike";
        EXPECT_TRUE(saves || width < 1000) << width;
        couldHelp = helps;
        couldMap = maps;
        couldSave = saves;
    }
    EXPECT_FALSE(couldHelp || couldMap || couldSave);
    // What it says without words.
    const auto* save = find<RowButton>("kvExportToPlist");
    EXPECT_EQ(save->text(), QStringLiteral("Save Mapping"));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(const_cast<RowButton*>(save))->text(QAccessible::Name),
              QStringLiteral("Save Mapping"));
    EXPECT_NE(toolTip("kvExportToPlist"), "");
    resize({1280, 800});
    EXPECT_TRUE(showsWords("kvHelpMe") && showsWords("kvExportToPlist"));
}

TEST_F(FittingTest, WhatHasNoRoomIsInTheMenuOfAButton)
{
    open(30, {2600, 1400});
    EXPECT_FALSE(find<>("moreOfMapping")->isVisible());
    for (const int width : {2600, 1600, 1300, 1100, 1000, 900}) {
        resize({width, 1400});
        EXPECT_EQ(faults(), "") << width;
    }
    const auto* more = find<RowButton>("moreOfMapping");
    ASSERT_TRUE(more->isVisible());
    EXPECT_FALSE(find<RowButton>("kvHelpMe")->isVisible());
    EXPECT_EQ(more->accessibleName(), QStringLiteral("More for the mapping"));
    click("moreOfMapping");
    auto* menu = more->findChild<QMenu*>();
    EXPECT_TRUE(menu->isVisible());
    QStringList offered;
    for (const QAction* item : menu->actions())
        offered += item->objectName();
    QStringList hidden;
    for (const char* name : {"undo", "redo", "kvExportToPlist", "kvRecallOriginalMapping", "kvRecallPreviousMapping",
                             "kvCreateChart", "kvHelpMe"}) {
        const QString button = QLatin1String(name) + QLatin1String(std::string_view(name).size() == 4 ? "Button" : "");
        if (find<QWidget>(button.toLatin1().constData())->isHidden())
            hidden += QLatin1String(name);
    }
    EXPECT_EQ(offered, hidden);
    EXPECT_TRUE(hidden.contains(QStringLiteral("kvHelpMe")));
    const auto alerts = alertsOf([&] { menu->close(), menu->actions().back()->trigger(); });
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].text, "Brief instructions on use");
    resize({2600, 1400});
    EXPECT_FALSE(more->isVisible());
    EXPECT_TRUE(showsWords("kvHelpMe"));
}

TEST_F(FittingTest, PanelAndStripGrowWithTheWindow)
{
    open(13, {1024, 640});
    const auto* panel = find<interface::FrontPanel>("frontPanel");
    const auto* strip = find<interface::PageOverview>("pageOverview");
    const auto tile = [strip](int page) { return strip->visualRect(strip->model()->index(page - 1, 0)); };
    const int lowest = panel->height();
    const int oneRow = strip->height();
    EXPECT_EQ(tile(10).top(), tile(1).top());
    while (find<>("lab_PageCurrentlyDisplayed")->property("text").toString() != QStringLiteral("Page 60 of 60"))
        controller().newPageButtonPressed();
    QApplication::processEvents();
    EXPECT_EQ(strip->height(), oneRow) << "there is no room for another";
    resize({2560, 1440});
    EXPECT_GT(panel->height(), 2 * lowest);
    EXPECT_GT(tile(60).top(), tile(1).top());
    EXPECT_EQ(strip->viewport()->height(), tile(60).bottom() + 1) << "all rows and no more";
    resize({1024, 640});
    EXPECT_NEAR(panel->height(), lowest, 2);
    EXPECT_EQ(strip->height(), oneRow);
}

TEST_F(FittingTest, ColumnsAreAsWideAsTheyAreRead)
{
    for (const auto& [size, fontPixels] :
         {std::pair(QSize(1024, 640), 13), std::pair(QSize(1440, 900), 20), std::pair(QSize(2560, 1440), 13)}) {
        open(fontPixels, size);
        const auto* plugins = find<QTreeView>("pluginTableView");
        const auto* parameters = find<QTreeView>("tablePlistOfSelectedPlugin");
        const auto letters = [](const QTreeView* list, int column) {
            return list->columnWidth(column) / list->fontMetrics().averageCharWidth();
        };
        const int word = plugins->fontMetrics().horizontalAdvance(QStringLiteral("Editable"));
        EXPECT_GT(plugins->columnWidth(2), word);
        EXPECT_LT(plugins->columnWidth(2), word + 2 * fontPixels);
        for (const QTreeView* list : {plugins, parameters}) {
            int width = 0;
            for (int column = 0; column < 3; ++column) {
                width += list->columnWidth(column);
                const QString title = list->model()->headerData(column, Qt::Horizontal).toString();
                EXPECT_GE(list->columnWidth(column), list->fontMetrics().horizontalAdvance(title) + 6) << column;
                EXPECT_LE(letters(list, column), 115) << column;
            }
            EXPECT_EQ(width, list->viewport()->width());
        }
        EXPECT_GE(letters(plugins, 0), 20);
        EXPECT_GE(letters(plugins, 1), 15);
        EXPECT_GE(letters(parameters, 1), 30);
        EXPECT_GE(letters(parameters, 2), 20);
    }
}

TEST_F(FittingTest, AColumnKeepsTheWidthThatItWasGiven)
{
    open(13, {1280, 800});
    auto* header = find<QTreeView>("tablePlistOfSelectedPlugin")->header();
    header->resizeSection(2, 133);
    resize({1600, 800});
    EXPECT_EQ(header->sectionSize(2), 133);
}

TEST_F(FittingTest, AboveBothListsIsTheSame)
{
    for (const int fontPixels : {13, 20}) {
        open(fontPixels, {1440, 900});
        const auto* plugins = find<QTreeView>("pluginTableView")->header();
        const auto* parameters = find<QTreeView>("tablePlistOfSelectedPlugin")->header();
        EXPECT_EQ(place(plugins).top(), place(parameters).top());
        EXPECT_EQ(place(plugins).bottom(), place(parameters).bottom());
        const int middle = place("btnRunCheck").center().y();
        for (const char* inLine : {"pluginSearch", "parameterSearch", "unmappedOnly"})
            EXPECT_NEAR(place(inLine).center().y(), middle, 1) << inLine;
    }
}

// The plug-in's file

TEST_F(FittingTest, APathThatIsTooLongEndsWithThePlugIn)
{
    open(13, {1024, 640});
    const auto* path = find<ElidedLabel>("labPluginPlistLocation");
    ASSERT_TRUE(path->isShortened());
    const QString shown = path->shownLines().join(QString());
    EXPECT_TRUE(shown.startsWith(QChar(0x2026)));
    EXPECT_TRUE(shown.endsWith(QStringLiteral("/Synth/CSParameterOrder.plist"))) << shown.toStdString();
    EXPECT_EQ(path->text().toStdString(), builtIn("Synth").native());
}

TEST_F(FittingTest, WhoIsLoggedInIsReadBeforeTheWholePath)
{
    open(13, {1024, 640});
    ASSERT_TRUE(find<ElidedLabel>("labPluginPlistLocation")->isShortened());
    controller().changeLoginStateAndState("a rather long name", 1);
    QApplication::processEvents();
    EXPECT_FALSE(find<ElidedLabel>("labLoggedInAs")->isShortened());
    EXPECT_EQ(faults(), "");
}

TEST_F(FittingTest, ThePlugInsFileIsShownWhereItLies)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(8)));
    launch();
    EXPECT_FALSE(isEnabled("revealFile"));
    EXPECT_FALSE(find<QAction>("revealFile")->isEnabled());
    select("Synth");
    click("revealFile");
    EXPECT_EQ(workspace_.revealed, std::vector<Path>{builtIn("Synth")});
    EXPECT_TRUE(workspace_.opened.empty());
    EXPECT_LE(place("labPluginPlistLocation").left() - place("revealFile").right(), 8) << "it stands beside the path";
}

// From the right

TEST_F(FittingTest, OnlyTheHardwareStaysAsItIsForThoseWhoReadFromTheRight)
{
    open(13, {1280, 800});
    const QImage panel = pictureOf(*find<>("frontPanel"));
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(13, {1280, 800});
    EXPECT_EQ(comparePictures(pictureOf(*find<>("frontPanel")), panel).densest, 0);
    const auto* strip = find<interface::PageOverview>("pageOverview");
    const auto tile = [strip](int page) { return strip->visualRect(strip->model()->index(page - 1, 0)); };
    EXPECT_GT(tile(1).left(), tile(2).left());
    for (const char* list : {"pluginTableView", "tablePlistOfSelectedPlugin"}) {
        const QHeaderView* header = find<QTreeView>(list)->header();
        EXPECT_GT(header->sectionViewportPosition(0), header->sectionViewportPosition(2));
        EXPECT_TRUE(window()->rect().adjusted(10, 0, -10, 0).contains(place(list))) << list;
    }
    EXPECT_EQ(faults(), "");
}

TEST_F(FittingTest, TextsBeginAtTheRightForThoseWhoReadFromThere)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(13, {1280, 800});
    // A column's title stands above what it is the title of.
    auto* header = find<QTreeView>("tablePlistOfSelectedPlugin")->header();
    const QRect title(header->sectionViewportPosition(1) + 3, 2, header->sectionSize(1) - 6, header->height() - 4);
    const QRect drawn = inkOf(pictureOf(*header), title);
    EXPECT_GT(drawn.left(), title.center().x());
    EXPECT_LE(title.right() - drawn.right(), 6);
    // Words and symbol are in the middle of their button.
    for (const char* name : {"btnRunCheck", "kvExportToPlist", "clearAllPagesButtonPressed"}) {
        auto* button = find<RowButton>(name);
        ASSERT_TRUE(showsWords(name));
        const QRect within = button->rect().adjusted(4, 4, -4, -4);
        const QRect content = inkOf(pictureOf(*button), within);
        EXPECT_LE(std::abs((content.left() - within.left()) - (within.right() - content.right())), 6) << name;
    }
}

TEST_F(FittingTest, PicturesShowWhatIsSeen)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        open(13, {780, 590}); // within the screen
        const QImage seen = window()->screen()->grabWindow(window()->winId()).toImage();
        ASSERT_EQ(seen.size(), window()->size());
        EXPECT_EQ(comparePictures(pictureOf(*window()), seen).densest, 0);
    }
}

TEST_F(FittingTest, WhatIsReadFromTheLeftIsIsolatedWhereItIsPainted)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(13, {1280, 800});
    const auto* list = find<QTreeView>("tablePlistOfSelectedPlugin");
    const QModelIndex pots = list->model()->index(4, 2);
    EXPECT_EQ(pots.data().toString(), QString::fromUtf8("1·4"));
    const auto* delegate = qobject_cast<QStyledItemDelegate*>(list->itemDelegate());
    EXPECT_EQ(delegate->displayText(pots.data(), QLocale()), QString::fromUtf8("\u20681·4\u2069"));
    EXPECT_TRUE(find<ElidedLabel>("labPluginPlistLocation")->text().startsWith(QLatin1Char('/')));
    // An English text ends with its full stop at the right, whoever reads it.
    auto* button = find<RowButton>("kvExportToPlist");
    button->setText(QStringLiteral("Save."));
    const QImage asItIs = pictureOf(*button);
    button->setText(QString::fromUtf8("\u2066Save.\u2069"));
    EXPECT_EQ(comparePictures(pictureOf(*button), asItIs).densest, 0);
}

} // namespace test
