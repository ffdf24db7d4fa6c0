#include "platform/qt/Application.h"
#include "tests/support/DelegateTest.h"

#include <QAction>
#include <QSessionManager>
#include <QTest>
#include <QTranslator>

#include <csignal>

#include <unistd.h>

using testing::ElementsAre;
using testing::SizeIs;
using Reply = AppDelegate::TerminateReply;

namespace test {

namespace {

constexpr int kGoesOn = 99;

class QuittingTest : public DelegateTest {
protected:
    /// Runs the event loop for one action. The exit status, or kGoesOn when the action did not end the program.
    static int exitStatusOf(const std::function<void()>& action)
    {
        QTimer start;
        QTimer stop;
        start.setSingleShot(true);
        stop.setSingleShot(true);
        QObject::connect(&start, &QTimer::timeout, [&] {
            action();
            stop.start(50);
        });
        QObject::connect(&stop, &QTimer::timeout, [] { QApplication::exit(kGoesOn); });
        start.start(0);
        return QApplication::exec();
    }

    void closeAllWindows()
    {
        for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow", "cwinMainWindow"})
            find(window)->close();
    }

    ShownAlert quitAlert() const
    {
        return {"Could not save changes while quitting. Quit anyway?",
                "Quitting now will lose any changes you have made since the last successful save",
                {"Quit anyway", "Cancel"}};
    }
    ShownAlert saveError() const
    {
        return {"The store “" + store_.native() + "” could not be written.",
                "The disk may be full, or the folder may not be yours to write in.",
                {"Try Again", "Cancel"}};
    }
};

class German final : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        static const QHash<QString, QString> kTexts = {
            {QStringLiteral("Could not save changes while quitting. Quit anyway?"), QStringLiteral("Trotzdem?")},
            {QStringLiteral("Quitting now will lose any changes you have made since the last successful save"),
             QStringLiteral("Alles weg")},
            {QStringLiteral("Quit anyway"), QStringLiteral("Ja")},
            {QStringLiteral("Cancel"), QStringLiteral("Nein")},
        };
        return QLatin1String(context) == QLatin1String("Localizable") ? kTexts.value(QString::fromUtf8(text))
                                                                      : QString();
    }
};

} // namespace

TEST_F(QuittingTest, AStoreNeverUsedIsNotCreated)
{
    EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now);
    EXPECT_FALSE(std::filesystem::exists(dataBelow(home_.path())));
}

TEST_F(QuittingTest, AStoreThatCannotBeMadeDoesNotMatterUnlessItIsUsed)
{
    write(data_, "in the way");
    const auto alerts = alertsOf([this] { EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now); });
    EXPECT_THAT(alerts, ElementsAre());
}

TEST_F(QuittingTest, AnUnchangedStoreIsNotWritten)
{
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    std::filesystem::remove(store_);
    EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now);
    EXPECT_FALSE(std::filesystem::exists(store_));
}

TEST_F(QuittingTest, AChangedStoreIsSaved)
{
    change();
    EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now);
    EXPECT_EQ(storedObjects(), 1U);
    EXPECT_EQ(logText(), "");
}

TEST_F(QuittingTest, AnEditorThatRefusesStopsItWithALogLine)
{
    change();
    const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
    const auto alerts = alertsOf([this] { EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::cancel); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(logText(), "AppDelegate:applicationShouldTerminate: unable to commit editing to terminate\n");
    EXPECT_EQ(storedObjects(), 0U);
}

TEST_F(QuittingTest, BothButtonsAnswerTheOppositeOfTheirTitle)
{
    change(kLarge);
    const FullDisk disk(kSmallDisk);
    auto reply = Reply::now;
    const auto ask = [&] { reply = delegate().applicationShouldTerminate(); };
    EXPECT_THAT(alertsOf(ask, {"Cancel", "Quit anyway"}), ElementsAre(saveError(), quitAlert()));
    EXPECT_EQ(reply, Reply::cancel);
    EXPECT_THAT(alertsOf(ask, {"Cancel", "Cancel"}), ElementsAre(saveError(), quitAlert()));
    EXPECT_EQ(reply, Reply::now);
    EXPECT_TRUE(delegate().managedObjectContext()->hasChanges());
}

TEST_F(QuittingTest, ARecoveredErrorStopsItWithoutTheQuestion)
{
    change(kLarge);
    std::optional<FullDisk> disk(kSmallDisk);
    QTimer room; // is made while the error is on screen, well before the alert is answered
    QObject::connect(&room, &QTimer::timeout, [&] { disk.reset(); });
    room.start(0);
    const auto alerts =
        alertsOf([this] { EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::cancel); }, {"Try Again"});
    EXPECT_THAT(alerts, ElementsAre(saveError()));
    EXPECT_EQ(storedObjects(), 1U);
    EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now);
}

