// A transfer's process from its start to its end, and what the program hears when it does not go well.

#include "platform/transfer/TransferProcess.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform::transfer {

namespace {

using namespace std::chrono_literals;
using support::ScriptedPeer;

constexpr char kEndedUnexpectedly[] = "The transfer ended unexpectedly";

/// A peer that begins a reply, then says nothing, and tells when the other side has hung up.
class SilentPeer {
public:
    SilentPeer()
    {
        peer_.play([this](ScriptedPeer::Connection& connection) {
            connection.send("HTTP/1.1 200 OK\r\n\r\na");
            isAsked_.set_value();
            isLeft_.set_value(connection.waitForTheEnd());
        });
    }
    std::string url() const { return peer_.url(); }
    bool isAsked() { return isAsked_.get_future().wait_for(kSoon) == std::future_status::ready; }
    bool isLeft()
    {
        auto left = isLeft_.get_future();
        return left.wait_for(kSoon) == std::future_status::ready && left.get();
    }

private:
    static constexpr auto kSoon = 10s; // long before any limit of a transfer

    std::promise<void> isAsked_;
    std::promise<bool> isLeft_;
    ScriptedPeer peer_;
};

/// Ends when the object does.
class ForkedProgram {
public:
    explicit ForkedProgram(const std::function<int()>& run) : process_(::fork())
    {
        if (process_ == 0)
            std::_Exit(run());
    }
    ForkedProgram(const ForkedProgram&) = delete;
    ForkedProgram& operator=(const ForkedProgram&) = delete;
    ~ForkedProgram() { kill(); }

