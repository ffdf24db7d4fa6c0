// Sharing, browsing and loading, in the real windows against a scripted server.

#include "community/Requests.h"
#include "mapping/EditingState.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>

namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using test::ScriptedPeer;
using test::ShownAlert;
namespace fs = std::filesystem;

const ShownAlert kLoaded{"OK Done",
                         "Loaded cloud file into interface memory, please remember to save if you wish to make this "
                         "your new default mapping"};
const ShownAlert kNothingSelected{
    "No plist selected", "Please select an item from the list before attempting to load into the current view"};

constexpr char kTwoEntries[] = R"([
    {"patchID": 42, "fileLocation": "files/one.plist", "userComments": "first <b>one</b>", "uploader": "Ada"},
    7,
    {"patchID": "b", "fileLocation": "files/the second.plist", "userComments": "second", "uploadDate": "2024-05-01"}
])";

class Sharing : public test::WindowTest {
protected:
    Sharing() : WindowTest(platform::qt::HttpLimits{2s, 2s, 1 << 20, 1 << 20})
    {
        test::setBaseUrl(peer_.url());
        first_ = home_.addPlugin("Maker", "A One", {"0 Cutoff", "1 Resonance", "-1", "2 Drive"});
        second_ = home_.addPlugin("Maker", "B Two", {"5 Mix"});
        peer_.play(test::reply("no"));
        launch();
        select("A One");
    }

    void browse(const std::string& listing)
    {
        peer_.play(test::reply(listing));
        click("kv_btn_cloudLibraryDownload");
    }
    /// The registration's reply, then the file.
    void playFile(std::string reply)
    {
        peer_.play(test::reply("counted"));
        peer_.play(std::move(reply));
    }
    bool waitForAlerts(std::size_t count)
    {
        return test::waitUntil([&] { return alerts_.shown().size() >= count; });
    }
    QTreeView* list() const { return find<QTreeView>("cwinPlistAvailable"); }
    std::string cell(int row, int column) const
    {
        return list()->model()->index(row, column).data().toString().toStdString();
    }
    bool isOpen(const char* window) const { return find<QWidget>(window)->isVisible(); }
    static fs::path downloaded(const fs::path& file) { return file.native() + ".downloaded"; }
    std::string pot(int number) const { return text(("kvControl" + std::to_string(number)).c_str()); }

    fs::path first_;
    fs::path second_;
    ScriptedPeer peer_;
    test::AlertAnswers alerts_;
};

TEST_F(Sharing, UploadSendsTheFileAsSavedUnderTheNameLoggedIn)
{
    controller().changeLoginStateAndState("Ada L", 1);
    const std::string saved = test::read(first_);
    click("newPageButtonPressed"); // an edit that is not saved
    click("kv_btn_cloudLibrary");
    EXPECT_TRUE(isOpen("cwinUploadWindow"));
    fill("cwinUploadComments", "très bien & ok\n100%");
    bool wasOpenDuringAlert = false;
    alerts_.whileOpen = [&] { wasOpenDuringAlert = isOpen("cwinUploadWindow"); };
    peer_.play(test::reply("<b>thanks</b>", "500 Oops"));
    click("kvCommunityUploadBtn");
    EXPECT_EQ(peer_.requestLines().back(),
              "POST /kv_upload.php?user=Ada%20L&plugin=A%20One&comments=tr%C3%A8s%20bien%20&%20ok%0A100%25");
    const std::string request = peer_.requests().back();
    EXPECT_EQ(request.substr(request.find("\r\n\r\n") + 4), community::uploadBody(saved));
    EXPECT_NE(request.find("\r\nContent-Length: " + std::to_string(saved.size() + 252) + "\r\n"), std::string::npos);
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Upload notification", "<b>thanks</b>"})});
    EXPECT_TRUE(wasOpenDuringAlert);
    EXPECT_FALSE(isOpen("cwinUploadWindow"));
    EXPECT_EQ(text("cwinUploadComments"), "très bien & ok\n100%");
    EXPECT_EQ(mapping::totalPages, 2);
    EXPECT_EQ(test::read(first_), saved);
}

