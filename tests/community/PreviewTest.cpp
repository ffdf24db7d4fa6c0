// Looking at a shared mapping in the download window, against a scripted server.

#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>
#include <QTreeView>

#include <atomic>
#include <iterator>
#include <optional>

namespace {

using namespace std::chrono_literals;
using test::ScriptedPeer;
using testing::HasSubstr;
using testing::StartsWith;
using Connection = ScriptedPeer::Connection;
using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr char kTwoToPreview[] = R"([
    {"patchID": 42, "fileLocation": "files/one.plist", "userComments": "first"},
    {"patchID": 43, "fileLocation": "files/the second.plist", "userComments": "second"}
])";
constexpr char kEmptyState[] = "Select a mapping and press \u201cPreview\u201d to look at it without loading it.";
constexpr char kFetching[] = "Fetching the mapping\u2026";

class Preview : public test::WindowTest {
protected:
    Preview() : WindowTest(platform::qt::HttpLimits{2s, 2s, 1 << 20, 2000})
    {
        test::setBaseUrl(peer_.url());
        first_ = home_.addPlugin("Maker", "A One", {"0 Cutoff", "1 Resonance", "-1", "2 Drive"});
        home_.addPlugin("Maker", "B Two", {"5 Mix"});
        peer_.play(test::reply("no"));
        launch();
    }

    void browse()
    {
        peer_.play(test::reply(kTwoToPreview));
        click("kv_btn_cloudLibraryDownload");
    }
    void open()
    {
        select("A One");
        browse();
    }
    bool isTableShown() const { return find<QStackedWidget>("sharedPreview")->currentIndex() == 1; }
    std::string hint() const { return isTableShown() ? "the table" : text("previewHint"); }
    /// Previews and waits for what comes of it.
    void preview(std::string reply)
    {
        peer_.play(std::move(reply));
        click("previewShared");
        EXPECT_EQ(hint(), kFetching);
        EXPECT_TRUE(test::waitUntil([this] { return hint() != kFetching; }));
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole) const
    {
        const auto* model = find<QTableView>("previewTable")->model();
        return model->index(row, column).data(role);
    }
    std::string name(int row, int column) const { return cell(row, column).toString().toStdString(); }
    std::size_t filesBeside() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(first_.parent_path()), {}));
    }

    fs::path first_;
    ScriptedPeer peer_;
    test::AlertAnswers alerts_;
};

TEST_F(Preview, ShowsPagesPotsAndWhatIsOfferedAndLeavesNothingBehind)
{
    open();
    EXPECT_EQ(hint(), kEmptyState);
    const std::string before = test::read(first_);
    const std::size_t files = filesBeside();
    const std::size_t requests = peer_.requests().size();
    test::Texts order = {"0 Cutoff", "8 RESONANCE", "9 Air", "-1"};
    order.resize(8, "-1");
    order.push_back("2 <b>Drive</b>");
    auto shared = test::orderFile(order);
    shared.set(test::kMode, platform::plist::Array{"1"});
    preview(test::reply(platform::plist::write({platform::plist::Value(shared), platform::plist::Form::binary})));
    ASSERT_TRUE(isTableShown()) << hint();
    EXPECT_EQ(text("previewSummary"), "Instrument mode \u00b7 2 pages \u00b7 2 of 4 offered here \u00b7 "
                                      "4 pots differ from the mapping being edited");
    const auto* model = find<QTableView>("previewTable")->model();
    EXPECT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->columnCount(), 8);
    EXPECT_EQ(model->headerData(1, Qt::Vertical).toString(), QStringLiteral("Page 2"));
    EXPECT_EQ(model->headerData(7, Qt::Horizontal).toString(), QStringLiteral("Pot 8"));
    EXPECT_EQ(name(0, 0), "Cutoff");
    EXPECT_EQ(name(0, 3), "-");
    EXPECT_EQ(name(1, 0), "<b>Drive</b>");
    EXPECT_EQ(cell(0, 0, Qt::ToolTipRole).toString().toStdString(), "Cutoff");
    EXPECT_EQ(cell(0, 3, Qt::ToolTipRole).toString().toStdString(), "-; in the mapping being edited: Drive");
    EXPECT_EQ(cell(0, 3, Qt::AccessibleTextRole).toString().toStdString(), "-, differs");
    EXPECT_FALSE(cell(0, 3, Qt::DecorationRole).isNull());
    EXPECT_TRUE(cell(0, 0, Qt::DecorationRole).isNull());

    const Lines lines = peer_.requestLines();
    EXPECT_EQ(Lines(lines.begin() + static_cast<std::ptrdiff_t>(requests), lines.end()),
              Lines{"GET /files/one.plist"}); // not registered
    EXPECT_EQ(filesBeside(), files);
    EXPECT_EQ(test::read(first_), before);
    EXPECT_EQ(potLabel(4), "Drive");
    EXPECT_FALSE(controller().history().canUndo());
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_TRUE(log_.linesWith("downloadDidFinish").empty());
}

