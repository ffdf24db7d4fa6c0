#include "tests/support/WindowTest.h"

#include "chart/ChartState.h"
#include "platform/files/FileUrl.h"

#include <QDesktopServices>
#include <QUrl>

using testing::ElementsAre;
using testing::HasSubstr;

namespace test {

class ChartWindowTest : public WindowTest {
protected:
    void load(const std::string& plugin, const Texts& order)
    {
        writeDictionary(builtIn(plugin), orderFile(order));
        launch();
        select(plugin);
    }

    Path chartOf(const std::string& plugin) const { return builtIn(plugin).native() + ".html"; }

    static std::size_t count(const std::string& text, const std::string& part)
    {
        std::size_t found = 0;
        for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++found;
        return found;
    }
};

TEST_F(ChartWindowTest, TheChartIsWrittenBesideTheFileAndOpened)
{
    load("Synth", {"1 A & B", "2 Two"});
    click("kvCreateChart");
    EXPECT_THAT(workspace_.opened, ElementsAre(chartOf("Synth")));
    EXPECT_EQ(read(chartOf("Synth")),
              "<html><body><h1>MCU Mapping for 'Synth'</h1><p>File Location: " + builtIn("Synth").native() +
                  "</p><style>table {width:100%; border: solid 1px;text-align:left;background-color:grey;} table "
                  "th{font-size:85%;background-color:lime;} table "
                  "td{font-size:85%;text-align:center;height:50px;width:10%;background-color:white;} "
                  "</style><table><tr><th>Section</th><th style='text-align:center;'>Pot 1</th><th "
                  "style='text-align:center;'>Pot 2</th><th style='text-align:center;'>Pot 3</th><th "
                  "style='text-align:center;'>Pot 4</th><th style='text-align:center;'>Pot 5</th><th "
                  "style='text-align:center;'>Pot 6</th><th style='text-align:center;'>Pot 7</th><th "
                  "style='text-align:center;'>Pot 8</th></tr><tr><th>Page 1 Encoders</th><td>A & "
                  "B</td><td>Two</td><td>-</td><td>-</td><td>-</td><td>-</td><td>-</td><td>-</td></tr></table></body></"
                  "html>");
}

TEST_F(ChartWindowTest, EveryPageHasItsRowWhicheverIsShown)
{
    load("Synth", numbered(24));
    for (const char* button : {"firstPageButtonPressed", "nextPageButtonPressed", "lastPageButtonPressed"}) {
        click(button);
        EXPECT_EQ(count(chart::bHTML, "<tr>"), 4U);
        const auto one = chart::bHTML.find("<th>Page 1 Encoders</th><td>Knob 1</td>");
        const auto two = chart::bHTML.find("<th>Page 2 Encoders</th><td>Knob 9</td>");
        const auto three = chart::bHTML.find("<th>Page 3 Encoders</th><td>Knob 17</td>");
        EXPECT_LT(one, two);
        EXPECT_LT(two, three);
        EXPECT_NE(three, std::string::npos);
    }
}

TEST_F(ChartWindowTest, AnApostropheStaysAsItIs)
{
    load("Bob's Synth", {"1 One"});
    EXPECT_THAT(chart::bHTML, HasSubstr("<h1>MCU Mapping for 'Bob's Synth'</h1>"));
}

TEST_F(ChartWindowTest, AnEarlierChartIsReplaced)
{
    load("Synth", {"1 One"});
    write(chartOf("Synth"), std::string(100000, 'x'));
    click("kvCreateChart");
    EXPECT_EQ(read(chartOf("Synth")), chart::bHTML);
}

TEST_F(ChartWindowTest, WhatAsciiCannotHoldIsNotWrittenAndTheEarlierChartIsGone)
{
    load("Synth", {"1 Frequ\u00e9nce"});
    write(chartOf("Synth"), "earlier");
    const auto alerts = alertsOf([this] { click("kvCreateChart"); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_FALSE(std::filesystem::exists(chartOf("Synth")));
    EXPECT_THAT(workspace_.opened, ElementsAre(chartOf("Synth"))) << "asked for all the same";
}

TEST_F(ChartWindowTest, AFolderThatIsGoneIsAskedForAllTheSame)
{
    load("Synth", {"1 One"});
    std::filesystem::remove_all(builtIn("Synth").parent_path());
    const auto alerts = alertsOf([this] { click("kvCreateChart"); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_FALSE(std::filesystem::exists(chartOf("Synth")));
    EXPECT_THAT(workspace_.opened, ElementsAre(chartOf("Synth")));
}

TEST_F(ChartWindowTest, TheChartIsThatOfTheMappingAsItStands)
{
    load("Synth", numbered(8));
    pressPot(1);
    click("kvCreateChart");
    EXPECT_THAT(read(chartOf("Synth")), HasSubstr("<th>Page 1 Encoders</th><td>-</td><td>Knob 2</td>"));
}

// What the desktop is asked to open.
class OpenedUrl final : public QObject {
    Q_OBJECT

public:
    OpenedUrl() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "remember"); }
    ~OpenedUrl() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    std::vector<QUrl> urls;

public Q_SLOTS:
    void remember(const QUrl& url) { urls.push_back(url); }
};

TEST(DesktopWorkspaceTest, APathBecomesAFileUrlThatNamesIt)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/tmp/plain.html", "file:///tmp/plain.html"},
        {"/a b/it's \"q\".html", "file:///a%20b/it%27s%20%22q%22.html"},
        {"/50%20#1?.html", "file:///50%2520%231%3F.html"},
        {"/\u00c9cho/\U0001f30a.html", "file:///%C3%89cho/%F0%9F%8C%8A.html"},
        {"/a;b:c&d=e+f.html", "file:///a%3Bb%3Ac%26d%3De%2Bf.html"},
    };
    OpenedUrl opened;
    platform::qt::DesktopWorkspace workspace;
    for (const auto& [path, url] : cases) {
        opened.urls.clear();
        workspace.openFile(path);
        ASSERT_EQ(opened.urls.size(), 1U) << path;
        EXPECT_EQ(platform::fileUrl(path), url);
        EXPECT_EQ(opened.urls[0].toLocalFile().toStdString(), path);
    }
}

} // namespace test

#include "ChartWindowTest.moc"