TEST_F(Sharing, UploadOfNobodyAndOfAMissingFile)
{
    fs::remove(first_);
    controller().kvCommunityLibrary();
    click("kvCommunityUploadBtn"); // the peer hangs up
    EXPECT_EQ(peer_.requestLines().back(), "POST /kv_upload.php?user=NOONEHERE&plugin=A%20One&comments=");
    EXPECT_NE(peer_.requests().back().find("\r\nContent-Length: 252\r\n"), std::string::npos);
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Upload notification", ""})});
    EXPECT_FALSE(isOpen("cwinUploadWindow"));
}

TEST_F(Sharing, LongReplyIsShownWholeOnAnAlertThatFitsOnTheScreen)
{
    std::string page = "<html>";
    for (int i = 0; i < 500; ++i)
        page += "\n<p>An error page</p>";
    int height = 0;
    bool isButtonOnScreen = false;
    alerts_.whileOpen = [&] {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        const QAbstractButton* button = box->buttons().front();
        height = box->height();
        isButtonOnScreen =
            box->screen()->geometry().contains(button->mapToGlobal(button->rect().center())) && button->isVisible();
    };
    peer_.play(test::reply(page, "500 Oops"));
    controller().kvCommunityUploadBtn();
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Upload notification", page})});
    EXPECT_GT(height, 100);
    EXPECT_TRUE(isButtonOnScreen);
}

TEST_F(Sharing, ReplyWithoutABlankCanBeReadToItsEnd)
{
    bool isScrolled = false;
    alerts_.whileOpen = [&] {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        const auto* text = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
        const auto* area = box->findChild<QScrollArea*>();
        isScrolled = area && text && area->isAncestorOf(text) && area->horizontalScrollBar()->maximum() > 0 &&
                     text->width() >= text->minimumSizeHint().width();
    };
    const std::string reply(300, 'x');
    peer_.play(test::reply(reply));
    controller().kvCommunityUploadBtn();
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Upload notification", reply})});
    EXPECT_TRUE(isScrolled);
}

TEST_F(Sharing, CommentsGoOutAsTheyWereTyped)
{
    peer_.play(test::reply("thanks"));
    fill("cwinUploadComments", "bien\u00a0!\nx");
    controller().kvCommunityUploadBtn();
    EXPECT_TRUE(peer_.requestLines().back().ends_with("&comments=bien%C2%A0!%0Ax")) << peer_.requestLines().back();
}

TEST_F(Sharing, BrowsingListsTheEntriesInTheServersOrder)
{
    browse(kTwoEntries);
    EXPECT_EQ(peer_.requestLines().back(), "POST /kv_listplists.php?plugin=A%20One");
    EXPECT_TRUE(isOpen("cwinDownloadWindow"));
    const QAbstractItemModel* model = list()->model();
    ASSERT_EQ(model->rowCount(), 2);
    ASSERT_EQ(model->columnCount(), 3);
    const auto title = [model](int column) { return model->headerData(column, Qt::Horizontal).toString(); };
    EXPECT_EQ(title(0), QStringLiteral("Comments"));
    EXPECT_EQ(title(1), QStringLiteral("Uploader"));
    EXPECT_EQ(title(2), QStringLiteral("Upload Date"));
    EXPECT_EQ(cell(0, 0), "first <b>one</b>");
    EXPECT_EQ(cell(0, 1), "Ada");
    EXPECT_EQ(cell(1, 0), "second");
    EXPECT_EQ(cell(1, 2), "2024-05-01");
    EXPECT_EQ(controller().arrayController_downloadList()->selectionIndex(), 0);
    EXPECT_EQ(text("cwinUploadedComments"), "first <b>one</b>");

    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualRect(model->index(1, 0)).center());
    EXPECT_EQ(text("cwinUploadedComments"), "second");
}

