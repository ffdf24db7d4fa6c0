#include "platform/controls/Record.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
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
    const std::vector<Record::Field> expected = {
        {"ParamNum", "99"}, {"KorvelPage", std::int32_t{-1}}, {"", "no name"}, {"State", "Editable"}};
    EXPECT_EQ(record.fields(), expected);
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
    EXPECT_NE((Record{{"a", "1"}}), Record());
}

TEST(Record, TextsThatAreDividedElsewhereAreOthers)
{
    EXPECT_NE((Record{{"one", "ab"}, {"other", "c"}}), (Record{{"one", "a"}, {"other", "bc"}}));
    EXPECT_NE((Record{{"one", ""}, {"other", std::int32_t{1}}}), (Record{{"one", std::int32_t{1}}, {"other", ""}}));
}

TEST(Record, AFieldMayBeSetToATextOfTheSameRecord)
{
    Record record = {{"long", "a text that is too long for a short one"}, {"short", "b"}};
    record.set("short", record.text("long"));
    record.set("long", record.text("long").substr(2, 4));
    EXPECT_EQ(record.text("short"), "a text that is too long for a short one");
    EXPECT_EQ(record.text("long"), "text");
}

TEST(Record, HowManyShareItDoesNotMatterWhenOneIsGone)
{
    auto first = std::make_unique<Record>(Record{{"Plugin", "Synth"}});
    Record second = *first;
    const Record third = std::move(second);
    EXPECT_TRUE(third.isCopyOf(*first));
    first.reset();
    second = third;
    EXPECT_EQ(second.text("Plugin"), "Synth");
    second = Record();
    EXPECT_EQ(third.text("Plugin"), "Synth");
}

TEST(Record, ACopyIsIndependent)
{
    Record copy = kSample;
    copy.set("ParamNum", "1");
    EXPECT_EQ(kSample.text("ParamNum"), "12");
}

TEST(Record, RecordsOfOneSetOfKeysDoNotSeeEachOthersFields)
{
    const auto keys = Record::keysOf({"ParamNum", "Page"});
    const auto made = [&keys] {
        const Record::ValueView values[] = {"1", std::int32_t{2}};
        return Record(keys, values);
    };
    Record one = made();
    const Record other = made();
    EXPECT_EQ(one, other);
    EXPECT_EQ(one, (Record{{"ParamNum", "1"}, {"Page", std::int32_t{2}}}));
    one.set("State", "Editable");
    one.set("ParamNum", "7");
    EXPECT_EQ(other.keys(), (std::vector<std::string>{"ParamNum", "Page"}));
    EXPECT_EQ(other.text("ParamNum"), "1");
    EXPECT_EQ(one.keys(), (std::vector<std::string>{"ParamNum", "Page", "State"}));
}

TEST(Record, HoldsAnyNumberOfFields)
{
    for (const bool isMadeAtOnce : {false, true}) {
        std::vector<Record::Field> fields;
        Record grown;
        for (std::int32_t n = 0; n < 11; ++n) {
            const std::string key = "key " + std::to_string(n);
            fields.emplace_back(key, n);
            grown.set(key, n);
            Record record = isMadeAtOnce ? Record(fields) : grown;
            EXPECT_EQ(record, Record(fields));
            EXPECT_EQ(record.fields(), fields);
            EXPECT_EQ(record.number(key), n);
            record.set(key, "changed");
            EXPECT_EQ(record.text(key), "changed");
            EXPECT_NE(record, grown);
            EXPECT_EQ(record.keys(), grown.keys());
        }
    }
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
