// The words of the window: one spelling, nothing that promises what it does not do, hints before it is too late.

#include "tests/support/WindowTest.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <filesystem>
#include <set>
#include <string>

namespace test {

using testing::HasSubstr;
using testing::Not;

class WordsTest : public WindowTest {
protected:
    /// All that can be read or heard of the windows.
    QStringList words() const
    {
        QStringList found;
        for (const char* window : {"cwinMainWindow", "cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
            found << find<>(window)->windowTitle();
            for (const QWidget* widget : find<>(window)->findChildren<QWidget*>()) {
                found << widget->toolTip() << widget->accessibleName() << widget->accessibleDescription();
                if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
                    found << button->text();
                if (const auto* label = qobject_cast<const QLabel*>(widget))
                    found << label->text();
                if (const auto* field = qobject_cast<const QLineEdit*>(widget))
                    found << field->placeholderText();
                if (const auto* list = qobject_cast<const QAbstractItemView*>(widget)) {
                    for (int column = 0; column < list->model()->columnCount(); ++column)
                        found << list->model()->headerData(column, Qt::Horizontal).toString();
                }
            }
            for (const QAction* item : find<>(window)->findChildren<QAction*>())
                found << item->text() << item->toolTip();
        }
        return found;
    }
    QImage symbolOf(const char* button) const
    {
        return find<QAbstractButton>(button)->icon().pixmap(QSize(24, 24)).toImage();
    }
};

TEST_F(WordsTest, APlugInIsSpelledOneWayButWhereTheTextIsFixed)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(12)));
    launch();
    const std::set<std::string> fixed = {"Scan for plugins", "Please Select a plugin", "Please Select a Plugin",
                                         "Plugin Parameters"};
    int plugIns = 0;
    for (const bool isChosen : {false, true}) {
        if (isChosen)
            select("Synth");
        for (const QString& each : words()) {
            QString own = each;
            for (const std::string& text : fixed)
                own.remove(QString::fromStdString(text));
            plugIns += own.contains(QLatin1String("plug-in"), Qt::CaseInsensitive) ? 1 : 0;
            const bool isPath = own.contains(QLatin1Char('/'));
            EXPECT_FALSE(!isPath && own.contains(QLatin1String("plugin"), Qt::CaseInsensitive)) << each.toStdString();
        }
    }
    EXPECT_GT(plugIns, 20);
    EXPECT_EQ(find<QAbstractButton>("btnRunCheck")->text(), QStringLiteral("Scan for plugins"));
}

TEST_F(WordsTest, WhatExchangesPagesSaysSo)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(24)));
    launch();
    select("Synth");
    for (const char* name : {"kvMovePage_First", "kvMovePage_Prev", "kvMovePage_Next", "kvMovePage_Last"}) {
        EXPECT_THAT(find<QAction>(name)->text().toStdString(), testing::StartsWith("Exchange Page With ")) << name;
        EXPECT_THAT(toolTip(name), testing::StartsWith("Exchange this page with ")) << name;
    }
    click("kvMovePage_Last");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 3 of 3");
    EXPECT_EQ(potLabel(1), "Knob 1");
    click("firstPageButtonPressed");
    EXPECT_EQ(potLabel(1), "Knob 17") << "the pages between keep their places";
    EXPECT_EQ(find<QAction>("undo")->text(), QStringLiteral("Undo Exchange Pages"));
}

TEST_F(WordsTest, SavingTheProgramsOwnDataIsNotTakenForSavingTheMapping)
{
    launch();
    const auto* item = find<QAction>("saveAction");
    EXPECT_THAT(item->toolTip().toStdString(), HasSubstr("no mapping"));
    EXPECT_NE(item->shortcut().toString(QKeySequence::PortableText), QStringLiteral("Ctrl+Shift+S"));
}

TEST_F(WordsTest, AChartThatWillNotBeWrittenIsSeenAndReadBeforehand)
{
    writeDictionary(builtIn("Synth"), orderFile(Texts{"1 Gain", "2 Größe"}));
    writeDictionary(builtIn("Delay"), orderFile(Texts{"1 Gain"}));
    launch();
    select("Delay");
    const QImage usual = symbolOf("kvCreateChart");
    const QString usualTip = find<QAction>("kvCreateChart")->toolTip();
    select("Synth");
    EXPECT_THAT(toolTip("kvCreateChart"), HasSubstr("\nWill not be written: "));
    EXPECT_THAT(find<QAction>("kvCreateChart")->toolTip().toStdString(), testing::StartsWith("Will not be written: "));
    EXPECT_NE(symbolOf("kvCreateChart"), usual);
    click("kvCreateChart");
    EXPECT_FALSE(std::filesystem::exists(builtIn("Synth").native() + ".html"));
    select("Delay");
    EXPECT_THAT(toolTip("kvCreateChart"), Not(HasSubstr("Will not be written")));
    EXPECT_EQ(find<QAction>("kvCreateChart")->toolTip(), usualTip);
    EXPECT_EQ(symbolOf("kvCreateChart"), usual);
    click("kvCreateChart");
    EXPECT_TRUE(std::filesystem::exists(builtIn("Delay").native() + ".html"));
}

TEST_F(WordsTest, TheWorkBeginsInTheListOfPlugIns)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(12)));
    launch();
    QWidget* window = find<>("cwinMainWindow");
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    EXPECT_EQ(QApplication::focusWidget(), find<>("pluginTableView"));
    EXPECT_EQ(selectedRow("pluginTableView"), -1) << "nothing is chosen";
    alertsOf([this] { controller().alertUserAndSub("Hello", "World"); });
    window->activateWindow(); // as a desktop does
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    EXPECT_EQ(QApplication::focusWidget(), find<>("pluginTableView"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(potLabel(1), "Knob 1");
}

} // namespace test
