// How many connections and bytes a client may have, and for how long. The "sockets" are a pair's, one end kept.

#include "tools/community_server/Connections.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <deque>

namespace {

using community_server::Connections;
using Phase = Connections::Phase;

/// A client at the other end of a connection.
class Client {
public:
    Client(Connections& connections, const std::string& address) : connections_(connections)
    {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends_), 0);
        connection = connections.opened(ends_[0], address);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client()
    {
        connections_.closed(connection);
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    bool isCut() const
    {
        char byte = 0;
        return ::recv(ends_[1], &byte, 1, MSG_DONTWAIT) == 0;
    }

    Connections::Connection* connection = nullptr;

private:
    Connections& connections_;
    int ends_[2] = {-1, -1};
};

TEST(ConnectionTimes, EndWhatTakesTooLong)
{
    Connections connections(true);
    const Client client(connections, "a");
    const auto start = Connections::Clock::now();
    connections.cutLate(start + Connections::kHeadTime - std::chrono::seconds(1));
    EXPECT_FALSE(client.isCut());
    connections.setPhase(client.connection, Phase::reading);
    connections.cutLate(start + Connections::kWholeTime - std::chrono::seconds(1));
    EXPECT_FALSE(client.isCut());
    connections.setPhase(client.connection, Phase::working);
    connections.cutLate(start + std::chrono::hours(1));
    EXPECT_FALSE(client.isCut());
    connections.setPhase(client.connection, Phase::sending);
    connections.cutLate(start + Connections::kWholeTime + std::chrono::seconds(5));
    EXPECT_TRUE(client.isCut());
}

TEST(ConnectionTimes, OfAHeadAreShort)
{
    Connections connections(true);
    const Client client(connections, "a");
    connections.cutLate(Connections::Clock::now() + Connections::kHeadTime + std::chrono::seconds(1));
    EXPECT_TRUE(client.isCut());
}

TEST(ConnectionTimes, AreShortWhileMemoryIs)
{
    Connections connections(true);
    const Client client(connections, "a");
    connections.setPhase(client.connection, Phase::sending);
    const auto late = Connections::Clock::now() + Connections::kShortTime + std::chrono::seconds(1);
    connections.cutLate(late);
    EXPECT_FALSE(client.isCut());
    for (const char* address : {"a", "b", "c"})
        ASSERT_TRUE(connections.takeBytes(client.connection, address, Connections::kMostBytesOfAddress));
    connections.cutLate(late);
    EXPECT_TRUE(client.isCut());
}

TEST(ManyConnections, CostTheirAddressTheOldest)
{
    Connections connections(true);
    std::deque<Client> clients;
    clients.emplace_back(connections, "other");
    for (std::size_t i = 0; i < Connections::kMostOfAddress + 2; ++i)
        clients.emplace_back(connections, "a");
    EXPECT_FALSE(clients[0].isCut());
    EXPECT_TRUE(clients[1].isCut());
    EXPECT_TRUE(clients[2].isCut());
    EXPECT_FALSE(clients[3].isCut());
    EXPECT_FALSE(clients.back().isCut());
}

TEST(ManyConnections, LeaveWhatTheLibraryIsWorkingOn)
{
    Connections connections(true);
    std::deque<Client> clients;
    clients.emplace_back(connections, "a");
    connections.setPhase(clients.front().connection, Phase::working);
    for (std::size_t i = 0; i < Connections::kMostOfAddress; ++i)
        clients.emplace_back(connections, "a");
    EXPECT_FALSE(clients[0].isCut());
    EXPECT_TRUE(clients[1].isCut());
}

TEST(ManyConnections, OfManyAddressesCostTheOneWithMost)
{
    Connections connections(true);
    std::deque<Client> clients;
    clients.emplace_back(connections, "first");
    for (std::size_t i = 0; i + 10 < Connections::kMost; ++i)
        clients.emplace_back(connections, "address " + std::to_string(i));
    for (int i = 0; i < 12; ++i)
        clients.emplace_back(connections, "a");
    EXPECT_FALSE(clients.front().isCut());
    EXPECT_FALSE(clients.back().isCut());
    EXPECT_TRUE(clients[clients.size() - 12].isCut());
}

TEST(ManyConnections, OfAProxyAreOnlyTooManyInAll)
{
    Connections connections(false);
    std::deque<Client> clients;
    for (std::size_t i = 0; i < Connections::kMost; ++i)
        clients.emplace_back(connections, "proxy");
    EXPECT_FALSE(clients.front().isCut());
    clients.emplace_back(connections, "proxy");
    EXPECT_TRUE(clients.front().isCut());
}

TEST(Bytes, AreLimitedOfAnAddressAndOfAll)
{
    Connections connections(false);
    const Client client(connections, "proxy");
    const auto take = [&](const std::string& address, std::size_t bytes) {
        return connections.takeBytes(client.connection, address, bytes);
    };
    EXPECT_TRUE(take("a", Connections::kMostBytesOfAddress));
    EXPECT_FALSE(take("a", 1));
    connections.giveBytesBack(client.connection, "a", 1);
    EXPECT_TRUE(take("a", 1));
    std::size_t taken = Connections::kMostBytesOfAddress;
    for (int i = 0; i < 100 && take("address " + std::to_string(i), Connections::kMostBytesOfAddress / 2); ++i)
        taken += Connections::kMostBytesOfAddress / 2;
    EXPECT_EQ(taken, Connections::kMostBytes);
    connections.giveBytesBack(client.connection, "a", Connections::kMostBytesOfAddress);
    EXPECT_TRUE(take("b", Connections::kMostBytesOfAddress));
    EXPECT_FALSE(client.isCut());
}

TEST(Bytes, AreTakenFromTheAddressWithMost)
{
    Connections connections(true);
    std::deque<Client> clients;
    const auto take = [&](const std::string& address, std::size_t bytes) {
        clients.emplace_back(connections, address);
        return connections.takeBytes(clients.back().connection, address, bytes);
    };
    const std::size_t part = Connections::kMostBytes / 16;
    for (const char* address : {"little", "much", "much", "much", "some", "some"})
        EXPECT_TRUE(take(address, part)) << address;
    EXPECT_TRUE(take("another", part));
    EXPECT_TRUE(take("other", part));
    for (const Client& client : clients)
        EXPECT_FALSE(client.isCut());
    EXPECT_TRUE(take("other", part));
    EXPECT_TRUE(clients[1].isCut()); // the first one with much
    // What it had counts as given back already.
    clients.emplace_back(connections, "nothing");
    EXPECT_TRUE(connections.takeBytes(clients.back().connection, "nothing", 0));
    for (std::size_t i : {0U, 2U, 3U, 4U, 5U, 6U, 7U, 8U})
        EXPECT_FALSE(clients[i].isCut()) << i;
    // Whoever has most itself takes from nobody.
    EXPECT_TRUE(take("some", part));
    EXPECT_TRUE(take("some", part));
    for (std::size_t i : {0U, 2U, 3U, 4U, 5U, 6U, 7U, 8U})
        EXPECT_FALSE(clients[i].isCut()) << i;
}

} // namespace
