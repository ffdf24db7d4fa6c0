#include "platform/qt/RecordSort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace platform::qt {
namespace {

using testing::ElementsAre;

class RecordSearchTest : public testing::Test {
protected:
    RecordSearchTest()
    {
        for (const auto& [name, maker] :
             {std::pair{"Filter Cutoff", "Acme"}, std::pair{"Cutoff", "Beta"},
              std::pair{"Fre\u0301quence", "Beta Filters"}, std::pair{"Gr\u00f6\u00dfe", ""}})
            content_.push_back({{"Name", std::string(name)}, {"Maker", std::string(maker)}});
        list_.setContent(content_);
    }

    std::vector<std::string> found(const std::string& filterText)
    {
        list_.filterText.set(filterText);
        std::vector<std::string> names;
        for (std::int32_t row = 0; row < list_.arrangedCount(); ++row)
            names.emplace_back(list_.arrangedObject(row)->text("Name"));
        return names;
    }

    std::vector<Record> content_;
    ArrayController list_;
};

TEST_F(RecordSearchTest, FindsWordsInAnyOrderUnderAnyOfTheKeys)
{
    list_.setArrangement(searching({{"Name", "Maker"}}));
    EXPECT_THAT(found("cutoff filter"), ElementsAre("Filter Cutoff"));
    EXPECT_THAT(found("  FILTER   cut "), ElementsAre("Filter Cutoff"));
    EXPECT_THAT(found("beta cutoff"), ElementsAre("Cutoff"));
    EXPECT_THAT(found("filter"), ElementsAre("Filter Cutoff", "Fre\u0301quence"));
    EXPECT_THAT(found("cutoff acme beta"), ElementsAre());
    EXPECT_THAT(found("fr\u00e9q"), ElementsAre("Fre\u0301quence"));
    EXPECT_THAT(found("freq"), ElementsAre("Fre\u0301quence"));
    EXPECT_THAT(found("GROSSE"), ElementsAre("Gr\u00f6\u00dfe"));
    EXPECT_EQ(found("").size(), 4U);
    EXPECT_EQ(found(" \u0301 ").size(), 4U) << "no word";
}

TEST_F(RecordSearchTest, RowsKeepTheirOrderAndTheirContent)
{
    list_.setArrangement(searching({{"Name"}, sortedBy({"Name"}, Qt::DescendingOrder)}));
    EXPECT_THAT(found("u"), ElementsAre("Fre\u0301quence", "Filter Cutoff", "Cutoff"));
    list_.addObjects({{{"Name", std::string("Unison")}, {"Maker", std::string()}}});
    EXPECT_THAT(found("u"), ElementsAre("Unison", "Fre\u0301quence", "Filter Cutoff", "Cutoff"));
    list_.setContent({{{"Name", std::string("Mute")}, {"Maker", std::string()}}});
    EXPECT_THAT(found("u"), ElementsAre("Mute"));
    EXPECT_THAT(found("unison"), ElementsAre());
}

TEST_F(RecordSearchTest, FindsByMoreThanTexts)
{
    Search search{{"Name"}};
    search.findsToo = [](const QString& word) -> std::function<bool(const Record&)> {
        if (word != QLatin1String("x1"))
            return nullptr;
        return [](const Record& record) { return record.text("Maker") == "Beta"; };
    };
    search.stays = [](const ArrayController&, std::size_t row) { return row == 3; };
    list_.setArrangement(searching(std::move(search)));
    EXPECT_THAT(found("x1"), ElementsAre("Cutoff", "Gr\u00f6\u00dfe"));
    EXPECT_THAT(found("X1 cut"), ElementsAre("Cutoff", "Gr\u00f6\u00dfe"));
    EXPECT_THAT(found("x1 filter"), ElementsAre("Gr\u00f6\u00dfe"));
}

TEST_F(RecordSearchTest, TellsWhetherOneRecordHoldsTheWords)
{
    EXPECT_TRUE(holdsWords(content_[0], {"Name", "Maker"}, searchWords("ACME filter")));
    EXPECT_FALSE(holdsWords(content_[0], {"Name"}, searchWords("acme")));
    EXPECT_TRUE(holdsWords(content_[0], {"Name"}, searchWords("")));
}

} // namespace
} // namespace platform::qt