    void kill()
    {
        if (process_ > 0)
            ::kill(process_, SIGKILL);
        result();
    }
    /// Waits for its end; -1 when it did not end by itself.
    int result()
    {
        int status = -1;
        if (process_ > 0)
            ::waitpid(std::exchange(process_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process_;
};

class Transfer : public testing::Test {
protected:
    static Request get(const std::string& address) { return {address, false, {}, {}, 60s, 1000}; }

    /// Waits for the outcome.
    const Outcome& outcome(TransferProcess& process)
    {
        while (!process.outcome()) {
            process.failIfSilent();
            if (!process.isReadable(50ms))
                continue;
            process.receive({[this](std::int64_t size) { expected_ = size; },
                             [this](std::string_view piece) {
                                 body_ += piece;
                                 return takesBody_;
                             }});
        }
        return *process.outcome();
    }
    std::filesystem::path script(const std::string& commands)
    {
        const auto path = folder_ / "program";
        test::write(path, "#!/bin/sh\n" + commands + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }

    const test::TemporaryFolder folder_;
    std::string body_;
    std::int64_t expected_ = -1;
    bool takesBody_ = true;
};

TEST_F(Transfer, GivesTheWholeReply)
{
    ScriptedPeer peer;
    peer.play(support::redirect(302, "/there"));
    peer.play(support::reply("shared"));
    TransferProcess process(KV_TRANSFER_PROGRAM);
    EXPECT_FALSE(process.outcome());
    process.send(get(peer.url()));
    EXPECT_TRUE(outcome(process).isWhole);
    EXPECT_EQ(outcome(process).address, peer.url() + "there");
    EXPECT_EQ(body_, "shared");
    EXPECT_EQ(expected_, 6);
}

TEST_F(Transfer, DoesNotBelieveEverySizeThatIsAnnounced)
{
    ScriptedPeer peer;
    peer.play("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\na");
    TransferProcess process(KV_TRANSFER_PROGRAM);
    process.send(get(peer.url()));
    EXPECT_FALSE(outcome(process).isWhole);
    EXPECT_EQ(expected_, 0);
}

TEST_F(Transfer, FailsWhereItCannotBeStarted)
{
    TransferProcess process(folder_ / "nothing");
    process.send(get("http://127.0.0.1:1/"));
    ASSERT_TRUE(process.outcome());
    EXPECT_FALSE(process.outcome()->isWhole);
    EXPECT_EQ(process.outcome()->description, "The transfer could not be started");
    EXPECT_EQ(process.outcome()->address, "http://127.0.0.1:1/");
}

TEST_F(Transfer, FailsWhenTheProcessEndsWithoutAWord)
{
    for (const char* commands :
         {"exit 0", "head -c 8 >/dev/null; exit 1", "kill -9 $$",
          "head -c 60 >/dev/null; printf 'something that is no message at all'; exec sleep 100"}) {
        TransferProcess process(script(commands));
        process.send(get("http://127.0.0.1:1/"));
        EXPECT_FALSE(outcome(process).isWhole) << commands;
        EXPECT_EQ(outcome(process).description, kEndedUnexpectedly) << commands;
        EXPECT_EQ(outcome(process).address, "http://127.0.0.1:1/") << commands;
    }
}

TEST_F(Transfer, EndsWhenTheBodyCannotBeKept)
{
    SilentPeer peer;
    takesBody_ = false;
    auto process = std::make_unique<TransferProcess>(KV_TRANSFER_PROGRAM);
    process->send(get(peer.url()));
    EXPECT_EQ(outcome(*process).description, TransferProcess::kNotWritten);
    EXPECT_EQ(body_, "a");
    process.reset();
    EXPECT_TRUE(peer.isLeft());
}

TEST_F(Transfer, EndsItsProcessWhereverThatIs)
{
    for (const bool hasRequest : {false, true}) {
        SilentPeer peer;
        auto process = std::make_unique<TransferProcess>(KV_TRANSFER_PROGRAM);
        if (hasRequest) {
            process->send(get(peer.url()));
            EXPECT_TRUE(peer.isAsked());
        }
        process.reset();
        EXPECT_TRUE(!hasRequest || peer.isLeft());
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1); // nor is a dead one left
        EXPECT_EQ(errno, ECHILD);
    }
}

TEST_F(Transfer, EndsWhenTheProgramIsKilled)
{
    SilentPeer peer;
    ForkedProgram program([&] {
        TransferProcess process(KV_TRANSFER_PROGRAM);
        process.send(get(peer.url()));
        ::pause();
        return 0;
    });
    EXPECT_TRUE(peer.isAsked());
    program.kill();
    EXPECT_TRUE(peer.isLeft());
}

TEST_F(Transfer, FailsWhenTheProcessDoesNotAnswer)
{
    TransferProcess process(script("exec sleep 100"));
    Request request = get("http://127.0.0.1:1/");
    request.stallLimit = 100ms;
    process.send(request);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(outcome(process).description, "The transfer does not answer");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST_F(Transfer, FailsWhenTheProcessDoesNotTakeTheRequest)
{
    TransferProcess process(script("exec sleep 100"));
    Request request = get("http://127.0.0.1:1/");
    request.stallLimit = 100ms;
    request.body.assign(3'000'000, 'x');
    process.send(request);
    ASSERT_TRUE(process.outcome());
    EXPECT_EQ(process.outcome()->description, kEndedUnexpectedly);
}

TEST_F(Transfer, IsPatientWhileTheProcessStillGetsOn)
{
    ScriptedPeer peer;
    for (int hop = 0; hop < 10; ++hop) {
        peer.play([](ScriptedPeer::Connection& connection) {
            connection.wait(400ms);
            connection.send(support::redirect(302, "/again"));
        });
    }
    peer.play(support::reply("there"));
    TransferProcess process(KV_TRANSFER_PROGRAM);
    Request request = get(peer.url());
    request.stallLimit = 600ms; // the redirects take longer than that and what the program adds to it
    process.send(request);
    EXPECT_TRUE(outcome(process).isWhole) << outcome(process).description;
    EXPECT_EQ(body_, "there");
}

TEST_F(Transfer, NamesTheHopThatFailed)
{
    ScriptedPeer peer;
    peer.play(support::redirect(302, "/there"));
    peer.play(support::reply("shared"));
    takesBody_ = false;
    TransferProcess process(KV_TRANSFER_PROGRAM);
    process.send(get(peer.url()));
    EXPECT_FALSE(outcome(process).isWhole);
    EXPECT_EQ(outcome(process).address, peer.url() + "there");
}

TEST_F(Transfer, TakesTheReplyToAVeryLongAddress)
{
    ScriptedPeer peer;
    peer.play(support::reply("<h1>too long</h1>", "414 URI Too Long"));
    TransferProcess process(KV_TRANSFER_PROGRAM);
    process.send(get(peer.url() + std::string(1'000'000, 'x')));
    EXPECT_TRUE(outcome(process).isWhole) << outcome(process).description;
    EXPECT_EQ(body_, "<h1>too long</h1>");

    TransferProcess longer(KV_TRANSFER_PROGRAM);
    longer.send(get(peer.url() + std::string(2'000'000, 'x'))); // more than libcurl sends
    EXPECT_FALSE(outcome(longer).isWhole);
    EXPECT_NE(outcome(longer).description, kEndedUnexpectedly);
}

TEST_F(Transfer, FailsOrRunsWhereDescriptorsAreScarce)
{
    ForkedProgram program([] {
        int unanswered = 0;
        for (int most = 4; most < 32; ++most) {
            const rlimit limit = {static_cast<rlim_t>(most), 64};
            ::setrlimit(RLIMIT_NOFILE, &limit);
            const TransferProcess process(KV_TRANSFER_PROGRAM);
            unanswered += !process.outcome() && process.descriptor() < 0 ? 1 : 0;
        }
        return unanswered;
    });
    EXPECT_EQ(program.result(), 0);
}

TEST_F(Transfer, WaitsForAProgramThatDoesNotRead)
{
    ScriptedPeer peer;
    const std::string content(std::size_t{8} << 20, 'x'); // more than sockets and pipes hold
    peer.play(support::reply(content));
    TransferProcess process(KV_TRANSFER_PROGRAM);
    process.send({peer.url(), false, {}, {}, 200ms, std::size_t{64} << 20});
    std::this_thread::sleep_for(600ms);
    EXPECT_TRUE(outcome(process).isWhole) << outcome(process).description;
    EXPECT_EQ(body_, content);
}

TEST_F(Transfer, NeedsNoStandardStreams)
{
    ScriptedPeer peer;
    peer.play(support::reply("shared"));
    ForkedProgram program([&] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::close(stream);
        TransferProcess process(KV_TRANSFER_PROGRAM);
        process.send(get(peer.url()));
        return outcome(process).isWhole && body_ == "shared" ? 0 : 1;
    });
    EXPECT_EQ(program.result(), 0);
}

} // namespace

} // namespace platform::transfer
