#include "platform/qt/QtJson.h"

#include <gtest/gtest.h>

namespace platform::qt {

namespace {

std::string textOf(const std::string& value)
{
    const auto records = QtJson().objectsOf("[{\"key\":" + value + "}]");
    return std::string(records.size() == 1 ? records.front().text("key") : "no record");
}

TEST(Json, ReadsNumbersInTheirDigits)
{
    EXPECT_EQ(textOf("42"), "42");
    EXPECT_EQ(textOf("-7"), "-7");
    EXPECT_EQ(textOf("0"), "0");
    EXPECT_EQ(textOf("9007199254740993"), "9007199254740993");
    EXPECT_EQ(textOf("9223372036854775807"), "9223372036854775807");
    EXPECT_EQ(textOf("18446744073709551615"), "18446744073709551615");
    EXPECT_EQ(textOf("123456789012345678901234567890"), "123456789012345678901234567890");
    EXPECT_EQ(textOf("1.5"), "1.5");
    EXPECT_EQ(textOf("0.1"), "0.1");
    EXPECT_EQ(textOf("-0.25"), "-0.25");
}

TEST(Json, ReadsLongNumbersBesideTextsThatHoldWhatLooksLikeThem)
{
    const auto records = QtJson().objectsOf(
        R"([{"a": 12345678901234567890, "b\\": "\" 12345678901234567890", "c":[-98765432109876543210,1]},{"a":2}])");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].text("a"), "12345678901234567890");
    EXPECT_EQ(records[0].text("b\\"), "\" 12345678901234567890");
    EXPECT_EQ(records[0].text("c"), "[\"-98765432109876543210\",1]");
    EXPECT_EQ(records[1].text("a"), "2");
}

TEST(Json, KeepsTextsAsTheyStand)
{
    EXPECT_EQ(textOf("\"42\""), "42");
    EXPECT_EQ(textOf("\"\""), "");
    EXPECT_EQ(textOf(R"("<b>é\n\t\"🌊\u00e9 12345678901234567890")"), "<b>é\n\t\"🌊é 12345678901234567890");
}

TEST(Json, ShowsAnythingElseAsCompactJson)
{
    EXPECT_EQ(textOf("true"), "true");
    EXPECT_EQ(textOf("[null]"), "[null]");
    EXPECT_EQ(textOf("[ 1, \"a\", {} ]"), "[1,\"a\",{}]");
    EXPECT_EQ(textOf("{ \"b\" : 1, \"a\" : [ ] }"), "{\"a\":[],\"b\":1}");
}

TEST(Json, ANullIsAsGoodAsAbsent)
{
    const auto records = QtJson().objectsOf(R"([{"userComments": null, "patchID": 1}])");
    ASSERT_EQ(records.size(), 1u);
    ASSERT_EQ(records[0].keys().size(), 1u);
    EXPECT_EQ(records[0].keys()[0], "patchID");
}

TEST(Json, AnObjectMayHaveManyKeys)
{
    std::string json = "[{";
    for (int key = 0; key < 100'000; ++key)
        json += (key ? ",\"k" : "\"k") + std::to_string(key) + "\":1";
    EXPECT_EQ(QtJson().objectsOf(json + "}]").at(0).keys().size(), 100'000u);
}

TEST(Json, PassesOverElementsThatAreNoObjects)
{
    const auto records = QtJson().objectsOf(R"([1, {"patchID": 1}, "x", null, [{"patchID": 9}], {"patchID": 2}, {}])");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].text("patchID"), "1");
    EXPECT_EQ(records[1].text("patchID"), "2");
    EXPECT_TRUE(records[2].keys().empty());
}

TEST(Json, HoldsNoObjectsWhereThereIsNoArray)
{
    for (const char* text : {"", " ", "{}", "{\"patchID\": 1}", "[", "[{\"patchID\": 1}", "[{\"patchID\": 1}] x", "42",
                             "<html>", "[{'a': 1}]", "[{12345678901234567890123: 1}]"})
        EXPECT_TRUE(QtJson().objectsOf(text).empty()) << text;
}

TEST(Json, SurvivesDeepNesting)
{
    EXPECT_TRUE(QtJson().objectsOf(std::string(1'000'000, '[')).empty());
}

} // namespace

} // namespace platform::qt
