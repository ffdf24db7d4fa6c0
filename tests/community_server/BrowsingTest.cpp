#include "tools/community_server/Browsing.h"

#include "tests/community_server/SharedLibrary.h"

#include <string>

namespace {

using namespace community_server;

class Browsing : public test::SharedLibrary {
protected:
    static bool has(const std::string& html, const std::string& part) { return html.find(part) != std::string::npos; }
    std::string plugins(const std::string& query = "") { return pluginsPage(database_, query); }
    std::string plugin(const std::string& query) { return pluginPage(database_, query).value_or("none"); }
    std::string mapping(const std::string& query) { return mappingPage(database_, query).value_or("none"); }
};

TEST_F(Browsing, ShowsPlugInsByNameWithWhatIsShared)
{
    addAccount("Ada");
    share("Ada", "zither");
    share("Ada", "Drum & Bass");
    share("Ada", "Zebra");
    share("Ada", "zither", "", {"0 Other"});
    Library(database_).countDownload(1);
    const std::string html = plugins();
    EXPECT_LT(html.find("Drum &amp; Bass</bdi>"), html.find("Zebra"));
    EXPECT_LT(html.find("Zebra"), html.find("zither"));
    EXPECT_TRUE(has(html, "3 plug-ins"));
    EXPECT_TRUE(has(html, "<bdi>zither</bdi></a></th><td class=\"number\">2</td><td class=\"number\">1</td>")) << html;
    EXPECT_TRUE(has(plugin("name=Drum+%26+Bass"), "<h1><bdi>Drum &amp; Bass</bdi></h1>"));
}

TEST_F(Browsing, FindsWordsInAnyOrderAndCase)
{
    addAccount("Ada");
    share("Ada", "Wendlebrook EQ");
    share("Ada", "Élan 100%");
    for (const char* search : {"eq", "EQ wendle", "%EF%BC%A5%EF%BC%B1", "+", ""})
        EXPECT_TRUE(has(plugins(std::string("search=") + search), "Wendlebrook EQ</bdi></a>")) << search;
    for (const char* search : {"eq+élan", "eqq", "_", "%25%25"})
        EXPECT_TRUE(has(plugins(std::string("search=") + search), "No plug-in")) << search;
    EXPECT_TRUE(has(plugins("search=%C3%A9LAN"), "Élan 100%</bdi>"));
    EXPECT_TRUE(has(plugins("search=%25"), "Élan 100%</bdi>"));
    EXPECT_FALSE(has(plugins("search=%25"), "Wendlebrook"));
}

TEST_F(Browsing, GoesThroughLongLists)
{
    addAccount("Ada");
    for (int i = 10; i < 61; ++i)
        share("Ada", "Plug-in " + std::to_string(i));
    EXPECT_TRUE(has(plugins(), "Plug-in 59<"));
    EXPECT_FALSE(has(plugins(), "Plug-in 60<"));
    EXPECT_TRUE(has(plugins("page=2"), "Plug-in 60<"));
    EXPECT_FALSE(has(plugins("page=2"), "Plug-in 59<"));
    EXPECT_TRUE(has(plugins("page=77"), "Page 2 of 2"));
    for (int i = 10; i < 21; ++i)
        share("Ada", "Echo", "comment " + std::to_string(i) + ".", {"0 " + std::to_string(i)});
    EXPECT_TRUE(has(plugin("name=Echo"), "comment 20."));
    EXPECT_FALSE(has(plugin("name=Echo"), "comment 10."));
    EXPECT_TRUE(has(plugin("name=Echo&page=2"), "comment 10."));
}

TEST_F(Browsing, ShowsNothingThatTheHostDeleted)
{
    addAccount("Ada");
    share("Ada", "Echo");
    EXPECT_TRUE(has(mapping("id=1"), "Cutoff"));
    Library(database_).setDeleted(1, true);
    EXPECT_EQ(mapping("id=1"), "none");
    EXPECT_EQ(plugin("name=Echo"), "none");
    EXPECT_FALSE(has(plugins(), "Echo"));
    for (const char* query : {"", "id=", "id=x", "id=2", "id=1%20OR%201=1"})
        EXPECT_EQ(mapping(query), "none") << query;
}

TEST_F(Browsing, ReadsNoLargeFileForAList)
{
    addAccount("Ada");
    share("Ada", "Echo", "", test::numbered(6000));
    EXPECT_TRUE(has(plugin("name=Echo"), "<a href=\"mapping?id=1\">Show the chart</a>"));
    EXPECT_TRUE(has(mapping("id=1"), "These are the first 250 of 750 pages."));
}

TEST_F(Browsing, TellsNoEMailAddress)
{
    addAccount("Ada");
    share("Ada", "Echo");
    for (const std::string& html : {plugins(), plugin("name=Echo"), mapping("id=1")})
        EXPECT_FALSE(has(html, "example.org")) << html;
}

} // namespace
