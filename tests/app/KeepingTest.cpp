// The chart on paper and as a PDF: the dialogs are answered as a user would, the files are the program's own.

#include "tests/support/WindowTest.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <string>

namespace test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class KeepingTest : public WindowTest {
protected:
    void edit(const Texts& order)
    {
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        select("Synth");
    }

    /// Triggers an action and does something in each dialog of that name that it opens; tells how many there were.
    int trigger(const char* action, const char* dialogName, const std::function<void(QDialog&)>& answer)
    {
        int dialogs = 0;
        QTimer timer;
        const QDialog* answered = nullptr;
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog || dialog == answered || dialog->objectName() != QLatin1String(dialogName))
                return;
            EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
            answered = dialog;
            ++dialogs;
            answer(*dialog);
        });
        timer.start(2);
        find<QAction>(action)->trigger();
        return dialogs;
    }
    static void enter(QDialog& dialog, const char* field, const Path& path)
    {
        auto* line = dialog.findChild<QLineEdit*>(QLatin1String(field));
        ASSERT_TRUE(line);
        line->setText(QString::fromStdString(path.native()));
        QTest::keyClick(line, Qt::Key_Return);
    }
    int saveAs(const Path& path)
    {
        return trigger("chartPdf", "saveDialog", [&](QDialog& dialog) { enter(dialog, "fileNameEdit", path); });
    }
    static bool isPdf(const std::string& bytes) { return bytes.starts_with("%PDF-1.") && bytes.size() > 1000; }
    static std::size_t sheetsOf(const std::string& pdf)
    {
        std::size_t sheets = 0;
        for (auto at = pdf.find("/Type /Page\n"); at != std::string::npos; at = pdf.find("/Type /Page\n", at + 1))
            ++sheets;
        return sheets;
    }
    Path target() const { return home_.path() / "Written.pdf"; }
};

TEST_F(KeepingTest, APdfOfNamesInAnyScriptIsSavedAndOpened)
{
    edit({"1 Écho", "2 <b>音量</b>", "3 🎛️"});
    const std::string before = read(builtIn("Synth"));
    EXPECT_THAT(alertsOf([this] { EXPECT_EQ(saveAs(target()), 1); }), IsEmpty());
    const std::string pdf = read(target());
    EXPECT_TRUE(isPdf(pdf));
    EXPECT_EQ(sheetsOf(pdf), 1u);
    EXPECT_THAT(workspace_.opened, ElementsAre(target()));
    EXPECT_EQ(read(builtIn("Synth")), before);
}

TEST_F(KeepingTest, FortyPagesAreAFewSheets)
{
    edit(numbered(320));
    saveAs(target());
    const std::size_t sheets = sheetsOf(read(target()));
    EXPECT_GE(sheets, 2u);
    EXPECT_LE(sheets, 4u);
}

TEST_F(KeepingTest, ItHoldsTheMappingInMemory)
{
    edit(numbered(8));
    saveAs(target());
    const std::size_t before = sheetsOf(read(target()));
    for (int page = 0; page < 40; ++page)
        click("newPageButtonPressed");
    EXPECT_THAT(alertsOf([this] { saveAs(target()); }, {"&Yes"}), testing::SizeIs(1));
    EXPECT_GT(sheetsOf(read(target())), before);
}

TEST_F(KeepingTest, TheDialogProposesANameInTheDocumentsFolder)
{
    std::filesystem::create_directories(home_.path() / "home/Documents");
    edit(numbered(3));
    trigger("chartPdf", "saveDialog", [](QDialog& dialog) {
        auto* line = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        EXPECT_EQ(line->text().toStdString(), "Synth chart.pdf");
        QTest::keyClick(line, Qt::Key_Return);
    });
    EXPECT_THAT(workspace_.opened, ElementsAre(home_.path() / "home/Documents/Synth chart.pdf"));
}

TEST_F(KeepingTest, ANameWithoutAnEndingGetsOne)
{
    edit(numbered(3));
    saveAs(home_.path() / "Mine");
    EXPECT_TRUE(isPdf(read(home_.path() / "Mine.pdf")));
}

