// Downloads into files: the bytes on the wire, the file, and when the program is told.

#include "platform/files/Files.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "tests/support/Alerts.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <future>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace platform::qt {

namespace {

using namespace std::chrono_literals;
using test::ScriptedPeer;
using Connection = ScriptedPeer::Connection;
namespace fs = std::filesystem;

class Download : public testing::Test {
protected:
    Download() { fs::create_directory(folder_); }

    void start(CurlHttp& http, const std::string& address)
    {
        http.download(address, file_,
                      {[this] { ++finished_; }, [this](const DownloadError& error) { error_ = error; }});
    }
    bool wait(int finished = 1)
    {
        return test::waitUntil([&] { return finished_ >= finished || error_; }) && !error_;
    }
    /// Expects a failure that leaves nothing behind, and returns its text.
    std::string failure()
    {
        EXPECT_FALSE(wait());
        EXPECT_TRUE(fs::is_empty(folder_));
        return error_ ? error_->description : "finished";
    }

    const test::TemporaryHome home_;
    const fs::path folder_ = home_.path() / "plug-in";
    const fs::path file_ = folder_ / "CSParameterOrder.plist.downloaded";
    CompletionGate gate_;
    CurlHttp http_{gate_};
    CurlHttp impatient_{gate_, {}, {300ms, 300ms, 1000, 1000}};
    ScriptedPeer peer_;
    int finished_ = 0;
    std::optional<DownloadError> error_;
};

TEST_F(Download, IsAPlainGet)
{
    peer_.play(test::reply("shared"));
    start(http_, peer_.url() + "files/my%20map.plist?a=(b)/../c");
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "shared");
    EXPECT_EQ(peer_.requests(), std::vector<std::string>{"GET /files/my%20map.plist?a=(b)/../c HTTP/1.1\r\nHost: " +
                                                         peer_.host() + "\r\nAccept: */*\r\n\r\n"});
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
}

TEST_F(Download, TellsNobodyBeforeItReturns)
{
    start(http_, "http://127.0.0.1:1/");
    EXPECT_FALSE(error_);
    error_.reset();
    http_.download("nonsense", "/nonexistent/file", {{}, [this](const DownloadError& error) { error_ = error; }});
    EXPECT_FALSE(error_);
    EXPECT_TRUE(test::waitUntil([&] { return error_.has_value(); }));
}

TEST_F(Download, ReplacesWhatStandsThere)
{
    test::write(file_, "former content, and a longer one");
    peer_.play(test::reply("shared"));
    start(http_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "shared");
}

TEST_F(Download, AppearsOnlyWhenItIsWhole)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsha");
        connection.wait(300ms);
        connection.send("red");
    });
    start(http_, peer_.url());
    EXPECT_TRUE(test::waitUntil([&] { return http_.downloadProgress.get().received == 3; }));
    EXPECT_EQ(http_.downloadProgress.get(), (DownloadProgress{1, 3, 6}));
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "shared");
    EXPECT_EQ(http_.downloadProgress.get(), DownloadProgress());
}

TEST_F(Download, SavesAnErrorPageToo)
{
    peer_.play(test::reply("<h1>Not Found</h1>", "404 Not Found"));
    start(http_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "<h1>Not Found</h1>");
}

TEST_F(Download, SavesACompressedOrEmptyBodyAsItIs)
{
    const std::string body("\x1f\x8b\0\0", 4);
    peer_.play(test::reply(body, "200 OK", "Content-Encoding: gzip\r\n"));
    start(http_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), body);
    peer_.play(test::reply(""));
    start(http_, peer_.url());
    EXPECT_TRUE(wait(2));
    EXPECT_TRUE(fs::exists(file_));
    EXPECT_EQ(fs::file_size(file_), 0u);
}

TEST_F(Download, FollowsRedirects)
{
    peer_.play(test::redirect(302, "/elsewhere"));
    peer_.play(test::reply("shared"));
    start(http_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "shared");
}

TEST_F(Download, IsNeverRedirectedToAFile)
{
    peer_.play(test::redirect(302, "file:///etc/hostname"));
    start(http_, peer_.url());
    EXPECT_EQ(failure(), "Unsupported protocol");
    EXPECT_EQ(error_->failingAddress, "file:///etc/hostname");
}

TEST_F(Download, FailsOnTheEleventhRedirect)
{
    for (int i = 0; i < 12; ++i)
        peer_.play(test::redirect(302, "/again"));
    start(http_, peer_.url());
    failure();
    EXPECT_EQ(peer_.requests().size(), 11u);
}

TEST_F(Download, FailsWhenItIsCutOff)
{
    peer_.play("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsha");
    start(http_, peer_.url() + "a%20b");
    EXPECT_NE(failure(), "finished");
    EXPECT_EQ(error_->failingAddress, peer_.url() + "a%20b");
}