TEST_F(QuittingTest, AnErrorThatStaysIsFollowedByTheQuestion)
{
    change(kLarge);
    const FullDisk disk(kSmallDisk);
    const auto alerts = alertsOf([this] { EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::now); },
                                 {"Try Again", "OK", "Cancel"});
    ShownAlert again = saveError();
    again.buttons = {"OK"};
    EXPECT_THAT(alerts, ElementsAre(saveError(), again, quitAlert()));
}

TEST_F(QuittingTest, TheQuestionIsAskedInTheUsersLanguage)
{
    change(kLarge);
    const FullDisk disk(kSmallDisk);
    German german;
    QApplication::installTranslator(&german);
    const auto alerts =
        alertsOf([this] { EXPECT_EQ(delegate().applicationShouldTerminate(), Reply::cancel); }, {"Cancel", "Ja"});
    QApplication::removeTranslator(&german);
    EXPECT_THAT(alerts, ElementsAre(saveError(), ShownAlert{"Trotzdem?", "Alles weg", {"Ja", "Nein"}}));
}

TEST_F(QuittingTest, ClosingTheLastWindowSavesAndQuits)
{
    launchWithDelegate();
    change();
    EXPECT_EQ(exitStatusOf([this] { closeAllWindows(); }), 0);
    EXPECT_EQ(storedObjects(), 1U);
}

TEST_F(QuittingTest, WhenItMayNotQuitTheMainWindowComesBack)
{
    launchWithDelegate();
    change(kLarge);
    int status = 0;
    {
        const FullDisk disk(kSmallDisk);
        const auto alerts =
            alertsOf([&] { status = exitStatusOf([this] { closeAllWindows(); }); }, {"Cancel", "Quit anyway"});
        EXPECT_THAT(alerts, ElementsAre(saveError(), quitAlert())); // asked once
    }
    EXPECT_EQ(status, kGoesOn);
    EXPECT_TRUE(find("cwinMainWindow")->isVisible());
    EXPECT_EQ(exitStatusOf([this] { closeAllWindows(); }), 0);
    EXPECT_EQ(storedObjects(), 1U);
}

TEST_F(QuittingTest, WhileTheUserIsAskedTheMainWindowStaysClosed)
{
    launchWithDelegate();
    change(kLarge);
    const FullDisk disk(kSmallDisk);
    int status = kGoesOn;
    const auto alerts = alertsOf([&] { status = exitStatusOf([this] { closeAllWindows(); }); }, {"Cancel", "Cancel"});
    EXPECT_THAT(alerts, SizeIs(2));
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(find("cwinMainWindow")->isVisible());
}

TEST_F(QuittingTest, ACommunityWindowKeepsTheProgramRunning)
{
    launchWithDelegate();
    change();
    click("kvLoginToCloudAccount");
    EXPECT_EQ(exitStatusOf([this] { find("cwinMainWindow")->close(); }), kGoesOn);
    EXPECT_FALSE(find("cwinMainWindow")->isVisible());
    EXPECT_TRUE(find("cwinCloudWindow")->isVisible());
    EXPECT_EQ(storedObjects(), 0U); // nobody was asked yet
    EXPECT_EQ(exitStatusOf([this] { find("cwinCloudWindow")->close(); }), 0);
    EXPECT_EQ(storedObjects(), 1U);
}

TEST_F(QuittingTest, EveryWayToQuitAsksTheDelegate)
{
    launchWithDelegate();
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"menu", [this] { find<QAction>("terminate")->trigger(); }},
        {"system", [] { QApplication::quit(); }},
    };
    for (const auto& [name, quit] : ways) {
        {
            const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
            EXPECT_EQ(exitStatusOf(quit), kGoesOn) << name;
            EXPECT_TRUE(find("cwinMainWindow")->isVisible()) << name;
        }
        EXPECT_EQ(exitStatusOf(quit), 0) << name;
        EXPECT_TRUE(find("cwinMainWindow")->isVisible()) << name; // windows are not closed one by one
    }
    const std::string line = "AppDelegate:applicationShouldTerminate: unable to commit editing to terminate\n";
    EXPECT_THAT(logText(), testing::EndsWith(line + line));
}

TEST_F(QuittingTest, TheEndOfTheSessionAsksTheDelegate)
{
    launchWithDelegate();
    change();
    auto* session = qApp->findChild<QSessionManager*>();
    ASSERT_TRUE(session);
    EXPECT_EQ(exitStatusOf([session] { Q_EMIT qApp->commitDataRequest(*session); }), kGoesOn);
    EXPECT_EQ(storedObjects(), 1U); // saved; the session ends the program when all have answered
}

