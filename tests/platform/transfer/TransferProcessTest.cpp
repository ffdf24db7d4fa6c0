// A transfer's process from its start to its end, and what the program hears when it does not go well.

#include "platform/transfer/TransferProcess.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <future>
#include <memory>

#include <sys/wait.h>
#include <unistd.h>

namespace platform::transfer {

namespace {

using namespace std::chrono_literals;
using support::ScriptedPeer;

constexpr char kEndedUnexpectedly[] = "The transfer ended unexpectedly";

/// A peer that says nothing and tells when the other side has hung up.
class SilentPeer {
public:
    SilentPeer()
    {
        peer_.play([this](ScriptedPeer::Connection& connection) {
            connection.send("HTTP/1.1 200 OK\r\n\r\na");
            isAsked_.set_value();
            while (connection.wait(10ms) && connection.send("b")) {
            }
            isLeft_.set_value();
        });
    }
    std::string url() const { return peer_.url(); }
    bool isAsked() { return isAsked_.get_future().wait_for(20s) == std::future_status::ready; }
    bool isLeft() { return isLeft_.get_future().wait_for(20s) == std::future_status::ready; }

private:
    std::promise<void> isAsked_;
    std::promise<void> isLeft_;
    ScriptedPeer peer_;
};

class Transfer : public testing::Test {
protected:
    Transfer() { std::signal(SIGPIPE, SIG_IGN); }

    static Request get(const std::string& address) { return {address, false, {}, {}, 20s, 1000}; }

    /// Waits for the outcome.
    const Outcome& outcome(TransferProcess& process)
    {
        while (!process.outcome()) {
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
    EXPECT_EQ(outcome(*process).description, "What was received could not be kept");
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
    const pid_t program = ::fork();
    if (program == 0) {
        TransferProcess process(KV_TRANSFER_PROGRAM);
        process.send(get(peer.url()));
        ::pause();
    }
    EXPECT_TRUE(peer.isAsked());
    ::kill(program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    EXPECT_TRUE(peer.isLeft());
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
    const pid_t program = ::fork();
    if (program == 0) {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::close(stream);
        TransferProcess process(KV_TRANSFER_PROGRAM);
        process.send(get(peer.url()));
        std::_Exit(outcome(process).isWhole && body_ == "shared" ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
}

} // namespace

} // namespace platform::transfer