TEST_F(Sharing, BrowsingReplacesTheList)
{
    browse(kTwoEntries);
    browse(R"([{"patchID": 3, "userComments": "only"}])");
    ASSERT_EQ(list()->model()->rowCount(), 1);
    EXPECT_EQ(list()->model()->columnCount(), 1);
    EXPECT_EQ(text("cwinUploadedComments"), "only");
}

TEST_F(Sharing, BrowsingOpensTheWindowWhateverComesBack)
{
    for (const char* listing : {"[]", "", "<html>", "{\"patchID\": 1}", "[1, \"x\"]", "[{\"patchID\": 1}\xff]"}) {
        browse(kTwoEntries);
        find<QWidget>("cwinDownloadWindow")->close();
        browse(listing);
        EXPECT_TRUE(isOpen("cwinDownloadWindow")) << listing;
        EXPECT_EQ(list()->model()->rowCount(), 0) << listing;
        EXPECT_EQ(text("cwinUploadedComments"), "") << listing;
    }
    browse(kTwoEntries);
    click("kv_btn_cloudLibraryDownload"); // the peer hangs up
    EXPECT_EQ(list()->model()->rowCount(), 0);
    EXPECT_TRUE(alerts_.shown().empty());
}

TEST_F(Sharing, LoadWithNothingSelectedSaysSo)
{
    browse("[]");
    const std::size_t requests = peer_.requests().size();
    test::write(downloaded(first_), "stays");
    click("kvCommunityLoadSelectedDownload");
    EXPECT_EQ(alerts_.shown(), std::vector{kNothingSelected});
    test::runFor(50);
    EXPECT_EQ(peer_.requests().size(), requests);
    EXPECT_EQ(test::read(downloaded(first_)), "stays");
}

TEST_F(Sharing, LoadFetchesAndShowsTheMapping)
{
    const std::string before = test::read(first_);
    browse(kTwoEntries);
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {},
                      list()->visualRect(list()->model()->index(1, 0)).center());
    const std::string shared = test::orderBytes({"2 Drive", "1 Resonance"});
    playFile(test::reply(shared));
    controller().arrayControllerPlistSelected()->setSelectionIndex(2);
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_EQ(alerts_.shown(), std::vector{kLoaded});
    const Lines lines = peer_.requestLines();
    EXPECT_EQ(Lines(lines.end() - 2, lines.end()),
              (Lines{"POST /kv_downloadreg.php?patchID=b", "GET /files/the%20second.plist"}));
    EXPECT_EQ(test::read(downloaded(first_)), shared); // read, not marked
    EXPECT_EQ(test::read(first_), before);
    EXPECT_EQ(pot(1), "Drive");
    EXPECT_EQ(pot(2), "Resonance");
    EXPECT_EQ(controller().arrayControllerPlistSelected()->selectionIndex(), 0);
    EXPECT_EQ(log_.linesWith("downloadDidFinish"), Lines{"downloadDidFinish"});
    EXPECT_TRUE(isOpen("cwinDownloadWindow"));

    click("kvExportToPlist");
    EXPECT_NE(test::read(first_), before);
    select("B Two");
    select("A One");
    EXPECT_EQ(pot(1), "Drive");
}

TEST_F(Sharing, LoadSendsANumberInItsDigits)
{
    browse(R"([{"patchID": 9007199254740993, "fileLocation": "a"}])");
    playFile(test::reply("x"));
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_EQ(peer_.requestLines()[2], "POST /kv_downloadreg.php?patchID=9007199254740993");
}

TEST_F(Sharing, LoadTwiceFetchesTwice)
{
    browse(kTwoEntries);
    playFile(test::reply(test::orderBytes({"1 Old"})));
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_EQ(pot(1), "Old");
    bool wasGone = false;
    peer_.play(test::reply("counted"));
    peer_.play([&](ScriptedPeer::Connection& connection) {
        wasGone = !fs::exists(downloaded(first_));
        connection.send(test::reply(test::orderBytes({"1 New"})));
    });
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(waitForAlerts(2));
    EXPECT_TRUE(wasGone);
    EXPECT_EQ(pot(1), "New");
}