TEST_F(Download, FailsWhenItIsCutOffInItsHead)
{
    peer_.play("HTTP/1.1 200 OK\r\nContent-Le");
    start(http_, peer_.url());
    EXPECT_NE(failure(), "finished");
}

TEST_F(Download, IsNotRepeatedWhenTheServerHangsUp)
{
    start(http_, peer_.url());
    failure();
    EXPECT_EQ(peer_.requests().size(), 1u);
}

TEST_F(Download, KeepsNoConnectionOnWhichItMightBeRepeated)
{
    const auto isLeft = std::make_shared<std::promise<void>>();
    peer_.play([isLeft](Connection& connection) {
        connection.send(test::reply("shared"));
        connection.waitForTheEnd();
        isLeft->set_value();
    });
    start(http_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(isLeft->get_future().wait_for(5s), std::future_status::ready);
}

TEST_F(Download, FailsWhenNobodyListens)
{
    const std::string gone = ScriptedPeer().url();
    start(http_, gone);
    failure();
    EXPECT_EQ(error_->failingAddress, gone);
}

TEST_F(Download, FailsWithoutProgress)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsha");
        connection.wait(20s);
    });
    start(impatient_, peer_.url());
    EXPECT_EQ(failure(), "Timeout was reached");
}

TEST_F(Download, IsPatientWhileSomethingMoves)
{
    peer_.play([](Connection& connection) {
        connection.wait(100ms);
        connection.send(test::redirect(302, "/there"));
    });
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
        for (int i = 0; i < 10; ++i) {
            connection.wait(100ms);
            connection.send("x");
        }
    });
    start(impatient_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(test::read(file_), "xxxxxxxxxx");
}

TEST_F(Download, DoesNotBelieveEverySizeThatIsAnnounced)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\na");
        connection.waitForTheEnd();
    });
    start(impatient_, peer_.url());
    EXPECT_TRUE(test::waitUntil([&] { return impatient_.downloadProgress.get().received == 1; }));
    EXPECT_EQ(impatient_.downloadProgress.get().expected, 0);
}

TEST_F(Download, TakesSoManyBytesAndNoMore)
{
    peer_.play(test::reply(std::string(1000, 'x')));
    start(impatient_, peer_.url());
    EXPECT_TRUE(wait());
    fs::remove(file_);
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        while (connection.send(std::string(1001, 'x'))) {
        }
    });
    finished_ = 0;
    start(impatient_, peer_.url());
    EXPECT_EQ(failure(), "Maximum file size exceeded");
}

TEST_F(Download, TakesSixtyFourMebibytesOfASharedFile)
{
    EXPECT_EQ(HttpLimits().file, std::size_t{64} << 20);
    EXPECT_EQ(HttpLimits().stall, 60s);
    EXPECT_EQ(HttpLimits().total, 60s);
}

TEST_F(Download, FailsWhenTheFileCannotBeWritten)
{
    http_.download(peer_.url(), home_.path() / "no such folder/file",
                   {{}, [this](const DownloadError& error) { error_ = error; }});
    EXPECT_TRUE(test::waitUntil([&] { return error_.has_value(); }));
    EXPECT_FALSE(fs::exists(home_.path() / "no such folder"));
    error_.reset();

    fs::create_directory(file_); // a folder cannot be replaced by a file
    test::write(file_ / "x", "x");
    peer_.play(test::reply("shared"));
    start(http_, peer_.url());
    EXPECT_FALSE(wait());
    EXPECT_TRUE(fs::exists(file_ / "x"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1); // no part stays
}

TEST_F(Download, DoesNotMixWithAnotherToTheSameFile)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nfir");
        connection.wait(400ms);
        connection.send("st!");
    });
    start(http_, peer_.url());
    EXPECT_TRUE(test::waitUntil([&] { return http_.downloadProgress.get().received == 3; }));
    peer_.play(test::reply("second"));
    start(http_, peer_.url());
    EXPECT_EQ(http_.downloadProgress.get().running, 2);
    EXPECT_TRUE(wait(1));
    EXPECT_EQ(test::read(file_), "second");
    EXPECT_TRUE(wait(2));
    EXPECT_EQ(test::read(file_), "first!");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
}

class ManyDownloads : public Download {
protected:
    /// Six, to files of their own.
    void startSix(CurlHttp& http)
    {
        for (int number = 1; number <= 6; ++number)
            http.download(
                peer_.url() + std::to_string(number), folder_ / std::to_string(number),
                {[this, number] { order_.push_back(number); }, [this](const DownloadError& error) { error_ = error; }});
    }
    bool waitForSix()
    {
        return test::waitUntil([&] { return order_.size() == 6 || error_; }) && !error_;
    }
    std::ptrdiff_t files() const { return std::distance(fs::directory_iterator(folder_), {}); }

    std::vector<int> order_;
};

