// What one client may do to the others: nothing. Clients come from several addresses where the machine has them.

#include "community/Requests.h"
#include "tests/community_server/TestServer.h"
#include "tests/support/OrderFiles.h"
#include "tools/community_server/Database.h"
#include "tools/community_server/Schema.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kHealthy{500};

/// Addresses of the machine but for the one of healthy clients; that one where there is no other.
std::string addressOfNumber(int number)
{
    return test::hasOtherAddresses() ? "127.0.0." + std::to_string(2 + number) : test::kHere;
}

std::size_t mebibytesOf(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return static_cast<std::size_t>(std::stoul(line.substr(6))) / 1024;
    return 0; // where the system does not say
}

/// Connections that are closed in the end.
struct Sockets : std::vector<int> {
    Sockets() = default;
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;
    ~Sockets()
    {
        for (const int socket : *this)
            ::close(socket);
    }
};

/// The quickest of some, since the machine may have other work.
template <typename Ask>
void expectQuick(Ask ask)
{
    Clock::duration quickest = std::chrono::hours(1);
    for (int i = 0; i < 5; ++i) {
        const auto start = Clock::now();
        ask();
        quickest = std::min(quickest, Clock::now() - start);
    }
    EXPECT_LT(quickest, kHealthy);
}

class Attack : public testing::Test {
protected:
    void SetUp() override
    {
        // Some systems give a process no more than 256 descriptors unless it asks.
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, 1024));
        ::setrlimit(RLIMIT_NOFILE, &limit);
        server_.join("Ada");
        server_.upload("Ada", mapping_);
    }
    void expectHealthy() const
    {
        expectQuick([&] { EXPECT_EQ(server_.listed("uploader"), "Ada"); });
    }
    void connectSlowClients(Sockets& sockets, int count, int addresses) const
    {
        for (int i = 0; i < count; ++i) {
            const std::string from = addresses == 0 ? test::kHere : addressOfNumber(i % addresses);
            sockets.push_back(test::connectTo(server_.port(), from));
            ASSERT_GE(sockets.back(), 0) << i;
            // In the first line, in the head, in the body.
            const char* const begun[] = {"P", "POST /kv_listplists.php?plugin=Echo HTTP/1.1\r\nHost: l",
                                         ("POST /kv_upload.php?user=Ada&plugin=Echo&comments= HTTP/1.1\r\nHost: l\r\n"
                                          "Content-Length: 1000\r\n\r\n-"),
                                         ""};
            test::sendAll(sockets.back(), begun[i % 4]);
        }
    }

    const test::TemporaryFolder folder_;
    const test::TestServer server_{folder_ / "data"};
    const std::string mapping_ = test::orderBytes({"0 Cutoff"});
};

TEST_F(Attack, OfTwoHundredSlowClientsLeavesOthersAlone)
{
    Sockets sockets;
    connectSlowClients(sockets, 200, 10);
    for (int round = 0; round < 3; ++round) {
        for (const int socket : sockets)
            test::sendAll(socket, "x");
        expectHealthy();
    }
}

TEST_F(Attack, OfTwoHundredSlowClientsLeavesEvenTheirOwnAddressAlone)
{
    Sockets sockets;
    connectSlowClients(sockets, 200, 0);
    expectHealthy();
}

TEST_F(Attack, OfMoreClientsThanTheServerTakesLeavesOthersAlone)
{
    Sockets sockets;
    connectSlowClients(sockets, 700, 20);
    expectHealthy();
}

TEST_F(Attack, OfATricklingClientEnds)
{
    const int socket = test::connectTo(server_.port());
    test::sendAll(socket, "POST /kv_listplists.php?plugin=");
    const auto start = Clock::now();
    bool isTaken = true;
    while (isTaken && Clock::now() - start < std::chrono::seconds(20)) {
        std::this_thread::sleep_for(milliseconds(200));
        isTaken = test::sendAll(socket, "x");
    }
    EXPECT_FALSE(isTaken);
    EXPECT_GT(Clock::now() - start, std::chrono::seconds(5));
    ::close(socket);
}

TEST_F(Attack, OfEndlessRequestsTakesNoMemory)
{
    const std::string upload = "POST /" + community::uploadAddress("", "Ada", "Echo", "") +
                               " HTTP/1.1\r\nHost: library\r\nContent-Type: " + community::uploadContentType() + "\r\n";
    const std::string part(std::size_t{1} << 20, 'x');
    struct Case {
        std::string start;
        std::string part;
    };
    const Case cases[] = {
        {"", part},
        {"GET /", part},
        {"GET / HTTP/1.1\r\n", "Header: value\r\n"},
        {"GET / HTTP/1.1\r\nHeader: ", part},
        {upload + "Content-Length: 1000000000000\r\n\r\n", part},
        {upload + "Content-Length: 99999999999999999999999\r\n\r\n", part},
        {upload + "Transfer-Encoding: chunked\r\n\r\n", "100000\r\n" + part + "\r\n"},
        {upload + "Transfer-Encoding: chunked\r\n\r\nfffffffffffffff\r\n", part},
        {"POST /kv_listplists.php?plugin=Echo HTTP/1.1\r\nHost: l\r\nTransfer-Encoding: chunked\r\n\r\n",
         "100000\r\n" + part + "\r\n"},
    };
    for (const Case& each : cases) {
        std::vector<std::thread> clients;
        for (int i = 0; i < 8; ++i)
            clients.emplace_back([&] {
                const int socket = test::connectTo(server_.port());
                bool isTaken = test::sendAll(socket, each.start);
                for (std::size_t sent = 0; isTaken && sent < std::size_t{100} << 20; sent += each.part.size())
                    isTaken = test::sendAll(socket, each.part);
                EXPECT_FALSE(isTaken) << each.start;
                ::close(socket);
            });
        for (std::thread& client : clients)
            client.join();
    }
    EXPECT_LT(mebibytesOf(server_.process()), 60U);
    expectHealthy();
}