TEST_F(Sharing, FailedFetchIsOnlyLogged)
{
    browse(kTwoEntries);
    peer_.play(test::reply("counted"));
    peer_.play("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\ncut off");
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(test::waitUntil([&] { return !log_.linesWith("Download failed").empty(); }));
    const Lines logged = log_.linesWith("Download failed! Error - ");
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_TRUE(logged.front().ends_with(" " + peer_.url() + "files/one.plist")) << logged.front();
    EXPECT_GT(logged.front().size(), std::string("Download failed! Error -  ").size() + peer_.url().size() + 15);
    EXPECT_EQ(peer_.requestLines()[2], "POST /kv_downloadreg.php?patchID=42");
    test::runFor(50);
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_EQ(pot(1), "Cutoff");
    EXPECT_FALSE(fs::exists(downloaded(first_)));
    EXPECT_TRUE(log_.linesWith("downloadDidFinish").empty());
}

TEST_F(Sharing, FetchIntoAFolderThatIsGoneIsOnlyLogged)
{
    browse(kTwoEntries);
    fs::remove_all(first_.parent_path());
    playFile(test::reply("x"));
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(test::waitUntil([&] { return !log_.linesWith("Download failed").empty(); }));
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_EQ(peer_.requestLines()[2], "POST /kv_downloadreg.php?patchID=42");
    EXPECT_EQ(pot(1), "Cutoff");
}

TEST_F(Sharing, ErrorPageIsLoadedAsAnUnreadableFile)
{
    browse(kTwoEntries);
    playFile(test::reply("<h1>Not Found</h1>", "404 Not Found"));
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_EQ(alerts_.shown(), std::vector{kLoaded});
    EXPECT_EQ(test::read(downloaded(first_)), "<h1>Not Found</h1>");
    EXPECT_EQ(pot(1), "-");
    EXPECT_EQ(mapping::totalPages, 1);
}

TEST_F(Sharing, AnotherPluginChosenMeanwhileDecidesWhatIsLoaded)
{
    browse(kTwoEntries);
    peer_.play(test::reply("counted"));
    peer_.play([](ScriptedPeer::Connection& connection) {
        connection.wait(200ms);
        connection.send(test::reply(test::orderBytes({"1 Late"})));
    });
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(test::waitUntil([&] { return system_.http.downloadProgress.get().running == 1; }));
    select("B Two");
    EXPECT_FALSE(isOpen("cwinDownloadWindow"));
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_EQ(alerts_.shown(), std::vector{kLoaded});
    EXPECT_TRUE(fs::exists(downloaded(first_)));
    EXPECT_FALSE(fs::exists(downloaded(second_)));
    EXPECT_EQ(pot(1), "-"); // the second plug-in has no downloaded file
}

TEST_F(Sharing, CompletionWaitsForTheAlertThatIsOpen)
{
    browse(kTwoEntries);
    playFile(test::reply(test::orderBytes({"1 Late"})));
    click("kvCommunityLoadSelectedDownload");
    alerts_.patience = 100;
    std::string potDuringHelp;
    alerts_.whileOpen = [&] { potDuringHelp = potDuringHelp.empty() ? pot(1) : potDuringHelp; };
    click("kvHelpMe");
    EXPECT_EQ(system_.http.downloadProgress.get().running, 0);
    EXPECT_EQ(alerts_.shown().size(), 1u);
    EXPECT_EQ(potDuringHelp, "Cutoff");
    EXPECT_TRUE(waitForAlerts(2));
    EXPECT_EQ(alerts_.shown().back(), kLoaded);
    EXPECT_EQ(pot(1), "Late");
}