TEST_F(QuittingTest, TheQuitThatFollowsTheEndOfTheSessionIsNotAskedAgain)
{
    launchWithDelegate();
    change(kLarge);
    auto* session = qApp->findChild<QSessionManager*>();
    ASSERT_TRUE(session);
    const FullDisk disk(kSmallDisk);
    int status = kGoesOn;
    const auto alerts = alertsOf(
        [&] {
            status = exitStatusOf([session] {
                Q_EMIT qApp->commitDataRequest(*session);
                QApplication::quit();
            });
        },
        {"Cancel", "Cancel"});
    EXPECT_THAT(alerts, ElementsAre(saveError(), quitAlert()));
    EXPECT_EQ(status, 0);
}

TEST_F(QuittingTest, ASessionThatMayNotEndIsFollowedByAnotherQuestion)
{
    launchWithDelegate();
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
    auto* session = qApp->findChild<QSessionManager*>();
    EXPECT_EQ(exitStatusOf([session] {
                  Q_EMIT qApp->commitDataRequest(*session);
                  QApplication::quit();
              }),
              kGoesOn);
    const std::string line = "AppDelegate:applicationShouldTerminate: unable to commit editing to terminate\n";
    EXPECT_THAT(logText(), testing::EndsWith(line + line));
}

TEST_F(QuittingTest, TheSystemIsToldThatAQuitWasCancelled)
{
    launchWithDelegate();
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed()) << "the delegate decides, not Qt";
    const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
    QEvent quit(QEvent::Quit);
    QApplication::sendEvent(qApp, &quit);
    EXPECT_FALSE(quit.isAccepted());
}

TEST_F(QuittingTest, AMinimisedMainWindowComesBackOpen)
{
    launchWithDelegate();
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
    find("cwinMainWindow")->showMinimized();
    EXPECT_EQ(exitStatusOf([this] { closeAllWindows(); }), kGoesOn);
    EXPECT_TRUE(find("cwinMainWindow")->isVisible());
    EXPECT_FALSE(find("cwinMainWindow")->isMinimized());
}

TEST_F(QuittingTest, QuitIsNotAskedTwiceAtATime)
{
    launchWithDelegate();
    change(kLarge);
    const FullDisk disk(kSmallDisk);
    QTimer impatient;
    QObject::connect(&impatient, &QTimer::timeout, [] { QApplication::quit(); });
    int status = 0;
    const auto alerts = alertsOf(
        [&] {
            status = exitStatusOf([&] {
                impatient.start(1);
                find<QAction>("terminate")->trigger();
                impatient.stop();
            });
        },
        {"Cancel", "Quit anyway"});
    EXPECT_THAT(alerts, ElementsAre(saveError(), quitAlert()));
    EXPECT_EQ(status, kGoesOn);
}

TEST_F(QuittingTest, ASignalEndsItWhateverIsAsked)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a new process, which the signal may end
    const auto exitAfter = [this](const std::function<void(platform::qt::Application&)>& ask) {
        launchWithDelegate();
        change(kLarge);
        const FullDisk disk(kSmallDisk);
        auto& application = static_cast<platform::qt::Application&>(*qApp);
        application.endOnTerminationSignals();
        QTimer alertIsOpen;
        QObject::connect(&alertIsOpen, &QTimer::timeout, [&] {
            if (!QApplication::activeModalWidget())
                return;
            alertIsOpen.stop();
            ::raise(SIGTERM);
        });
        alertIsOpen.start(5);
        ask(application);
        const int status = application.run();
        const bool isAsItWas = storedObjects() == 0;
        std::filesystem::remove_all(home_.path());
        ::_exit(isAsItWas ? status : 1);
    };
    const auto whileRunning = [](platform::qt::Application& application, const std::function<void()>& action) {
        QTimer::singleShot(0, &application, action);
    };
    const auto exitStatus = testing::ExitedWithCode(128 + SIGTERM);
    EXPECT_EXIT(exitAfter([&](auto&) {
                    const int pressed = platform().alerts.runModal({"At the start", "", {"One", "Last"}});
                    EXPECT_EQ(pressed, platform::Alerts::kFirstButton + 1);
                    if (HasFailure())
                        ::_exit(1);
                }),
                exitStatus, "");
    EXPECT_EXIT(exitAfter([&](auto& application) {
                    whileRunning(application, [this] { controller().alertUserAndSub("Later", ""); });
                }),
                exitStatus, "");
    EXPECT_EXIT(exitAfter([&](auto& application) {
                    whileRunning(application, [this] { find<QAction>("terminate")->trigger(); });
                }),
                exitStatus, "");
}

} // namespace test
