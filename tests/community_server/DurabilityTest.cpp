// What was confirmed is there, whatever happens to the server, and what could not be stored is not confirmed.

#include "community/Requests.h"
#include "tests/community_server/TestServer.h"
#include "tests/support/OrderFiles.h"
#include "tools/community_server/Database.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using community_server::Database;
using community_server::Statement;

constexpr char kNotStored[] = "The library could not do that just now. Nothing was stored; please try again later.";
const test::TestServer::Arguments kManyUploads{"--uploads-of-user", "1000000", "--uploads-of-address", "1000000"};

std::set<std::string> textsIn(const test::Path& data, const char* select)
{
    Database database(data);
    Statement rows(database, select);
    std::set<std::string> texts;
    while (rows.step())
        texts.emplace(rows.text(0));
    return texts;
}

std::set<std::string> commentsIn(const test::Path& data)
{
    return textsIn(data, "SELECT comments FROM mapping JOIN file USING (hash)");
}

class Stored : public testing::Test {
protected:
    test::Path data() const { return folder_ / "data"; }
    const test::TemporaryFolder folder_;
};

TEST_F(Stored, WhileSomebodyReads)
{
    const test::TestServer server(data());
    Database reader(data());
    reader.execute("BEGIN");
    Statement rows(reader, "SELECT count(*) FROM account");
    ASSERT_TRUE(rows.step());
    server.join("Ada");
    EXPECT_EQ(server.upload("Ada", test::orderBytes({"1 a"})).status, 200);
    EXPECT_EQ(server.listed("uploader"), "Ada");
    EXPECT_EQ(textsIn(data(), "SELECT name FROM account"), std::set<std::string>{"Ada"});
}

TEST_F(Stored, OrRefusedInWordsWhileSomebodyElseWrites)
{
    const test::TestServer server(data());
    server.join("Ada");
    server.upload("Ada", test::orderBytes({"1 a"}));
    Database writer(data());
    writer.execute("BEGIN IMMEDIATE");
    std::thread client([&] { EXPECT_EQ(server.upload("Ada", test::orderBytes({"2 b"})).body, kNotStored); });
    EXPECT_EQ(server.post(community::newUserAddress("", "Bob", "a@b")).body, kNotStored);
    EXPECT_EQ(server.listed("uploader"), "Ada"); // nobody who reads has to wait
    client.join();
    writer.execute("ROLLBACK");
    EXPECT_EQ(textsIn(data(), "SELECT name FROM account"), std::set<std::string>{"Ada"});
    EXPECT_EQ(server.post("kv_downloadreg.php?patchID=1").body, "\nOK\n");
}

TEST_F(Stored, LogInsThatCannotBeAreNoWrongTries)
{
    const test::TestServer server(data());
    const std::string pin = server.createAccount("Ada");
    Database host(data());
    host.execute("CREATE TRIGGER full BEFORE INSERT ON login BEGIN SELECT RAISE(ABORT, 'full'); END");
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(server.logIn("Ada", pin), kNotStored);
    host.execute("DROP TRIGGER full");
    EXPECT_EQ(server.logIn("Ada", pin), "\nOK\n");
}

TEST_F(Stored, OrRefusedInWordsWhileTheDiskIsFull)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{rlim_t{1} << 20, limit.rlim_max};
    std::set<std::string> confirmed;
    std::string pin;
    int refused = 0;
    {
        ::setrlimit(RLIMIT_FSIZE, &small);
        const test::TestServer server(data(), kManyUploads);
        ::setrlimit(RLIMIT_FSIZE, &limit);
        pin = server.join("Ada");
        for (int i = 0; i < 30; ++i) {
            const std::string name = std::to_string(i);
            const std::string file = test::orderBytes({name}) + std::string(100'000, '\n');
            const std::string reply = server.upload("Ada", file, name).body;
            if (reply == "Thank you, Ada! Your mapping for Echo is now shared.") {
                confirmed.insert(name);
            } else {
                EXPECT_EQ(reply, kNotStored);
                ++refused;
            }
        }
        const std::string account = server.post(community::newUserAddress("", "Eve", "a@b")).body;
        EXPECT_EQ(account == kNotStored, textsIn(data(), "SELECT name FROM account").size() == 1) << account;
        EXPECT_NE(server.listing(), "[]");
    }
    EXPECT_GE(confirmed.size(), 3U);
    EXPECT_GE(refused, 3);
    EXPECT_EQ(commentsIn(data()), confirmed);
    const test::TestServer server(data());
    EXPECT_EQ(server.logIn("Ada", pin), "\nOK\n");
}

TEST_F(Stored, WhatWasConfirmedBeforeAKill)
{
    std::set<std::string> confirmed;
    std::set<std::string> accounts;
    std::mutex mutex;
    std::mt19937 random(20261122);
    for (int round = 0; round < 12; ++round) {
        test::TestServer server(data(), kManyUploads);
        const std::string user = "User " + std::to_string(round);
        server.join(user);
        accounts.insert(user);
        std::atomic<bool> isOver = false;
        std::vector<std::thread> clients;
        for (int client = 0; client < 4; ++client)
            clients.emplace_back([&, client] {
                for (int i = 0; !isOver; ++i) {
                    const std::string name =
                        std::to_string(round) + "-" + std::to_string(client) + "-" + std::to_string(i);
                    const auto reply = server.upload(user, test::orderBytes({name}) + std::string(20'000, '\n'), name);
                    const std::lock_guard lock(mutex);
                    if (reply.body.find("now shared") != std::string::npos)
                        confirmed.insert(name);
                }
            });
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
        server.kill();
        isOver = true;
        for (std::thread& client : clients)
            client.join();
    }
    EXPECT_GT(confirmed.size(), 20U);
    {
        const test::TestServer server(data());
    } // takes up what is left
    const auto kept = commentsIn(data());
    for (const std::string& name : confirmed)
        EXPECT_TRUE(kept.contains(name)) << name;
    EXPECT_EQ(textsIn(data(), "SELECT name FROM account"), accounts);
    EXPECT_EQ(textsIn(data(), "PRAGMA integrity_check"), std::set<std::string>{"ok"});
    EXPECT_EQ(textsIn(data(), "SELECT hash FROM file WHERE hash NOT IN (SELECT hash FROM mapping)").size(), 0U);
    for (const auto& entry : std::filesystem::directory_iterator(data()))
        EXPECT_TRUE(entry.path().filename().native().starts_with("library.sqlite")) << entry.path();
}

} // namespace