TEST_F(Sharing, DownloadWindowShowsTheProgress)
{
    browse(kTwoEntries);
    auto* bar = find<QProgressBar>("downloadProgress");
    EXPECT_FALSE(bar->isVisible());
    peer_.play(test::reply("counted"));
    peer_.play([](ScriptedPeer::Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8192\r\n\r\n" + std::string(4096, ' '));
        connection.wait(300ms);
        connection.send(std::string(4096, ' '));
    });
    click("kvCommunityLoadSelectedDownload");
    EXPECT_TRUE(test::waitUntil([&] { return bar->isVisible() && bar->value() == 4; }));
    EXPECT_EQ(bar->maximum(), 8);
    EXPECT_TRUE(waitForAlerts(1));
    EXPECT_FALSE(bar->isVisible());
}

TEST_F(Sharing, ChoosingAPluginClosesTheCommunityWindows)
{
    controller().kvLoginToCloudAccount();
    controller().kvCommunityLibrary();
    browse("[]");
    select("B Two");
    for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"})
        EXPECT_FALSE(isOpen(window)) << window;
}

TEST_F(Sharing, FiveThousandEntriesAreListed)
{
    std::string listing = "[{}";
    for (int i = 1; i < 5000; ++i) {
        const std::string number = std::to_string(i);
        listing.append(",{\"patchID\":").append(number).append(",\"fileLocation\":\"files/").append(number);
        listing.append("\",\"userComments\":\"A comment of some length, number ").append(number);
        listing.append("\",\"uploader\":\"Ada\",\"uploadDate\":\"2024-05-01\",\"downloads\":").append(number + "}");
    }
    peer_.play(test::reply(listing + "]"));
    click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(list()->model()->rowCount(), 5000);
    EXPECT_EQ(list()->model()->columnCount(), 4);
}

TEST_F(Sharing, LongAndManyLinedCommentsStayWholeInTheList)
{
    std::string listing = R"([{"userComments": "one\ntwo\nthree)";
    listing.append(100'000, 'x').append(R"("}, {"userComments": "short"}])");
    browse(listing);
    QApplication::processEvents();
    EXPECT_EQ(cell(0, 0).substr(0, 13), "one\ntwo\nthree");
    EXPECT_EQ(cell(0, 0).size(), 13 + 100'000u);
    EXPECT_EQ(text("cwinUploadedComments").size(), 13 + 100'000u);
    EXPECT_LT(list()->visualRect(list()->model()->index(0, 0)).height(), 2 * list()->fontMetrics().height());
}

// Before a plug-in has been chosen there is no file to upload and none to load beside.
class SharingWithoutPlugin : public test::WindowTest {
protected:
    SharingWithoutPlugin()
    {
        test::setBaseUrl(peer_.url());
        peer_.play(test::reply("no"));
        fs::current_path(home_.path());
        launch();
    }

    ScriptedPeer peer_;
    test::AlertAnswers alerts_;
};

TEST_F(SharingWithoutPlugin, ListsForAnEmptyName)
{
    peer_.play(test::reply(kTwoEntries));
    click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(peer_.requestLines().back(), "POST /kv_listplists.php?plugin=");
}

TEST_F(SharingWithoutPlugin, LoadDoesNothing)
{
    click("kv_btn_cloudLibraryDownload"); // the peer hangs up
    EXPECT_FALSE(isEnabled("kvCommunityLoadSelectedDownload"));
    controller().kvCommunityLoadSelectedDownload();
    EXPECT_EQ(alerts_.shown(), std::vector{kNothingSelected});
    peer_.play(test::reply(kTwoEntries));
    click("kv_btn_cloudLibraryDownload");
    controller().kvCommunityLoadSelectedDownload();
    test::runFor(50);
    EXPECT_EQ(alerts_.shown().size(), 1u);
    EXPECT_EQ(peer_.requests().size(), 3u);
    EXPECT_FALSE(fs::exists(home_.path() / ".downloaded"));
}

} // namespace
