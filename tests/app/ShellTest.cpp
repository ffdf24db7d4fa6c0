#include "app/AppDelegate.h"
#include "app/interface/Lifecycle.h"
#include "tests/support/WindowTest.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

using testing::ElementsAre;
using testing::HasSubstr;

namespace test {

using ShellTest = WindowTest;

TEST_F(ShellTest, StartingScansBeforeAnyUserAction)
{
    writeDictionary(builtIn("EQ One"), orderFile(numbered(3)));
    launch();
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("EQ One"));
    EXPECT_EQ(text("labKOScreen_Title"), "Please Select a plugin");
    EXPECT_EQ(text("labelHelperDisplay"), "Please Select a Plugin");
}

TEST_F(ShellTest, StartingScansOnce)
{
    writeDictionary(builtIn("EQ One"), orderFile(numbered(3)));
    launch();
    const std::string log = logText();
    const std::string line = builtIn("EQ One").native() + "\n";
    EXPECT_NE(log.find(line), std::string::npos);
    EXPECT_EQ(log.find(line), log.rfind(line));
}

TEST_F(ShellTest, NothingFoundIsAnEmptyListAndNoMessage)
{
    const auto alerts = alertsOf([this] { launch(); });
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre());
    EXPECT_THAT(alerts, ElementsAre());
}

TEST_F(ShellTest, AlertWithoutInformativeTextStillHasItsButton)
{
    launch();
    const auto alerts = alertsOf([this] { controller().alertUserAndSub("Only a title", ""); });
    EXPECT_THAT(alerts, ElementsAre(ShownAlert{"Only a title", ""}));
}

TEST_F(ShellTest, AlertIsAWarningAndShowsMarkupAsText)
{
    launch();
    bool looked = false;
    QTimer::singleShot(20, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        looked = true;
        EXPECT_EQ(box->icon(), QMessageBox::Warning);
        EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
        int labels = 0;
        for (const QLabel* label : box->findChildren<QLabel*>()) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->objectName().toStdString();
            labels += label->text() == QLatin1String("<b>x</b>") ? 1 : 0;
        }
        EXPECT_EQ(labels, 2);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    controller().alertUserAndSub("<b>x</b>", "<b>x</b>");
    EXPECT_TRUE(looked);
}

TEST_F(ShellTest, HelpIsShownToTheLetter)
{
    launch();
    const auto alerts = alertsOf([this] { click("kvHelpMe"); });
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].text, "Brief instructions on use");
    EXPECT_THAT(alerts[0].buttons, ElementsAre("OK"));
    EXPECT_EQ(
        alerts[0].informativeText,
        "1. Begin by pressing the 'Scan for plugins' button to locate available plugins on your system (Please note "
        "that third party plugins require a 'default' setting to be saved before they appear).\n\n2. Select a plugin "
        "from the newly populated list that you would like to edit the mapping - once a plugin is selected, the "
        "available parameters shall be displayed, and current mapping displayed on the controls located in the lower "
        "view.\n\n3. Select a Parameter you would like to map from the Plugin Parameters list (Search can be used to "
        "find specific parameters)\n\n4. Once a parameter is selected, click any control from the on-screen Orvanta "
        "front panel.\n\n5. Parameter is now mapped to that control\n\n6. When all mapping has been completed press "
        "'Save Mapping' button, backups will be automatically made.\n\n\n\nMore in depth help to come later");
}

TEST_F(ShellTest, HelpNamesTheButtonsAsTheyAre)
{
    launch();
    EXPECT_EQ(text("btnRunCheck"), "Scan for plugins");
    EXPECT_EQ(text("kvExportToPlist"), "Save Mapping");
}

TEST_F(ShellTest, ClosingWhatIsNotOpenDoesNothing)
{
    launch();
    controller().kvLoginToCloudAccount();
    EXPECT_TRUE(find("cwinCloudWindow")->isVisible());
    controller().closeAllAuxillaryWindows();
    controller().closeAllAuxillaryWindows();
    EXPECT_FALSE(find("cwinCloudWindow")->isVisible());
    EXPECT_TRUE(find("cwinMainWindow")->isVisible());
}

TEST_F(ShellTest, AClosedCommunityWindowOpensAgain)
{
    launch();
    click("kvLoginToCloudAccount");
    find("cwinCloudWindow")->close();
    EXPECT_FALSE(controller().cwinCloudWindow()->visible.get());
    click("kvLoginToCloudAccount");
    EXPECT_TRUE(find("cwinCloudWindow")->isVisible());
}

TEST_F(ShellTest, TheAccountWindowComesUpCentredAndOutOfTheDock)
{
    launch();
    click("kvLoginToCloudAccount");
    auto* window = find("cwinCloudWindow");
    const QPoint offset = window->frameGeometry().center() - window->screen()->availableGeometry().center();
    EXPECT_LE(offset.manhattanLength(), 4);
    window->showMinimized();
    click("kvLoginToCloudAccount");
    EXPECT_FALSE(window->isMinimized());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(ShellTest, CommunityWindowsHoldTheirFieldsAndCloseOnEscape)
{
    launch();
    for (const char* name : {"cwinUserName", "cwinPinCode", "cwinUserNameNew", "cwinEmailAddrNew"})
        EXPECT_EQ(find(name)->window()->objectName(), QLatin1String("cwinCloudWindow")) << name;
    EXPECT_EQ(find("cwinUploadComments")->window()->objectName(), QLatin1String("cwinUploadWindow"));
    for (const char* name : {"cwinPlistAvailable", "cwinUploadedComments"})
        EXPECT_EQ(find(name)->window()->objectName(), QLatin1String("cwinDownloadWindow")) << name;
    click("kvLoginToCloudAccount");
    ASSERT_TRUE(QTest::qWaitForWindowActive(find("cwinCloudWindow")));
    QTest::keyClick(find("cwinCloudWindow"), Qt::Key_Escape);
    EXPECT_FALSE(find("cwinCloudWindow")->isVisible());
}

TEST_F(ShellTest, MenuItemsSendTheirActions)
{
    launch();
    EXPECT_FALSE(find<QAction>("kvExportToPlist")->isEnabled());
    writeDictionary(builtIn("EQ One"), orderFile(numbered(3)));
    find<QAction>("btnRunCheck")->trigger();
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("EQ One"));
    const auto alerts = alertsOf([this] { find<QAction>("kvHelpMe")->trigger(); });
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].text, "Brief instructions on use");
}

TEST_F(ShellTest, ClosingTheMainWindowQuitsUnlessACommunityWindowIsOpen)
{
    launch();
    AppDelegate delegate(platform());
    const interface::Lifecycle lifecycle(delegate, loaded());
    find("cwinCloudWindow")->show();
    bool mainClosedAlone = false;
    QTimer::singleShot(0, [&] {
        find("cwinMainWindow")->close();
        QTimer::singleShot(50, [&] {
            mainClosedAlone = true;
            find("cwinCloudWindow")->close();
        });
    });
    QTimer tooLate;
    QObject::connect(&tooLate, &QTimer::timeout, [] { QApplication::exit(99); });
    tooLate.start(5000);
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(mainClosedAlone);
}

TEST_F(ShellTest, RepresentedObjectIsForwarded)
{
    launch();
    controller().setRepresentedObject(std::string("document"));
    EXPECT_EQ(std::any_cast<std::string>(controller().representedObject()), "document");
}

} // namespace test
