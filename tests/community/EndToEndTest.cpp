// The whole way against the real server: account, login, restart, upload, listing, download, load, save.

#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTreeView>

namespace {

namespace fs = std::filesystem;

class EndToEnd : public test::WindowTest {
protected:
    void SetUp() override
    {
        server_.start(QStringLiteral(KV_COMMUNITY_SERVER),
                      {QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--data"),
                       QString::fromStdString((home_.path() / "server").native())});
        ASSERT_TRUE(server_.waitForReadyRead(10'000)) << server_.errorString().toStdString();
        test::setBaseUrl(server_.readLine().trimmed().toStdString());
        file_ = home_.addPlugin("Maker", "Écho & <Co> 100%", {"0 Cutoff", "1 Resonance"});
    }
    void TearDown() override
    {
        server_.terminate();
        EXPECT_TRUE(server_.waitForFinished(10'000));
        EXPECT_EQ(server_.exitCode(), 0);
    }

    const std::string& lastReply() const { return alerts_.shown().back().informativeText; }
    std::string listed(int row, int column) const
    {
        const auto* model = find<QTreeView>("cwinPlistAvailable")->model();
        return model->index(row, column).data().toString().toStdString();
    }

    fs::path file_;
    QProcess server_;
    test::AlertAnswers alerts_;
};

TEST_F(EndToEnd, SharesAMappingAndLoadsItBack)
{
    launch();
    EXPECT_EQ(text("labLoggedInAs"), "Not Logged In");

    click("kvLoginToCloudAccount");
    fill("cwinUserNameNew", "Ada Ö");
    fill("cwinEmailAddrNew", "ada@example.org");
    click("cwinNewUserCreate");
    ASSERT_EQ(alerts_.shown().back().text, "Create New User Response");
    const std::size_t digits = lastReply().find_first_of("0123456789");
    ASSERT_NE(digits, std::string::npos) << lastReply();
    const std::string pin = lastReply().substr(digits, lastReply().find_first_not_of("0123456789", digits) - digits);

    fill("cwinUserName", "Ada Ö");
    fill("cwinPinCode", pin + "0");
    click("cwinLoginAttempt");
    EXPECT_EQ(alerts_.shown().back().text, "Login failed");
    fill("cwinPinCode", pin);
    click("cwinLoginAttempt");
    EXPECT_EQ(text("labLoggedInAs"), "Logged in as Ada Ö");

    launch();
    EXPECT_EQ(text("labLoggedInAs"), "Logged in as Ada Ö");

    select("Écho & <Co> 100%");
    controller().arrayControllerPlistSelected()->setSelectionIndex(2);
    click("kvRotaryBtn4");
    click("kvExportToPlist");
    const std::string shared = test::read(file_);
    click("kv_btn_cloudLibrary");
    fill("cwinUploadComments", "première <b>version</b>\n50% \"dry\"");
    click("kvCommunityUploadBtn");
    ASSERT_EQ(alerts_.shown().back().text, "Upload notification");
    EXPECT_NE(lastReply().find("now shared"), std::string::npos) << lastReply();

    click("kvRecallOriginalMapping");
    EXPECT_EQ(text("kvControl4"), "-");
    click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(text("cwinUploadedComments"), "première <b>version</b>\n50% \"dry\"");
    EXPECT_EQ(listed(0, 1), "0"); // downloads
    EXPECT_EQ(listed(0, 3), "Ada Ö");
    const std::size_t alerts = alerts_.shown().size();
    click("kvCommunityLoadSelectedDownload");
    ASSERT_TRUE(test::waitUntil([&] { return alerts_.shown().size() > alerts; }));
    EXPECT_EQ(alerts_.shown().back().text, "OK Done");
    EXPECT_EQ(text("kvControl4"), "Resonance");
    EXPECT_EQ(test::read(file_.native() + ".downloaded"), shared);

    click("kvExportToPlist");
    launch();
    select("Écho & <Co> 100%");
    EXPECT_EQ(text("kvControl4"), "Resonance");
    click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(listed(0, 1), "1");
}

TEST_F(EndToEnd, ServerRefusesWhatIsNoMappingAndWhoHasNoAccount)
{
    launch();
    select("Écho & <Co> 100%");
    controller().kvCommunityUploadBtn();
    EXPECT_EQ(lastReply(), "Please log in before you share a mapping.");
    controller().createNewCloudUserNameAndEmail("Ada", "ada@example.org");
    controller().changeLoginStateAndState("Ada", 1);
    test::write(file_, "nonsense");
    controller().kvCommunityUploadBtn();
    EXPECT_NE(lastReply().find("no mapping"), std::string::npos) << lastReply();
    click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(controller().arrayController_downloadList()->arrangedCount(), 0);
}

} // namespace