TEST_F(Preview, FollowsTheMappingThatIsEdited)
{
    open();
    preview(test::reply(test::orderBytes({"0 Cutoff", "1 Resonance", "-1", "2 Drive"})));
    EXPECT_THAT(text("previewSummary"), HasSubstr("no pot differs"));
    chooseParameter("Drive");
    pressPot(1);
    EXPECT_THAT(text("previewSummary"), HasSubstr("1 pot differs from"));
    EXPECT_FALSE(cell(0, 0, Qt::DecorationRole).isNull());
    find<QAction>("undo")->trigger();
    EXPECT_THAT(text("previewSummary"), HasSubstr("no pot differs"));
}

TEST_F(Preview, FailuresAreToldInTheWindow)
{
    open();
    preview(test::reply("<h1>Not Found</h1>", "404 Not Found"));
    EXPECT_EQ(hint(), "The community server refused the mapping (status 404)");
    preview(test::reply(test::orderBytes({"1 Forbidden"}), "403 Forbidden"));
    EXPECT_EQ(hint(), "The community server refused the mapping (status 403)");
    preview(test::reply("<h1>Hello</h1>"));
    EXPECT_EQ(hint(), "What the community server sent is no mapping");
    preview(test::reply(test::orderBytes(test::numbered(200)))); // more than the limit
    EXPECT_THAT(hint(), StartsWith("The mapping could not be fetched: "));
    preview("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\ncut off");
    EXPECT_THAT(hint(), StartsWith("The mapping could not be fetched: "));
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_EQ(potLabel(1), "Cutoff");
    preview(test::reply(test::orderBytes({"1 Late"})));
    EXPECT_TRUE(isTableShown());
}

TEST_F(Preview, AnotherOneReplacesIt)
{
    open();
    peer_.play([](Connection& connection) {
        connection.wait(100ms);
        connection.send(test::reply(test::orderBytes({"1 Former"})));
    });
    click("previewShared");
    EXPECT_EQ(hint(), kFetching);
    EXPECT_TRUE(test::waitUntil([&] { return peer_.requestLines().back() == "GET /files/one.plist"; }));
    clickRow("cwinPlistAvailable", "second");
    EXPECT_EQ(hint(), kEmptyState); // what is fetched is of the other entry
    preview(test::reply(test::orderBytes({"1 Later"})));
    EXPECT_EQ(name(0, 0), "Later");
    test::runFor(200);
    EXPECT_EQ(name(0, 0), "Later");
    EXPECT_EQ(peer_.requestLines().back(), "GET /files/the%20second.plist");
    clickRow("cwinPlistAvailable", "second"); // the same one
    EXPECT_TRUE(isTableShown());
    clickRow("cwinPlistAvailable", "first");
    EXPECT_EQ(hint(), kEmptyState);
}

TEST_F(Preview, ClosingTheWindowGivesItUp)
{
    open();
    std::atomic<bool> hasHungUp = false;
    peer_.play([&](Connection& connection) { hasHungUp = connection.waitForTheEnd(); });
    click("previewShared");
    EXPECT_TRUE(test::waitUntil([&] { return peer_.requestLines().back() == "GET /files/one.plist"; }));
    find<QWidget>("cwinDownloadWindow")->close();
    EXPECT_EQ(system_.http.downloadProgress.get().running, 0);
    EXPECT_TRUE(test::waitUntil([&] { return hasHungUp.load(); }));
    EXPECT_FALSE(find<QAction>("previewShared")->isEnabled());
    browse();
    EXPECT_EQ(hint(), kEmptyState);
    EXPECT_TRUE(find<QAction>("previewShared")->isEnabled());
}

