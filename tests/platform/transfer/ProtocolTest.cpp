// What goes over the pipes between the program and a transfer's process.

#include "platform/transfer/Protocol.h"

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

namespace platform::transfer {

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Kind = MessageReader::Kind;

class Protocol : public testing::Test {
protected:
    Protocol() { connect(); }
    ~Protocol() override { disconnect(); }

    void connect()
    {
        if (::pipe(ends_) != 0)
            throw std::runtime_error("no pipe");
    }
    void hangUp(int end)
    {
        if (ends_[end] >= 0)
            ::close(std::exchange(ends_[end], -1));
    }
    void disconnect()
    {
        hangUp(0);
        hangUp(1);
    }
    int reading() const { return ends_[0]; }
    int writing() const { return ends_[1]; }

    std::string sent()
    {
        hangUp(1);
        std::string bytes;
        char buffer[4096];
        for (ssize_t got; (got = ::read(reading(), buffer, sizeof buffer)) > 0;)
            bytes.append(buffer, static_cast<std::size_t>(got));
        return bytes;
    }

private:
    int ends_[2] = {-1, -1};
};

const Request kRequest = {"http://a/\0\xff"s, true, "text/plain", "a\0b"s, 1234ms, std::size_t{1} << 40};

TEST_F(Protocol, ARequestArrivesAsItWasSent)
{
    ASSERT_TRUE(sendRequest(writing(), kRequest));
    const auto received = receiveRequest(reading());
    ASSERT_TRUE(received);
    EXPECT_EQ(received->address, kRequest.address);
    EXPECT_TRUE(received->isPost);
    EXPECT_EQ(received->contentType, kRequest.contentType);
    EXPECT_EQ(received->body, kRequest.body);
    EXPECT_EQ(received->stallLimit, kRequest.stallLimit);
    EXPECT_EQ(received->sizeLimit, kRequest.sizeLimit);
}

TEST_F(Protocol, ARequestMayBeLargerThanAPipe)
{
    const std::string body(3'000'000, 'x');
    std::optional<Request> received;
    std::thread receiver([&] { received = receiveRequest(reading()); });
    EXPECT_TRUE(sendRequest(writing(), {"a", false, {}, body, 1ms, 1}));
    receiver.join();
    ASSERT_TRUE(received);
    EXPECT_FALSE(received->isPost);
    EXPECT_EQ(received->body, body);
}

TEST_F(Protocol, ARequestThatIsNotWholeIsNone)
{
    ASSERT_TRUE(sendRequest(writing(), kRequest));
    const std::string whole = sent();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        disconnect();
        connect();
        ASSERT_EQ(::write(writing(), whole.data(), size), static_cast<ssize_t>(size));
        hangUp(1);
        EXPECT_FALSE(receiveRequest(reading())) << size;
    }
}

TEST_F(Protocol, ARequestOfAnotherVersionIsNone)
{
    ASSERT_TRUE(sendRequest(writing(), kRequest));
    std::string other = sent();
    ++other.front();
    connect();
    ASSERT_EQ(::write(writing(), other.data(), other.size()), static_cast<ssize_t>(other.size()));
    hangUp(1);
    EXPECT_FALSE(receiveRequest(reading()));
}

TEST_F(Protocol, AnOutcomeTakesEveryAddress)
{
    const std::string address = "http://a/" + std::string(8'000'000, 'x');
    std::thread sender([&] {
        sendOutcome(writing(), {true, {}, address});
        hangUp(1);
    });
    MessageReader reader;
    char buffer[65536];
    for (ssize_t got; (got = ::read(reading(), buffer, sizeof buffer)) > 0;)
        reader.append({buffer, static_cast<std::size_t>(got)});
    sender.join();
    const auto message = reader.next();
    ASSERT_TRUE(message);
    EXPECT_EQ(outcomeIn(message->content)->address, address);
}

TEST_F(Protocol, MessagesArriveInWhateverPieces)
{
    ASSERT_TRUE(sendHead(writing(), {5, "http://a/"}));
    ASSERT_TRUE(sendBody(writing(), "ab\0"s));
    ASSERT_TRUE(sendBody(writing(), ""));
    ASSERT_TRUE(sendSignOfLife(writing()));
    ASSERT_TRUE(sendOutcome(writing(), {false, "Went wrong", "http://b/"}));
    const std::string bytes = sent();
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
        MessageReader reader;
        std::vector<std::pair<Kind, std::string>> messages;
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            reader.append(std::string_view(bytes).substr(at, piece));
            while (const auto message = reader.next())
                messages.emplace_back(message->kind, message->content);
        }
        ASSERT_EQ(messages.size(), 5u) << piece;
        EXPECT_EQ(messages[0].first, Kind::head);
        const auto head = headIn(messages[0].second);
        ASSERT_TRUE(head);
        EXPECT_EQ(head->size, 5);
        EXPECT_EQ(head->address, "http://a/");
        EXPECT_EQ(messages[1], std::pair(Kind::body, "ab\0"s));
        EXPECT_EQ(messages[2], std::pair(Kind::body, ""s));
        EXPECT_EQ(messages[3], std::pair(Kind::signOfLife, ""s));
        EXPECT_EQ(messages[4].first, Kind::outcome);
        const auto outcome = outcomeIn(messages[4].second);
        ASSERT_TRUE(outcome);
        EXPECT_FALSE(outcome->isWhole);
        EXPECT_EQ(outcome->description, "Went wrong");
        EXPECT_EQ(outcome->address, "http://b/");
        EXPECT_FALSE(reader.isBroken());
    }
}

TEST_F(Protocol, WhatIsNoMessageIsTold)
{
    for (const std::string& bytes : {std::string(16, '\0'), std::string(16, '\xff'), "no message of this program"s}) {
        MessageReader reader;
        reader.append(bytes);
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.isBroken());
        reader.append(bytes);
        EXPECT_FALSE(reader.next());
    }
}

TEST_F(Protocol, ContentThatDoesNotFitIsNone)
{
    EXPECT_FALSE(headIn(""));
    EXPECT_FALSE(headIn(std::string(15, '\0')));
    EXPECT_TRUE(headIn(std::string(16, '\0')));
    EXPECT_FALSE(headIn(std::string(17, '\0')));
    EXPECT_FALSE(outcomeIn(""));
    EXPECT_FALSE(outcomeIn(std::string(24, '\xff')));
    EXPECT_TRUE(outcomeIn(std::string(24, '\0')));
    EXPECT_FALSE(outcomeIn(std::string(25, '\0')));
}

TEST_F(Protocol, SendingToNobodyFails)
{
    std::signal(SIGPIPE, SIG_IGN);
    hangUp(0);
    EXPECT_FALSE(sendRequest(writing(), kRequest));
    EXPECT_FALSE(sendBody(writing(), "a"));
}

} // namespace

} // namespace platform::transfer
