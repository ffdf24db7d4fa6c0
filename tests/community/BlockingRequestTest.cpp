// What a blocking request holds up, and what it does not.

#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "tests/support/Alerts.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <future>
#include <optional>

#include <sys/socket.h>
#include <unistd.h>

#include <QSocketNotifier>

namespace platform::qt {

namespace {

using namespace std::chrono_literals;
using test::ScriptedPeer;

class PaintCounter final : public QWidget {
public:
    int paints = 0;
    bool isPointerBusy = false;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        const QCursor* pointer = QGuiApplication::overrideCursor();
        isPointerBusy = pointer && pointer->shape() == Qt::WaitCursor;
    }
};

class BlockingRequest : public testing::Test {
protected:
    void sendSlowly()
    {
        peer_.play([](ScriptedPeer::Connection& connection) {
            connection.wait(700ms);
            connection.send(test::reply("late"));
        });
        ASSERT_EQ(http_.post(peer_.url(), {}, {}), "late");
    }

    CompletionGate gate_;
    CurlHttp http_{gate_};
    ScriptedPeer peer_;
};

TEST_F(BlockingRequest, RunsNothingOfOurs)
{
    int happened = 0;
    const auto count = [&happened] { ++happened; };
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, count);
    timer.start(0);
    QTimer slowTimer;
    QObject::connect(&slowTimer, &QTimer::timeout, count);
    slowTimer.start(100);
    QObject context;
    QMetaObject::invokeMethod(&context, count, Qt::QueuedConnection);
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    ASSERT_EQ(::write(ends[0], "x", 1), 1);
    QSocketNotifier notifier(ends[1], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        count();
        notifier.setEnabled(false);
    });
    auto* doomed = new QObject;
    QObject::connect(doomed, &QObject::destroyed, count);
    doomed->deleteLater();

    sendSlowly();
    EXPECT_EQ(happened, 0);

    QTest::qWait(250);
    EXPECT_GE(happened, 5);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(BlockingRequest, DeliversAClickOnlyAfterwards)
{
    QPushButton button;
    button.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&button));
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, [&clicks] { ++clicks; });
    const auto send = [&button](QEvent::Type type, Qt::MouseButtons buttons) {
        const QPointF where = button.rect().center();
        QCoreApplication::postEvent(
            &button, new QMouseEvent(type, where, button.mapToGlobal(where), Qt::LeftButton, buttons, Qt::NoModifier));
    };
    send(QEvent::MouseButtonPress, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, Qt::NoButton);

    sendSlowly();
    EXPECT_EQ(clicks, 0);
    EXPECT_TRUE(test::waitUntil([&] { return clicks > 0; }));
    EXPECT_EQ(clicks, 1);
}

TEST_F(BlockingRequest, RepaintsTheWindowsUnderABusyPointer)
{
    PaintCounter window;
    PaintCounter hidden;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QTest::qWait(50);
    window.paints = 0;

    sendSlowly();
    EXPECT_GE(window.paints, 2);
    EXPECT_TRUE(window.isPointerBusy);
    EXPECT_EQ(hidden.paints, 0);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(BlockingRequest, ShowsWhatWasSetJustBefore)
{
    PaintCounter window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.resize(200, 100);
    window.paints = 0;
    window.update();
    sendSlowly();
    EXPECT_GE(window.paints, 1);
}

TEST_F(BlockingRequest, EndsSoonAfterItIsCancelled)
{
    QElapsedTimer time;
    QElapsedTimer sinceAsked;
    qint64 longestUnasked = 0;
    CurlHttp cancelled(gate_, [&] {
        longestUnasked = std::max(longestUnasked, sinceAsked.restart());
        return time.elapsed() > 1200;
    });
    std::promise<bool> isLeft;
    peer_.play([&isLeft](ScriptedPeer::Connection& connection) { isLeft.set_value(connection.waitForTheEnd()); });
    time.start();
    sinceAsked.start();
    EXPECT_EQ(cancelled.post(peer_.url(), {}, {}), std::nullopt);
    EXPECT_LT(longestUnasked, 1500);
    EXPECT_TRUE(isLeft.get_future().get());

    EXPECT_EQ(cancelled.post(peer_.url(), {}, {}), std::nullopt);
    EXPECT_EQ(peer_.requests().size(), 1u);
}

TEST_F(BlockingRequest, KeepsTheCompletionOfADownloadWaiting)
{
    const test::TemporaryHome home;
    ScriptedPeer files;
    files.play(test::reply("shared"));
    bool isFinished = false;
    http_.download(files.url(), home.path() / "file", {[&] { isFinished = true; }, {}});
    sendSlowly();
    EXPECT_FALSE(isFinished);
    EXPECT_TRUE(test::waitUntil([&] { return isFinished; }));
}

TEST_F(BlockingRequest, DoesNotCountAgainstADownload)
{
    const test::TemporaryHome home;
    CurlHttp impatient(gate_, {}, {10s, 500ms, 1000, std::size_t{64} << 20});
    ScriptedPeer files;
    const std::string content(std::size_t{16} << 20, 'x'); // more than fits into sockets
    files.play(test::reply(content));
    bool isFinished = false;
    std::string failure;
    impatient.download(files.url(), home.path() / "file",
                       {[&] { isFinished = true; }, [&](const DownloadError& error) { failure = error.description; }});
    test::runFor(10);
    for (int i = 0; i < 3; ++i) {
        peer_.play([](ScriptedPeer::Connection& connection) {
            connection.wait(400ms);
            connection.send(test::reply("late"));
        });
        ASSERT_EQ(impatient.post(peer_.url(), {}, {}), "late");
    }
    EXPECT_TRUE(test::waitUntil([&] { return isFinished || !failure.empty(); }));
    EXPECT_TRUE(isFinished) << failure;
    EXPECT_EQ(std::filesystem::file_size(home.path() / "file"), content.size());
}

} // namespace

} // namespace platform::qt
