#include "platform/controls/Property.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using platform::Property;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Property, StartsWithTheValueGivenOrTheTypesOwn)
{
    EXPECT_EQ(Property<int>().get(), 0);
    EXPECT_EQ(Property<std::string>().get(), "");
    EXPECT_EQ(Property<bool>(true).get(), true);
}

TEST(Property, TellsTheNewValueOncePerChange)
{
    Property<std::string> text("a");
    std::vector<std::string> told;
    const auto connection = text.onChange([&](const std::string& value) { told.push_back(value); });
    EXPECT_THAT(told, IsEmpty());
    text.set("b");
    text.set("c");
    EXPECT_THAT(told, ElementsAre("b", "c"));
    EXPECT_EQ(text.get(), "c");
}

TEST(Property, IgnoresAnEqualValue)
{
    Property<int> number(5);
    int told = 0;
    const auto connection = number.onChange([&](int) { ++told; });
    number.set(5);
    EXPECT_EQ(told, 0);
    number.set(6);
    number.set(6);
    EXPECT_EQ(told, 1);
}

TEST(Property, HoldsTheNewValueWhenItTells)
{
    Property<int> number;
    int seen = -1;
    const auto connection = number.onChange([&](int) { seen = number.get(); });
    number.set(4);
    EXPECT_EQ(seen, 4);
}

TEST(Property, TwoThatFollowEachOtherSettle)
{
    Property<int> a;
    Property<int> b;
    int told = 0;
    const auto there = a.onChange([&](int value) {
        ++told;
        b.set(value);
    });
    const auto back = b.onChange([&](int value) {
        ++told;
        a.set(value);
    });
    a.set(3);
    b.set(9);
    EXPECT_EQ(a.get(), 9);
    EXPECT_EQ(b.get(), 9);
    EXPECT_EQ(told, 4);
}

TEST(Property, AListenerMayCorrectTheValue)
{
    Property<std::string> text;
    std::vector<std::string> told;
    const auto connection = text.onChange([&](const std::string& value) {
        text.set("a text that replaces the one just told, long enough to need memory of its own");
        told.push_back(value.substr(0, 6)); // the value told stays valid although it was replaced
    });
    text.set("first and foremost, also long enough to need memory of its own");
    EXPECT_THAT(told, ElementsAre("a text", "first "));
    EXPECT_EQ(text.get().substr(0, 6), "a text");
}

TEST(Property, ALaterListenerIsNotLeftWithAnOutdatedValue)
{
    Property<int> number;
    std::vector<int> told;
    const auto correcting = number.onChange([&](int value) {
        if (value > 9)
            number.set(9);
    });
    const auto showing = number.onChange([&](int value) { told.push_back(value); });
    number.set(12);
    EXPECT_EQ(told.back(), 9);
}

TEST(Property, AClosedConnectionHearsNothing)
{
    Property<int> number;
    int told = 0;
    auto connection = number.onChange([&](int) { ++told; });
    connection.disconnect();
    number.set(1);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(number.get(), 1);
}

} // namespace
