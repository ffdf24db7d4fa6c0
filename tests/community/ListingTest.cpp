#include "community/Listing.h"

#include <gtest/gtest.h>

namespace community {

namespace {

using platform::Record;

TEST(Columns, AreTheCommentsAndWhateverElseTheServerSends)
{
    const std::vector<Record> entries{
        {{"fileLocation", "a"}, {"patchID", "1"}, {"uploadDate", "2024-05-01"}, {"userComments", "one"}},
        {{"downloads", "3"}, {"patchID", "2"}, {"uploadDate", "2024-05-02"}},
    };
    EXPECT_EQ(columnsOf(entries), (std::vector<Column>{
                                      {"userComments", "Comments"},
                                      {"uploadDate", "Upload Date"},
                                      {"downloads", "Downloads"},
                                  }));
    EXPECT_EQ(columnsOf({}), (std::vector<Column>{{"userComments", "Comments"}}));
}

TEST(Columns, AreBounded)
{
    std::vector<Record> entries;
    for (int i = 0; i < 1000; ++i)
        entries.push_back({{"key" + std::to_string(i), "x"}});
    EXPECT_EQ(columnsOf(entries).size(), 24u);
}

TEST(Titles, ReadLikeWords)
{
    EXPECT_EQ(readableTitle("uploader"), "Uploader");
    EXPECT_EQ(readableTitle("uploadDate"), "Upload Date");
    EXPECT_EQ(readableTitle("upload_date"), "Upload Date");
    EXPECT_EQ(readableTitle("patchURL"), "Patch URL");
    EXPECT_EQ(readableTitle("URLOfPatch"), "URL Of Patch");
    EXPECT_EQ(readableTitle("__a--b "), "A B");
    EXPECT_EQ(readableTitle("größe"), "Größe");
    EXPECT_EQ(readableTitle("_"), "_");
    EXPECT_EQ(readableTitle(""), "");
}

TEST(Entries, TellAbsentFromEmpty)
{
    const Record entry{{"patchID", ""}, {"count", 3}};
    EXPECT_EQ(textOf(&entry, "patchID"), "");
    EXPECT_EQ(textOf(&entry, "fileLocation"), std::nullopt);
    EXPECT_EQ(textOf(&entry, "count"), std::nullopt);
    EXPECT_EQ(textOf(nullptr, "patchID"), std::nullopt);
}

} // namespace

} // namespace community
