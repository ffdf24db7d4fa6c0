// The whole way against the real server: account, login, restart, upload, listing, download, load, save.

#include "tests/support/Alerts.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryHome.h"
#include "tests/support/TestBaseUrl.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTreeView>

#include <optional>

namespace {

namespace fs = std::filesystem;

class EndToEnd : public testing::Test {
protected:
    void SetUp() override
    {
        server_.start(QStringLiteral(KV_COMMUNITY_SERVER),
                      {QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--data"),
                       QString::fromStdString((home_.path() / "server").native())});
        ASSERT_TRUE(server_.waitForReadyRead(10'000)) << server_.errorString().toStdString();
        support::setBaseUrl(server_.readLine().trimmed().toStdString());
        file_ = home_.addPlugin("Maker", "Écho & <Co> 100%", support::orderFile("0 Cutoff,1 Resonance"));
    }
    void TearDown() override
    {
        server_.terminate();
        EXPECT_TRUE(server_.waitForFinished(10'000));
        EXPECT_EQ(server_.exitCode(), 0);
    }

    void restart()
    {
        program_.reset();
        program_.emplace();
        program_->start();
    }
    const std::string& lastReply() const { return alerts_.shown().back().informativeText; }
    std::string listed(int row, int column) const
    {
        const auto* model = program_->windows.find<QTreeView>("cwinPlistAvailable")->model();
        return model->index(row, column).data().toString().toStdString();
    }

    const support::TemporaryHome home_;
    fs::path file_;
    QProcess server_;
    support::AlertAnswers alerts_;
    std::optional<support::Program> program_;
};

TEST_F(EndToEnd, SharesAMappingAndLoadsItBack)
{
    restart();
    EXPECT_EQ(program_->text("labLoggedInAs"), "Not Logged In");

    program_->click("kvLoginToCloudAccount");
    program_->type("cwinUserNameNew", "Ada Ö");
    program_->type("cwinEmailAddrNew", "ada@example.org");
    program_->click("cwinNewUserCreate");
    ASSERT_EQ(alerts_.shown().back().text, "Create New User Response");
    const std::size_t digits = lastReply().find_first_of("0123456789");
    ASSERT_NE(digits, std::string::npos) << lastReply();
    const std::string pin = lastReply().substr(digits, lastReply().find_first_not_of("0123456789", digits) - digits);

    program_->type("cwinUserName", "Ada Ö");
    program_->type("cwinPinCode", (pin + "0").c_str());
    program_->click("cwinLoginAttempt");
    EXPECT_EQ(alerts_.shown().back().text, "Login failed");
    program_->type("cwinPinCode", pin.c_str());
    program_->click("cwinLoginAttempt");
    EXPECT_EQ(program_->text("labLoggedInAs"), "Logged in as Ada Ö");

    restart();
    EXPECT_EQ(program_->text("labLoggedInAs"), "Logged in as Ada Ö");

    program_->choosePlugin(0);
    program_->controller.arrayControllerPlistSelected()->setSelectionIndex(2);
    program_->click("kvRotaryBtn4");
    program_->click("kvExportToPlist");
    const std::string shared = support::readFile(file_);
    program_->click("kv_btn_cloudLibrary");
    program_->type("cwinUploadComments", "première <b>version</b>\n50% \"dry\"");
    program_->click("kvCommunityUploadBtn");
    ASSERT_EQ(alerts_.shown().back().text, "Upload notification");
    EXPECT_NE(lastReply().find("now shared"), std::string::npos) << lastReply();

    program_->click("kvRecallOriginalMapping");
    EXPECT_EQ(program_->text("kvControl4"), "-");
    program_->click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(program_->text("cwinUploadedComments"), "première <b>version</b>\n50% \"dry\"");
    EXPECT_EQ(listed(0, 1), "0"); // downloads
    EXPECT_EQ(listed(0, 3), "Ada Ö");
    const std::size_t alerts = alerts_.shown().size();
    program_->click("kvCommunityLoadSelectedDownload");
    ASSERT_TRUE(support::waitUntil([&] { return alerts_.shown().size() > alerts; }));
    EXPECT_EQ(alerts_.shown().back().text, "OK Done");
    EXPECT_EQ(program_->text("kvControl4"), "Resonance");
    EXPECT_EQ(support::readFile(file_.native() + ".downloaded"), shared);

    program_->click("kvExportToPlist");
    restart();
    program_->choosePlugin(0);
    EXPECT_EQ(program_->text("kvControl4"), "Resonance");
    program_->click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(listed(0, 1), "1");
}

TEST_F(EndToEnd, ServerRefusesWhatIsNoMappingAndWhoHasNoAccount)
{
    restart();
    program_->choosePlugin(0);
    program_->controller.kvCommunityUploadBtn();
    EXPECT_EQ(lastReply(), "Please log in before you share a mapping.");
    program_->controller.createNewCloudUserNameAndEmail("Ada", "ada@example.org");
    program_->controller.changeLoginStateAndState("Ada", 1);
    support::writeFile(file_, "nonsense");
    program_->controller.kvCommunityUploadBtn();
    EXPECT_NE(lastReply().find("no mapping"), std::string::npos) << lastReply();
    program_->click("kv_btn_cloudLibraryDownload");
    EXPECT_EQ(program_->controller.arrayController_downloadList()->arrangedCount(), 0);
}

} // namespace