TEST_F(Attack, OfNonsenseLeavesOthersAlone)
{
    Sockets sockets;
    for (const std::string& request :
         {std::string("nonsense\r\n\r\n"), std::string("\r\n\r\n"), std::string(1000, '\0'), std::string("GET\r\n\r\n"),
          std::string("GET / HTTP/9.9\r\n\r\n"),
          std::string("POST / HTTP/1.1\r\nHost: l\r\nContent-Length: -1\r\n\r\n"),
          std::string("POST / HTTP/1.1\r\nHost: l\r\nTransfer-Encoding: chunked\r\n\r\nx\r\n"),
          std::string("BREW /checkuser.php?userName=Ada&pinCode= HTTP/1.1\r\nHost: l\r\nConnection: close\r\n\r\n"),
          std::string("POST /kv_upload.php?user=Ada&plugin=Echo&comments= HTTP/1.1\r\nHost: l\r\nConnection: close\r\n"
                      "Content-Type: multipart/form-data; boundary=\"\r\nContent-Length: 2\r\n\r\n--")}) {
        sockets.push_back(test::connectTo(server_.port()));
        test::sendAll(sockets.back(), request);
    }
    expectHealthy();
}

TEST_F(Attack, OfManyUploadsAtOnceTakesBoundedMemory)
{
    Sockets sockets;
    for (int i = 0; i < 200; ++i) {
        sockets.push_back(test::connectTo(server_.port(), addressOfNumber(i % 10)));
        // All but the end of the largest file.
        test::sendAll(sockets.back(), "POST /" + community::uploadAddress("", "Ada", "Echo", "") +
                                          " HTTP/1.1\r\nHost: library\r\nContent-Length: 1048576\r\n\r\n" +
                                          std::string(1'048'575, 'x'));
    }
    EXPECT_LT(mebibytesOf(server_.process()), 150U);
    expectHealthy();
}

TEST(SlowReaders, TakeBoundedMemoryAndLeaveOthersAlone)
{
    using namespace community_server;
    const test::TemporaryFolder folder;
    {
        Database database(folder.path());
        bringUpToDate(database, folder.path());
        database.execute("INSERT INTO account (name, email, created) VALUES ('Ada', '', 0);"
                         "INSERT INTO file VALUES (x'00', x'00')");
        for (std::int64_t i = 0; i < 500; ++i) {
            database.run("INSERT INTO file VALUES (?1, ?1)", Blob{std::to_string(i)});
            database.run("INSERT INTO mapping (plugin, account, comments, hash, fileName, uploaded) "
                         "VALUES ('Echo', 1, ?, ?, ?, 0)",
                         std::string(4000, 'x'), Blob{std::to_string(i)}, std::to_string(i));
        }
        database.run("INSERT INTO mapping (plugin, account, comments, hash, fileName, uploaded) "
                     "VALUES ('Small', 1, 'small', x'00', 'small', 0)");
    }
    const test::TestServer server(folder.path());
    Sockets sockets;
    for (int i = 0; i < 200; ++i) {
        sockets.push_back(test::connectTo(server.port(), addressOfNumber(i % 4)));
        test::sendAll(sockets.back(),
                      "POST /kv_listplists.php?plugin=Echo HTTP/1.1\r\nHost: l\r\nContent-Length: 0\r\n\r\n");
    }
    expectQuick([&] { EXPECT_EQ(server.listed("userComments", "Small"), "small"); });
    EXPECT_LT(mebibytesOf(server.process()), 100U);
}

TEST_F(Attack, OfOneAddressOnPinsLeavesOthersAlone)
{
    const std::string pin = server_.join("Bob");
    if (!test::hasOtherAddresses())
        GTEST_SKIP() << "there is one address only";
    Sockets sockets;
    for (int i = 0; i < 60; ++i) {
        sockets.push_back(test::connectTo(server_.port(), "127.0.0.2"));
        const std::string address = i % 2 == 0 ? community::loginCheckAddress("", "Bob", "wrong" + std::to_string(i))
                                               : community::newUserAddress("", "Stranger" + std::to_string(i), "a@b");
        test::sendAll(sockets.back(), "POST /" + address + " HTTP/1.1\r\nHost: library\r\nContent-Length: 0\r\n\r\n");
    }
    expectQuick([&] { EXPECT_EQ(server_.logIn("Bob", pin), "\nOK\n"); });
}

TEST_F(Attack, OnAPinIsOverAfterSomeTries)
{
    const std::string pin = server_.createAccount("Bob");
    const std::string wrong = pin == "000000" ? "000001" : "000000";
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(server_.logIn("Bob", wrong), "\nNO\n");
    // The right one too: whoever tries does not learn it.
    server_.logIn("bob", wrong);
    EXPECT_EQ(server_.logIn("BOB", pin), "\nNO\n");
    if (test::hasOtherAddresses()) {
        EXPECT_EQ(server_.logIn("Bob", pin, "127.0.0.2"), "\nOK\n");
    }
}

} // namespace
