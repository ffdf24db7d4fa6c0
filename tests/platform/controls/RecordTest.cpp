#include "platform/controls/Record.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using platform::Record;

const Record kSample = {{"ParamNum", "12"}, {"KorvelPage", std::int32_t{3}}, {"", "no name"}};

TEST(Record, ReadsTextAndNumbersByKey)
{
    struct Row {
        const char* key;
        const char* text;
        std::int32_t number;
    };
    const Row rows[] = {
        {"ParamNum", "12", 0}, // a text is no number, even where it looks like one
        {"KorvelPage", "", 3}, {"", "no name", 0}, {"paramnum", "", 0}, {"Param", "", 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(kSample.text(row.key), row.text) << row.key;
        EXPECT_EQ(kSample.number(row.key), row.number) << row.key;
    }
    EXPECT_EQ(Record().text("any"), "");
    EXPECT_EQ(Record().number("any"), 0);
}

TEST(Record, SettingReplacesInPlaceOrAddsAtTheEnd)
{
    Record record = kSample;
    record.set("ParamNum", "99");
    record.set("State", "Editable");
    record.set("KorvelPage", std::int32_t{-1});
    EXPECT_EQ(record,
              (Record{{"ParamNum", "99"}, {"KorvelPage", std::int32_t{-1}}, {"", "no name"}, {"State", "Editable"}}));
    EXPECT_EQ(record.keys(), (std::vector<std::string>{"ParamNum", "KorvelPage", "", "State"}));
    EXPECT_EQ(Record().keys(), std::vector<std::string>());
}

TEST(Record, AValueMayChangeItsType)
{
    Record record = kSample;
    record.set("ParamNum", std::int32_t{7});
    EXPECT_EQ(record.number("ParamNum"), 7);
    EXPECT_EQ(record.text("ParamNum"), "");
    record.set("ParamNum", "seven");
    EXPECT_EQ(record.number("ParamNum"), 0);
    EXPECT_EQ(record.text("ParamNum"), "seven");
}

TEST(Record, HoldsWholeThirtyTwoBitNumbersAndAnyBytes)
{
    Record record;
    record.set("low", std::numeric_limits<std::int32_t>::min());
    record.set("high", std::numeric_limits<std::int32_t>::max());
    const std::string bytes("a\0b\xff", 4);
    record.set("bytes", bytes);
    EXPECT_EQ(record.number("low"), -2147483647 - 1);
    EXPECT_EQ(record.number("high"), 2147483647);
    EXPECT_EQ(record.text("bytes"), bytes);
}

TEST(Record, IsEqualWithTheSameFieldsInTheSameOrder)
{
    EXPECT_EQ(kSample, Record(kSample));
    EXPECT_NE((Record{{"a", "1"}}), (Record{{"a", std::int32_t{1}}}));
    EXPECT_NE((Record{{"a", "1"}}), (Record{{"a", "2"}}));
    EXPECT_NE((Record{{"a", "1"}, {"b", "2"}}), (Record{{"b", "2"}, {"a", "1"}}));
    EXPECT_NE((Record{{"a", "1"}}), (Record{{"b", "1"}}));
    EXPECT_NE((Record{{"a", "1"}}), Record());
    EXPECT_EQ(Record(std::vector<Record::Field>()), Record());
}

TEST(Record, ACopyIsIndependent)
{
    Record one = kSample;
    Record other = one;
    one.set("ParamNum", "1");
    other.set("State", "Editable");
    EXPECT_EQ(kSample, (Record{{"ParamNum", "12"}, {"KorvelPage", std::int32_t{3}}, {"", "no name"}}));
    EXPECT_EQ(one, (Record{{"ParamNum", "1"}, {"KorvelPage", std::int32_t{3}}, {"", "no name"}}));
    EXPECT_EQ(other.text("ParamNum"), "12");
    EXPECT_EQ(one.findText("State"), std::nullopt);
}

TEST(Record, MadeLikeAnotherHasItsKeysAndValuesOfItsOwn)
{
    const Record like = {{"ParamNum", "1"}, {"Page", std::int32_t{2}}};
    Record made(like, {"7", std::int32_t{9}});
    EXPECT_EQ(made, (Record{{"ParamNum", "7"}, {"Page", std::int32_t{9}}}));
    made.set("State", "Editable");
    EXPECT_EQ(like, (Record{{"ParamNum", "1"}, {"Page", std::int32_t{2}}}));
}

TEST(Record, AnEmptyTextIsATextAndANumberIsNone)
{
    const Record record = {{"empty", ""}, {"number", std::int32_t{0}}};
    EXPECT_EQ(record.findText("empty"), "");
    EXPECT_EQ(record.findText("number"), std::nullopt);
    EXPECT_EQ(record.findText("missing"), std::nullopt);
    EXPECT_EQ(Record().findText("empty"), std::nullopt);
}

} // namespace
