#include "tools/community_server/Pages.h"

#include "tests/support/OrderFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

namespace pages = community_server::pages;

bool has(std::string_view html, std::string_view part)
{
    return html.find(part) != std::string_view::npos;
}

std::size_t count(std::string_view html, std::string_view part)
{
    std::size_t found = 0;
    for (std::size_t at = html.find(part); at != std::string_view::npos; at = html.find(part, at + 1))
        ++found;
    return found;
}

pages::Mapping shared(const test::Texts& order, std::int32_t most = pages::kPagesInList)
{
    return {7,
            "Echo",
            "Ada",
            "2026-11-22",
            1,
            "Nice & warm",
            "files/ab.plist",
            pages::chartOf(test::orderBytes(order), most)};
}

/// All that a page makes of a text that came from outside, wherever it can come from.
std::vector<std::string> everywhere(const std::string& text)
{
    pages::Mapping mapping = shared({"0 " + text});
    mapping.plugin = mapping.uploader = mapping.date = mapping.comments = mapping.location = text;
    return {pages::pluginList({{text, 1, 2, text}}, 1, text, {1, 3}), pages::plugin(text, {mapping}, 1, {2, 3}),
            pages::mapping(mapping), pages::message(text, text)};
}

TEST(Pages, EscapeWhateverComesFromOutside)
{
    for (const std::string& html : everywhere("<script>alert('1')</script>\"&<img src=x onerror=\"y\">")) {
        EXPECT_FALSE(has(html, "<script")) << html;
        EXPECT_FALSE(has(html, "<img")) << html;
        EXPECT_TRUE(has(html, "&lt;script&gt;")) << html;
        EXPECT_FALSE(has(html, "onerror=\"")) << html;
        EXPECT_FALSE(has(html, "\"&<")) << html;
    }
}

TEST(Pages, HoldNoControlCharacterAndNothingThatIsNoUtf8)
{
    const std::string odd = std::string("a\x01\x1b\x7f\0b", 6) + "\u0085\xff\xed\xa0\x80\uffff";
    for (const std::string& html : everywhere(odd)) {
        EXPECT_TRUE(has(html, "a␁␛␡␀b���") || has(html, "a␁␛␡␀b\u0085")) << html;
        for (const char letter : html)
            EXPECT_TRUE(static_cast<unsigned char>(letter) >= 0x20 || letter == '\n') << html;
        EXPECT_FALSE(has(html, "\xff")) << html;
        EXPECT_FALSE(has(html, "\xed\xa0\x80")) << html;
        EXPECT_FALSE(has(html, "\uffff")) << html;
    }
}

TEST(Pages, EndTheDirectionOfANameWithIt)
{
    const std::string name = "gn\u202Eexe.\u2066x";
    const std::string html = pages::plugin(name, {shared({"0 " + name})}, 1, {});
    EXPECT_TRUE(has(html, "<title>gnexe.x – Community library</title>")) << html;
    EXPECT_TRUE(has(html, "<h1><bdi>" + name + "</bdi></h1>")) << html;
    EXPECT_TRUE(has(html, "<td><bdi>" + name + "</bdi></td>")) << html;
}

TEST(Pages, BreakLinesInCommentsOnly)
{
    pages::Mapping mapping = shared({"0 Cut\noff"});
    mapping.comments = "one\r\ntwo\n\tthree";
    mapping.uploader = "A\nda\t";
    const std::string html = pages::mapping(mapping);
    EXPECT_TRUE(has(html, ">one\ntwo\n\tthree</p>")) << html;
    EXPECT_TRUE(has(html, "<bdi>A da </bdi>")) << html;
    EXPECT_TRUE(has(html, "<bdi>Cut off</bdi>")) << html;
}

TEST(Pages, ShowAPlugInByItsAddress)
{
    const std::string html =
        pages::pluginList({{"Drum & Bass 100% +é", 12, 3, "2026-11-22"}, {"Echo", 1, 1, ""}}, 2, "", {});
    EXPECT_TRUE(
        has(html, "<a href=\"plugin?name=Drum%20%26%20Bass%20100%25%20%2B%C3%A9\"><bdi>Drum &amp; Bass 100% +é</bdi>"))
        << html;
    EXPECT_TRUE(has(html, "2 plug-ins"));
    EXPECT_FALSE(has(html, "class=\"ways\""));
    EXPECT_TRUE(has(pages::pluginList({}, 0, "", {}), "Nothing has been shared yet."));
    EXPECT_TRUE(has(pages::pluginList({}, 0, "x", {}), "No plug-in's name has that in it."));
}

