#include "platform/controls/Signal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using platform::Connection;
using platform::Signal;
using testing::ElementsAre;

TEST(Signal, CallsEverySlotInTheOrderOfConnectingWithTheArguments)
{
    Signal<int, const std::string&> signal;
    std::vector<std::string> calls;
    const auto first =
        signal.connect([&](int n, const std::string& t) { calls.push_back("first " + t + std::to_string(n)); });
    const auto second =
        signal.connect([&](int n, const std::string& t) { calls.push_back("second " + t + std::to_string(n)); });
    signal.emit(1, "a");
    signal.emit(2, "b");
    EXPECT_THAT(calls, ElementsAre("first a1", "second a1", "first b2", "second b2"));
}

TEST(Signal, WithoutASlotDoesNothing)
{
    const Signal<> signal;
    signal.emit();
}

TEST(Signal, ASlotStaysConnectedAsLongAsItsConnectionLives)
{
    Signal<> signal;
    int calls = 0;
    {
        const auto connection = signal.connect([&] { ++calls; });
        signal.emit();
    }
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Signal, DisconnectingTakesAwayOneSlotOnlyAndMayBeRepeated)
{
    Signal<> signal;
    std::string calls;
    auto a = signal.connect([&] { calls += 'a'; });
    const auto b = signal.connect([&] { calls += 'b'; });
    a.disconnect();
    a.disconnect();
    signal.emit();
    EXPECT_EQ(calls, "b");
}

TEST(Signal, DisconnectingReleasesWhatTheSlotHolds)
{
    Signal<> signal;
    auto held = std::make_shared<int>(7);
    const std::weak_ptr<int> watch = held;
    auto connection = signal.connect([keeps = std::move(held)] { static_cast<void>(*keeps); });
    EXPECT_FALSE(watch.expired());
    connection.disconnect();
    EXPECT_TRUE(watch.expired());
}

TEST(Connection, MovedKeepsTheSlotConnected)
{
    Signal<> signal;
    int calls = 0;
    std::optional<Connection> first = signal.connect([&] { ++calls; });
    const Connection second = std::move(*first);
    first.reset();
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Connection, AssigningDisconnectsTheFormerSlot)
{
    Signal<> signal;
    std::string calls;
    auto connection = signal.connect([&] { calls += 'a'; });
    connection = signal.connect([&] { calls += 'b'; });
    signal.emit();
    EXPECT_EQ(calls, "b");
    connection = Connection();
    signal.emit();
    EXPECT_EQ(calls, "b");
}

TEST(Connection, AssignedToItselfStaysConnected)
{
    Signal<> signal;
    int calls = 0;
    auto connection = signal.connect([&] { ++calls; });
    auto& same = connection;
    connection = std::move(same);
    signal.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Connection, MayOutliveItsSignal)
{
    std::optional<Signal<>> signal(std::in_place);
    auto connection = signal->connect([] {});
    signal.reset();
    connection.disconnect();
}

TEST(SignalWhileEmitting, ASlotMayDisconnectItself)
{
    Signal<> signal;
    std::string calls;
    Connection own;
    std::string kept = "a text long enough to live on the heap, where its release would be seen";
    own = signal.connect([&calls, &own, kept] {
        own.disconnect();
        calls += kept.substr(0, 6);
    });
    const auto later = signal.connect([&] { calls += '|'; });
    signal.emit();
    signal.emit();
    EXPECT_EQ(calls, "a text||");
}

TEST(SignalWhileEmitting, ADisconnectedLaterSlotIsSkipped)
{
    Signal<> signal;
    std::string calls;
    Connection later;
    const auto first = signal.connect([&] {
        calls += 'a';
        later.disconnect();
    });
    later = signal.connect([&] { calls += 'b'; });
    const auto last = signal.connect([&] { calls += 'c'; });
    signal.emit();
    EXPECT_EQ(calls, "ac");
}

TEST(SignalWhileEmitting, ANewSlotIsCalledFromTheNextEmissionOn)
{
    Signal<> signal;
    std::string calls;
    Connection added;
    const auto first = signal.connect([&] {
        calls += 'a';
        added = signal.connect([&] { calls += 'b'; });
    });
    signal.emit();
    EXPECT_EQ(calls, "a");
    signal.emit();
    EXPECT_EQ(calls, "aa"); // the former addition was replaced by one that waits in turn
}

TEST(SignalWhileEmitting, ASlotMayEmitAgain)
{
    Signal<int> signal;
    std::string calls;
    const auto first = signal.connect([&](int depth) {
        calls += static_cast<char>('0' + depth);
        if (depth < 3)
            signal.emit(depth + 1);
    });
    signal.emit(1);
    EXPECT_EQ(calls, "123");
}

TEST(SignalWhileEmitting, ASlotMayDestroyTheSignal)
{
    auto signal = std::make_unique<Signal<>>();
    std::string calls;
    const auto first = signal->connect([&] {
        calls += 'a';
        signal.reset();
    });
    const auto second = signal->connect([&] { calls += 'b'; });
    signal->emit();
    EXPECT_FALSE(signal);
    EXPECT_EQ(calls.front(), 'a');
}

} // namespace
