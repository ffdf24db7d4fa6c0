// The chart as a file beside the plug-in's own.

#include "tests/support/Obstacles.h"
#include "tests/support/WindowlessTest.h"

#include <filesystem>

namespace {

using test::Path;
using test::read;
using testing::ElementsAre;
using testing::IsEmpty;

class ChartFile : public test::WindowlessTest {
protected:
    static Path chartOf(const Path& file) { return file.native() + ".html"; }
};

TEST_F(ChartFile, IsTheWholeDocumentBesideThePluginsFile)
{
    const Path file = edit({"1 Gain"}, "Tom's EQ");
    controller_.kvCreateChart();
    const std::string written = read(chartOf(file));
    EXPECT_EQ(written, chart::bHTML);
    EXPECT_TRUE(written.starts_with(
        "<html><body><h1>MCU Mapping for 'Tom's EQ'</h1><p>File Location: " + file.native() + "</p><style>"));
    EXPECT_TRUE(written.ends_with("<tr><th>Page 1 Encoders</th><td>Gain</td><td>-</td><td>-</td><td>-</td><td>-</td>"
                                  "<td>-</td><td>-</td><td>-</td></tr></table></body></html>"));
    EXPECT_THAT(opened_, ElementsAre(chartOf(file)));
    EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(ChartFile, ReplacesAnEarlierOne)
{
    const Path file = edit({"1 Gain"});
    test::write(chartOf(file), std::string(100'000, 'x'));
    controller_.kvCreateChart();
    EXPECT_EQ(read(chartOf(file)), chart::bHTML);
}

TEST_F(ChartFile, HoldsEveryPageWhicheverIsShown)
{
    const Path file = edit(test::numbered(17));
    controller_.lastPageButtonPressed();
    controller_.outputChartAs("anything");
    const std::string written = read(chartOf(file));
    const auto first = written.find("<th>Page 1 Encoders</th>");
    const auto second = written.find("<th>Page 2 Encoders</th>");
    const auto third = written.find("<th>Page 3 Encoders</th>");
    ASSERT_NE(third, std::string::npos);
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
    EXPECT_EQ(written.find("<th>Page 4 Encoders</th>"), std::string::npos);
}

TEST_F(ChartFile, IsNotWrittenWhereANameIsNotAsciiAndTheEarlierOneIsGone)
{
    const Path file = edit({"1 \xC3\x89"
                            "cho"});
    test::write(chartOf(file), "earlier");
    controller_.kvCreateChart();
    EXPECT_FALSE(std::filesystem::exists(chartOf(file)));
    EXPECT_THAT(opened_, ElementsAre(chartOf(file)));
    EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(ChartFile, ThatCannotBeWrittenTakesTheEarlierOneAway)
{
    const Path file = edit({"1 Gain"});
    test::write(chartOf(file), "of another mapping");
    {
        const test::FullDisk disk(100);
        controller_.kvCreateChart();
    }
    EXPECT_FALSE(std::filesystem::exists(chartOf(file)));
    EXPECT_THAT(opened_, ElementsAre(chartOf(file)));
}

TEST_F(ChartFile, ThatCannotBeWrittenIsOpenedAllTheSame)
{
    const Path file = edit({"1 Gain"});
    std::filesystem::create_directory(chartOf(file));
    controller_.kvCreateChart();
    EXPECT_THAT(opened_, ElementsAre(chartOf(file)));
    EXPECT_THAT(alerts_, IsEmpty());
}

} // namespace