TEST(Pages, KeepTheSearchInTheFieldAndOnTheWayToTheNextPage)
{
    const std::string html = pages::pluginList({{"Echo", 1, 1, ""}}, 101, "a\" &b", {2, 3});
    EXPECT_TRUE(has(html, "value=\"a&quot; &amp;b\"")) << html;
    EXPECT_TRUE(has(html, "href=\"./?search=a%22%20%26b&amp;page=1\">Previous")) << html;
    EXPECT_TRUE(has(html, "Page 2 of 3"));
    EXPECT_TRUE(has(html, "href=\"./?search=a%22%20%26b&amp;page=3\">Next")) << html;
    EXPECT_FALSE(has(pages::plugin("Echo", {}, 1, {1, 2}), "Previous"));
    EXPECT_FALSE(has(pages::plugin("Echo", {}, 1, {2, 2}), "Next"));
    EXPECT_TRUE(has(pages::plugin("A&B", {}, 1, {1, 2}), "href=\"plugin?name=A%26B&amp;page=2\""));
}

TEST(Pages, ShowEightPotsARow)
{
    const auto html =
        pages::mapping(shared({"0 Cutoff", "-1", "2 <Q>", "3 D", "4 E", "5 F", "6 G", "7 H", "8 Second"}));
    EXPECT_EQ(count(html, "<th scope=\"col\">"), 9U);
    EXPECT_EQ(count(html, "<th scope=\"row\">"), 2U);
    EXPECT_EQ(count(html, "<td"), 16U);
    EXPECT_TRUE(has(html, "<th scope=\"row\">1</th><td><bdi>Cutoff</bdi></td><td class=\"empty\">–</td>"
                          "<td><bdi>&lt;Q&gt;</bdi></td>"))
        << html;
    EXPECT_TRUE(has(html, "2026-11-22</time> · 1 download · 2 pages"));
    EXPECT_TRUE(has(html, "href=\"files/ab.plist\""));
}

TEST(Pages, SayHowMuchOfALongChartTheyShow)
{
    const test::Texts order = test::numbered(8 * 6);
    EXPECT_EQ(count(pages::plugin("Echo", {shared(order)}, 1, {}), "<th scope=\"row\">"), 4U);
    EXPECT_TRUE(has(pages::plugin("Echo", {shared(order)}, 1, {}), "<a href=\"mapping?id=7\">Show all 6 pages</a>"));
    EXPECT_TRUE(has(pages::mapping(shared(order, 5)), "These are the first 5 of 6 pages."));
    EXPECT_FALSE(has(pages::mapping(shared(order, 6)), "These are the first"));
    pages::Mapping without = shared(order);
    without.chart.reset();
    EXPECT_TRUE(has(pages::plugin("Echo", {without}, 1, {}), "<a href=\"mapping?id=7\">Show the chart</a>"));
    EXPECT_TRUE(has(pages::mapping(without), "There is no chart"));
}

TEST(Pages, HaveNothingThatTheirHeadersForbid)
{
    for (const std::string& html : everywhere("x")) {
        for (const char* forbidden : {"<script", "<style", " style=", " onclick", "javascript:", "http:", "https:"})
            EXPECT_FALSE(has(html, forbidden)) << forbidden << html;
        EXPECT_EQ(count(html, "<h1"), 1U);
        EXPECT_EQ(count(html, "<main>"), 1U);
        EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
    }
}

TEST(Charts, AreOfMappingsOnly)
{
    EXPECT_FALSE(pages::chartOf("nonsense", 4));
    EXPECT_FALSE(pages::chartOf("<plist version=\"1.0\"><dict/></plist>", 4));
    const auto empty = pages::chartOf(test::orderBytes({}), 4);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->pages, 1);
    EXPECT_EQ(empty->table.rows.size(), 1U);
    const auto large = pages::chartOf(test::orderBytes(test::numbered(10'001)), 2);
    ASSERT_TRUE(large);
    EXPECT_EQ(large->pages, 1251);
    EXPECT_EQ(large->table.rows.size(), 2U);
    EXPECT_EQ(large->table.rows[1].back(), "Knob 16");
}

TEST(Places, AreCountedFromOneAndExist)
{
    const struct {
        const char* page;
        std::int64_t rows, asked, pages;
    } cases[] = {{"", 0, 1, 1},    {"1", 50, 1, 1},   {"2", 50, 1, 1},  {"2", 51, 2, 2},
                 {"9", 120, 3, 3}, {"-4", 120, 1, 3}, {"x", 120, 1, 3}, {"99999999999999999999", 120, 1, 3}};
    for (const auto& each : cases) {
        const auto place = pages::placeOf(each.page, each.rows, 50);
        EXPECT_EQ(place.page, each.asked) << each.page;
        EXPECT_EQ(place.pages, each.pages) << each.page;
    }
}

TEST(FormValues, AreDecodedAsFormsEncodeThem)
{
    const std::pair<const char*, const char*> cases[] = {
        {"name=a+b%2Bc%26d", "a b+c&d"},
        {"x=1&name=2&name=3", "2"},
        {"names=1", ""},
        {"name", ""},
        {"name=", ""},
        {"name=%", "%"},
        {"name=%4", "%4"},
        {"name=%zz", "%zz"},
        {"", ""},
        {"name=%ff", ""},
        {"&&name=%C3%A9", "é"},
    };
    for (const auto& [query, value] : cases)
        EXPECT_EQ(pages::formValue(query, "name"), value) << query;
}

} // namespace