TEST_F(Preview, WhatWasFetchedIsNotShownOnceItWasGivenUp)
{
    open();
    peer_.play(test::reply(test::orderBytes({"1 Late"})));
    click("previewShared");
    alerts_.patience = 150; // it completes behind the alert
    click("kvHelpMe");
    EXPECT_EQ(system_.http.downloadProgress.get().running, 0);
    controller().endPreview();
    test::runFor(50);
    EXPECT_EQ(hint(), kEmptyState);
}

TEST_F(Preview, WithoutAPluginThereIsNothingToCompareWith)
{
    browse();
    preview(test::reply(test::orderBytes({"1 A"})));
    EXPECT_EQ(text("previewSummary"), "Insert/Effect mode \u00b7 1 page \u00b7 no plug-in is loaded to compare with");
    EXPECT_EQ(name(0, 0), "A");
    EXPECT_TRUE(cell(0, 0, Qt::DecorationRole).isNull());
}

TEST_F(Preview, NeedsAnEntry)
{
    select("A One");
    peer_.play(test::reply("[]"));
    click("kv_btn_cloudLibraryDownload");
    EXPECT_FALSE(isEnabled("previewShared"));
    const std::size_t requests = peer_.requests().size();
    controller().previewShared();
    test::runFor(50);
    EXPECT_EQ(peer_.requests().size(), requests);
    EXPECT_EQ(hint(), kEmptyState);
}

class Fetch : public testing::Test {
protected:
    std::uint64_t start()
    {
        return http_.fetch(peer_.url() + "a", {[this](platform::Reply reply) { replies_.push_back(std::move(reply)); },
                                               [this](const platform::DownloadError& error) { error_ = error; }});
    }

    const test::TemporaryHome home_;
    platform::qt::CompletionGate gate_;
    platform::qt::CurlHttp http_{gate_, {}, {300ms, 300ms, 1000, 1000}};
    ScriptedPeer peer_;
    std::vector<platform::Reply> replies_;
    std::optional<platform::DownloadError> error_;
};

TEST_F(Fetch, HandsOverStatusAndBody)
{
    const std::string body("\0sha\xff", 5);
    peer_.play(test::redirect(302, "/elsewhere"));
    peer_.play(test::reply(body, "201 Created"));
    start();
    EXPECT_TRUE(replies_.empty());
    EXPECT_TRUE(test::waitUntil([&] { return !replies_.empty(); }));
    EXPECT_EQ(replies_.front().status, 201);
    EXPECT_EQ(replies_.front().body, body);
}

TEST_F(Fetch, FailsBeyondTheLimit)
{
    peer_.play(test::reply(std::string(1001, 'x')));
    start();
    EXPECT_TRUE(test::waitUntil([&] { return error_.has_value(); }));
    EXPECT_TRUE(replies_.empty());
}

TEST_F(Fetch, WaitsItsTurnAndCanBeGivenUpMeanwhile)
{
    std::vector<std::uint64_t> fetches;
    for (int i = 0; i < 5; ++i) {
        if (i < 4)
            peer_.play([](Connection& connection) { connection.waitForTheEnd(); });
        fetches.push_back(start());
    }
    EXPECT_EQ(http_.downloadProgress.get().running, 4);
    http_.giveUp(fetches.back());
    peer_.play(test::reply("turn"));
    const auto last = start();
    EXPECT_TRUE(test::waitUntil([&] { return peer_.requests().size() == 4; }));
    http_.giveUp(fetches.front()); // whose place is taken
    EXPECT_TRUE(test::waitUntil([&] { return !replies_.empty(); }));
    EXPECT_EQ(replies_.front().body, "turn");
    EXPECT_EQ(peer_.requests().size(), 5u);
    http_.giveUp(last); // it has completed
    for (const auto fetch : fetches)
        http_.giveUp(fetch);
    EXPECT_EQ(http_.downloadProgress.get().running, 0);
    test::runFor(50);
    EXPECT_FALSE(error_);
}

} // namespace
