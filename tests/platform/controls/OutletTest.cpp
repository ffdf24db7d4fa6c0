#include "platform/controls/Outlet.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace {

using platform::Outlet;

struct Label {
    std::string text;
};

TEST(Outlet, UnconnectedRefersToAnObjectOfItsOwn)
{
    const Outlet<Label> a;
    const Outlet<Label> b;
    ASSERT_TRUE(a.get());
    a.get()->text = "kept";
    EXPECT_EQ(a.get()->text, "kept");
    EXPECT_EQ(b.get()->text, "");
}

TEST(Outlet, RefersToTheObjectSetAndKeepsItAlive)
{
    Outlet<Label> outlet;
    auto label = std::make_shared<Label>();
    const std::weak_ptr<Label> watch = label;
    outlet.set(label);
    EXPECT_EQ(outlet.get(), label);
    label.reset();
    EXPECT_FALSE(watch.expired());
    outlet.set(std::make_shared<Label>());
    EXPECT_TRUE(watch.expired());
}

TEST(Outlet, NullDisconnects)
{
    Outlet<Label> outlet;
    auto label = std::make_shared<Label>();
    outlet.set(label);
    outlet.set(nullptr);
    ASSERT_TRUE(outlet.get());
    EXPECT_NE(outlet.get(), label);
    outlet.get()->text = "shown by nothing";
    EXPECT_EQ(label->text, "");
    EXPECT_EQ(label.use_count(), 1);
}

TEST(Outlet, AReferenceThatWasReadOutlivesTheOutlet)
{
    std::shared_ptr<Label> label;
    {
        Outlet<Label> outlet;
        outlet.set(std::make_shared<Label>(Label{"still here"}));
        label = outlet.get();
    }
    EXPECT_EQ(label->text, "still here");
}

/// Looks at its outlet as it goes.
struct Farewell {
    Outlet<Farewell>* outlet = nullptr;
    bool* sawItsSuccessor = nullptr;

    ~Farewell()
    {
        if (outlet)
            *sawItsSuccessor = outlet->get().get() != this;
    }
};

TEST(Outlet, ReleasesTheFormerObjectOutsideItsLock)
{
    bool sawItsSuccessor = false;
    Outlet<Farewell> outlet;
    auto first = std::make_shared<Farewell>();
    first->outlet = &outlet;
    first->sawItsSuccessor = &sawItsSuccessor;
    outlet.set(std::move(first));
    outlet.set(nullptr); // would wait for itself for ever, were it released under the lock
    EXPECT_TRUE(sawItsSuccessor);
}

TEST(Outlet, ReadsAndWritesOfTheReferenceAreIndivisible)
{
    constexpr int kRounds = 50000;
    struct Pair {
        int first = 1;
        int second = 1;
        ~Pair() { second = 0; }
    };
    Outlet<Pair> outlet;
    std::thread writer([&] {
        for (int round = 0; round < kRounds; ++round)
            outlet.set(std::make_shared<Pair>(Pair{round, round}));
    });
    int torn = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto pair = outlet.get();
        torn += !pair || pair->first != pair->second;
    }
    writer.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(outlet.get().use_count(), 2); // the outlet's and this one: no count was lost
    EXPECT_EQ(outlet.get()->first, kRounds - 1);
}

} // namespace
