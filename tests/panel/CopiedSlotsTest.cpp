#include "panel/CopiedSlots.h"

#include "mapping/ParameterOrder.h"
#include "platform/plist/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

namespace plist = platform::plist;
using panel::CopiedSlots;

CopiedSlots read(const CopiedSlots& copied)
{
    return panel::copiedSlotsIn(panel::bytesOf(copied)).value_or(CopiedSlots{"nothing was read", false, {}});
}

plist::Dictionary form(plist::Value slots, plist::Value arePages = false, plist::Value source = "/a/Synth")
{
    return {{"Source", std::move(source)}, {"ArePages", std::move(arePages)}, {"Slots", std::move(slots)}};
}

bool isRead(const plist::Value& root)
{
    return panel::copiedSlotsIn(plist::write({root})).has_value();
}

plist::Array slots(std::size_t count)
{
    return plist::Array(count, plist::Value("7 Cutoff"));
}

TEST(CopiedSlots, ComeBackAsTheyWere)
{
    const std::vector<panel::SlotContent> contents = {{"12", "Cutoff"},
                                                      {"0", "-"},
                                                      {"", "No number"},
                                                      {"3", ""},
                                                      {"4", "Two  blanks "},
                                                      {"5", "line\nand\x01"},
                                                      {"6", "\xC3\x89galiseur <&>"},
                                                      {"7", std::string(100'000, 'n')}};
    for (const CopiedSlots& copied : {CopiedSlots{"/a/Synth", false, contents}, CopiedSlots{"/a/Synth", true, contents},
                                      CopiedSlots{"", false, {{"12", "Cutoff"}}}})
        EXPECT_EQ(read(copied), copied);
}

TEST(CopiedSlots, AnEmptySlotIsOneWhateverNumberItHas)
{
    const CopiedSlots expected{"", false, {{"0", "-"}}};
    EXPECT_EQ(read({"", false, {{"5", "-"}}}), expected);
    for (const char* element : {"-1", "", "5 -", "word"})
        EXPECT_EQ(panel::copiedSlotsIn(plist::write({form(plist::Array(1, plist::Value(element)), false, "")})),
                  expected)
            << element;
}

TEST(CopiedSlots, WhatIsNotOurFormHoldsNone)
{
    for (const std::string& bytes : {std::string(), std::string("12 Cutoff"), std::string("{"), std::string(9000, '('),
                                     std::string("bplist00"), std::string(100, '\0')})
        EXPECT_FALSE(panel::copiedSlotsIn(bytes)) << bytes;
    EXPECT_TRUE(isRead(form(slots(1))));
    EXPECT_FALSE(isRead(slots(1)));
    EXPECT_FALSE(isRead(plist::Dictionary{}));
    EXPECT_FALSE(isRead(plist::Dictionary{{"Slots", slots(1)}}));
    EXPECT_FALSE(isRead(form("7 Cutoff")));
    EXPECT_FALSE(isRead(form(plist::Array{})));
    EXPECT_FALSE(isRead(form(plist::Array{plist::Value("7 Cutoff"), plist::Integer(7)})));
    EXPECT_FALSE(isRead(form(plist::Array(1, plist::Value(slots(1))))));
    EXPECT_FALSE(isRead(form(slots(1), "yes")));
    EXPECT_FALSE(isRead(form(slots(1), false, plist::Integer(1))));
}

TEST(CopiedSlots, AreBoundedAndPagesWhole)
{
    EXPECT_TRUE(isRead(form(slots(CopiedSlots::kMost))));
    EXPECT_FALSE(isRead(form(slots(CopiedSlots::kMost + 1))));
    EXPECT_TRUE(isRead(form(slots(16), true)));
    EXPECT_FALSE(isRead(form(slots(15), true)));
}

TEST(CopiedSlots, AreALineEachForOtherPrograms)
{
    auto entries = mapping::mappingOf(std::vector<std::string>{"1 A", "2 B", "3 C", "4 D", "5 E", "6 F", "7 G", "8 H",
                                                               "9 I", "10 two\nlines\t", "12 Cutoff"});
    EXPECT_EQ(panel::textOf(entries, std::vector<std::int32_t>{10}), "Page 2, Pot 3: 12 Cutoff");
    EXPECT_EQ(panel::textOf(entries, std::vector<std::int32_t>{7, 8, 9, 11}),
              "Page 1, Pot 8: 8 H\nPage 2, Pot 1: 9 I\nPage 2, Pot 2: 10 two lines \nPage 2, Pot 4: -");
    EXPECT_EQ(panel::copySlots(entries, std::vector<std::int32_t>{10, 11}).contents,
              (std::vector<panel::SlotContent>{{"12", "Cutoff"}, {"0", "-"}}));
}

} // namespace