TEST_F(ManyDownloads, RunFourAtOnceAndTheOthersInTheirTurn)
{
    for (int i = 0; i < 4; ++i)
        peer_.play([](Connection& connection) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\na");
            connection.wait(400ms);
            connection.send("b");
        });
    peer_.play(test::reply("five"));
    peer_.play(test::reply("six"));
    startSix(http_);
    EXPECT_TRUE(test::waitUntil([&] { return http_.downloadProgress.get().received == 4; }));
    test::runFor(100);
    EXPECT_EQ(peer_.requests().size(), 4U);
    EXPECT_EQ(files(), 4);
    EXPECT_EQ(http_.downloadProgress.get(), (DownloadProgress{4, 4, 0})) << "where it ends is not known yet";
    EXPECT_TRUE(waitForSix());
    const auto lines = peer_.requestLines();
    EXPECT_EQ(std::set(lines.begin() + 4, lines.end()), (std::set<std::string>{"GET /5", "GET /6"}));
    EXPECT_EQ(std::set(order_.begin(), order_.begin() + 2).count(6), 0U);
    EXPECT_EQ(files(), 6);
    EXPECT_EQ(http_.downloadProgress.get(), DownloadProgress());
}

TEST_F(ManyDownloads, AreNotTimedWhileTheyWait)
{
    for (int i = 0; i < 4; ++i)
        peer_.play([](Connection& connection) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
            for (int sent = 0; sent < 10; ++sent) {
                connection.wait(100ms);
                connection.send("x");
            }
        });
    peer_.play(test::reply("five"));
    peer_.play(test::reply("six"));
    startSix(impatient_);
    EXPECT_TRUE(waitForSix());
    EXPECT_EQ(files(), 6);
}

TEST_F(ManyDownloads, ThatFailAtOnceOrStallMakeRoomForTheNext)
{
    for (int i = 0; i < 4; ++i)
        peer_.play([](Connection& connection) { connection.wait(20s); });
    int failed = 0;
    const auto fail = [&](const DownloadError&) { ++failed; };
    for (int i = 0; i < 4; ++i)
        impatient_.download(peer_.url(), folder_ / "stalls", {{}, fail});
    for (int i = 0; i < 50; ++i)
        impatient_.download("no address", folder_ / "nonsense", {{}, fail});
    impatient_.download(peer_.url(), folder_ / "nowhere/file", {{}, fail});
    peer_.play(test::reply("shared"));
    start(impatient_, peer_.url());
    EXPECT_TRUE(wait());
    EXPECT_EQ(failed, 55);
    EXPECT_EQ(files(), 1);
}

TEST_F(ManyDownloads, AreForgottenWhenTheProgramEnds)
{
    for (int i = 0; i < 4; ++i)
        peer_.play([](Connection& connection) { connection.wait(20s); });
    {
        CurlHttp http(gate_);
        startSix(http);
        EXPECT_TRUE(test::waitUntil([&] { return peer_.requests().size() == 4; }));
    }
    test::runFor(50);
    EXPECT_TRUE(fs::is_empty(folder_));
    EXPECT_EQ(peer_.requests().size(), 4U);
    EXPECT_TRUE(order_.empty());
    EXPECT_FALSE(error_);
}

TEST_F(Download, LeavesNothingBehindWhenTheProgramEnds)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsha");
        connection.wait(20s);
    });
    {
        CurlHttp http(gate_);
        start(http, peer_.url());
        EXPECT_TRUE(test::waitUntil([&] { return http.downloadProgress.get().received == 3; }));
        EXPECT_FALSE(fs::is_empty(folder_));
    }
    EXPECT_TRUE(fs::is_empty(folder_));
    EXPECT_EQ(finished_, 0);
    EXPECT_FALSE(error_);
}

TEST_F(Download, WaitsForTheGate)
{
    peer_.play(test::reply("one"));
    peer_.play(test::reply("two"));
    std::optional<CompletionGate::Hold> hold(gate_);
    start(http_, peer_.url());
    start(http_, peer_.url());
    EXPECT_TRUE(test::waitUntil([&] { return http_.downloadProgress.get().running == 0; }));
    test::runFor(50);
    EXPECT_EQ(finished_, 0);
    hold.reset();
    EXPECT_EQ(finished_, 0); // whoever held the gate finishes first
    EXPECT_TRUE(wait(2));
}

TEST_F(Download, ToldOneAfterTheOther)
{
    peer_.play(test::reply("one"));
    peer_.play(test::reply("two"));
    int depth = 0;
    int deepest = 0;
    const auto finished = [&] {
        deepest = std::max(deepest, ++depth);
        test::runFor(100);
        --depth;
        ++finished_;
    };
    http_.download(peer_.url(), file_, {finished, {}});
    http_.download(peer_.url(), file_, {finished, {}});
    EXPECT_TRUE(wait(2));
    EXPECT_EQ(deepest, 1);
}

} // namespace

} // namespace platform::qt
