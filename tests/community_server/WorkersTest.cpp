// Jobs of several clients: in turns, and not too many.

#include "tools/community_server/Workers.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

namespace {

using community_server::Database;
using community_server::Workers;

class Jobs : public testing::Test {
protected:
    void SetUp() override
    {
        // Keeps the only thread until all others wait.
        workers_->post("first", [this](Database*) {
            hasBegun_.set_value();
            mayGoOn_.get_future().wait();
        });
        hasBegun_.get_future().wait();
    }
    bool post(const std::string& client)
    {
        return workers_->post(client,
                              [this, client](const Database* database) { (database ? done_ : refused_) += client; });
    }
    /// The clients whose jobs were done, in order.
    std::string done()
    {
        mayGoOn_.set_value();
        workers_.reset();
        return done_;
    }

    const test::TemporaryFolder folder_;
    std::promise<void> hasBegun_;
    std::promise<void> mayGoOn_;
    std::string done_;
    std::string refused_;
    std::unique_ptr<Workers> workers_ = std::make_unique<Workers>(folder_.path(), 1);
};

TEST_F(Jobs, AreDoneInTurns)
{
    for (const char* client : {"a", "a", "a", "a", "b", "c", "b"})
        EXPECT_TRUE(post(client));
    EXPECT_EQ(done(), "abcabaa");
}

TEST_F(Jobs, AreSoManyOfAClientAndOfAll)
{
    std::size_t ofOne = 0;
    while (ofOne < 2 * Workers::kMost && post("a"))
        ++ofOne;
    EXPECT_EQ(ofOne, Workers::kMostOfClient);
    std::size_t all = ofOne;
    while (all < 2 * Workers::kMost && post(std::to_string(all)))
        ++all;
    EXPECT_EQ(all - refused_.size(), Workers::kMost);
    EXPECT_FALSE(done().empty());
}

TEST_F(Jobs, OfThoseWhoAskMuchGiveWayToOthers)
{
    for (std::size_t i = 0; i < Workers::kMost; ++i)
        EXPECT_TRUE(post(i % 2 == 0 ? "a" : "b"));
    EXPECT_FALSE(post("a"));
    EXPECT_TRUE(post("c"));
    EXPECT_TRUE(post("d"));
    EXPECT_EQ(refused_, "ab");
    const std::string done = this->done();
    EXPECT_EQ(done.substr(0, 4), "abcd");
    EXPECT_EQ(done.size(), Workers::kMost);
}

} // namespace