TEST_F(KeepingTest, CancellingWritesAndOpensNothing)
{
    edit(numbered(3));
    const auto files = [this] {
        std::vector<Path> paths;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path())) {
            if (entry.path().native().find("/config") == std::string::npos) // what dialogs remember
                paths.push_back(entry.path());
        }
        return paths;
    };
    const auto before = files();
    for (const auto& [action, dialogName] :
         {std::pair{"chartPdf", "saveDialog"}, std::pair{"printChart", "printDialog"}}) {
        const auto escape = [](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); };
        EXPECT_THAT(alertsOf([&] { EXPECT_EQ(trigger(action, dialogName, escape), 1) << action; }), IsEmpty());
    }
    EXPECT_EQ(files(), before);
    EXPECT_THAT(workspace_.opened, IsEmpty());
}

TEST_F(KeepingTest, AFileIsReplacedOnlyWhenThatIsConfirmed)
{
    edit(numbered(3));
    write(target(), "earlier");
    const auto asked = alertsOf(
        [this] {
            trigger("chartPdf", "saveDialog", [this](QDialog& dialog) {
                enter(dialog, "fileNameEdit", target());
                QTest::keyClick(&dialog, Qt::Key_Escape);
            });
        },
        {"&No"});
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_THAT(asked[0].text, HasSubstr("Written.pdf already exists"));
    EXPECT_EQ(read(target()), "earlier");
    EXPECT_THAT(workspace_.opened, IsEmpty());
    alertsOf([this] { saveAs(target()); }, {"&Yes"});
    EXPECT_TRUE(isPdf(read(target())));
}

TEST_F(KeepingTest, WhatCouldNotBeSavedIsTold)
{
    edit(numbered(3));
    const Path path = home_.path() / "missing/Written.pdf";
    EXPECT_THAT(alertsOf([&] { saveAs(path); }),
                ElementsAre(ShownAlert{"Chart could not be saved",
                                       "The folder may be write-protected, or its disk full. What was there before is "
                                       "as it was.\n\n" +
                                           path.native()}));
    EXPECT_THAT(workspace_.opened, IsEmpty());
}

#ifdef Q_OS_LINUX // elsewhere the dialog is the system's own

TEST_F(KeepingTest, PrintingToAFileWritesAllSheets)
{
    edit(numbered(320));
    EXPECT_EQ(trigger("printChart", "printDialog", [this](QDialog& dialog) { enter(dialog, "filename", target()); }),
              1);
    const std::string pdf = read(target());
    EXPECT_TRUE(isPdf(pdf));
    EXPECT_GE(sheetsOf(pdf), 2u);
    EXPECT_THAT(workspace_.opened, IsEmpty());
}

#endif

TEST_F(KeepingTest, BothNeedAMapping)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(3)));
    launch();
    for (const char* action : {"printChart", "chartPdf"})
        EXPECT_FALSE(find<QAction>(action)->isEnabled()) << action;
    select("Synth");
    for (const char* action : {"printChart", "chartPdf"})
        EXPECT_TRUE(find<QAction>(action)->isEnabled()) << action;
    click("btnRunCheck"); // the mapping stays, so it can still be kept
    saveAs(target());
    EXPECT_TRUE(isPdf(read(target())));
}

TEST_F(KeepingTest, TheChartsButtonTellsBeforehandWhenANameKeepsItFromBeingWritten)
{
    const auto tells = [this] {
        const bool isTold = toolTip("kvCreateChart").find("Chart as PDF") != std::string::npos;
        EXPECT_EQ(isTold, !find<>("kvCreateChart")->accessibleDescription().isEmpty());
        return isTold;
    };
    writeDictionary(builtIn("Écho"), orderFile(numbered(3)));
    writeDictionary(builtIn("Synth"), orderFile(Texts{"1 Gain", "-1", "3 Größe"}));
    writeDictionary(builtIn("Plain"), orderFile(numbered(3)));
    launch();
    EXPECT_FALSE(tells());
    select("Synth");
    EXPECT_TRUE(tells());
    chooseParameter("Gain");
    pressPot(3);
    EXPECT_FALSE(tells());
    EXPECT_THAT(toolTip("kvCreateChart"), HasSubstr("Write the mapping as an HTML chart and open it"));
    click("undoButton");
    EXPECT_TRUE(tells());
    click("redoButton");
    EXPECT_FALSE(tells());
    select("Écho");
    EXPECT_TRUE(tells()) << "its path is in the chart";
    select("Plain");
    EXPECT_FALSE(tells());
    select("Synth");
    click("btnRunCheck");
    EXPECT_FALSE(tells()) << "no chart can be asked for";
}

} // namespace test
