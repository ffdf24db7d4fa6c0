// Logging in and asking for an account, in the real windows against a scripted server.

#include "community/CommunityState.h"
#include "tests/support/Alerts.h"
#include "tests/support/Program.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TemporaryHome.h"
#include "tests/support/TestBaseUrl.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <optional>

namespace {

using Lines = std::vector<std::string>;
using support::ShownAlert;

const ShownAlert kLoginFailed{"Login failed", "Please recheck your sign-in details and try again", 1};

class Account : public testing::Test {
protected:
    Account() { support::setBaseUrl(peer_.url()); }

    void start(const std::string& reply)
    {
        peer_.play(support::reply(reply));
        program_.emplace();
        program_->start();
    }
    void logIn(const char* userName, const char* pin)
    {
        program_->click("kvLoginToCloudAccount");
        program_->type("cwinUserName", userName);
        program_->type("cwinPinCode", pin);
        program_->click("cwinLoginAttempt");
    }
    bool isOpen(const char* window) const { return program_->windows.find<QWidget>(window)->isVisible(); }
    bool canShare() const { return program_->windows.find<QPushButton>("kv_btn_cloudLibrary")->isEnabled(); }
    void expectLoggedIn(const std::string& name) const
    {
        EXPECT_EQ(program_->text("labLoggedInAs"), "Logged in as " + name);
        EXPECT_EQ(community::loggedInAs, name);
        EXPECT_TRUE(canShare());
    }
    void expectLoggedOut() const
    {
        EXPECT_EQ(program_->text("labLoggedInAs"), "Not Logged In");
        EXPECT_EQ(community::loggedInAs, "NOONEHERE");
        EXPECT_FALSE(canShare());
    }
    void expectStored(const std::string& name, const std::string& pin) const
    {
        EXPECT_EQ(program_->preferences.text("uName"), name);
        EXPECT_EQ(program_->preferences.text("uPIN"), pin);
    }

    const support::TemporaryHome home_;
    support::ScriptedPeer peer_;
    support::AlertAnswers alerts_;
    std::optional<support::Program> program_;
};

TEST_F(Account, FirstStartAsksWithNothingAndStaysQuiet)
{
    start("no");
    EXPECT_EQ(peer_.requestLines(), Lines{"POST /checkuser.php?userName=(null)&pinCode=(null)"});
    expectLoggedOut();
    support::runFor(20);
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_EQ(program_->preferences.text("uName"), std::nullopt);
}

TEST_F(Account, StartsAfterTheScan)
{
    const auto plugin = home_.addPlugin("Maker", "Plug-in", support::orderFile("0 A"));
    program_.emplace();
    std::size_t rows = 0;
    const auto connection = program_->controller.labLoggedInAs()->stringValue.onChange(
        [&](const std::string&) { rows = program_->controller.myArrayController()->content().size(); });
    program_->start();
    EXPECT_EQ(rows, 1u);
}

TEST_F(Account, StartLogsInWithWhatIsStored)
{
    platform::UserPreferences(support::Program::kBundleIdentifier).setTexts({{"uName", "Ada L"}, {"uPIN", " 12"}});
    start("\nOK\n");
    EXPECT_EQ(peer_.requestLines(), Lines{"POST /checkuser.php?userName=Ada%20L&pinCode=%2012"});
    expectLoggedIn("Ada L");
}

TEST_F(Account, StartThatIsRefusedKeepsWhatIsStored)
{
    platform::UserPreferences(support::Program::kBundleIdentifier).setTexts({{"uName", "Ada"}, {"uPIN", "1"}});
    start("OK");
    expectLoggedOut();
    expectStored("Ada", "1");
    support::runFor(20);
    EXPECT_TRUE(alerts_.shown().empty());
}

TEST_F(Account, LoginSendsAndStoresWhatWasTyped)
{
    start("no");
    peer_.play(support::reply("\nOK\n"));
    logIn(" Ada L ", "12&3");
    EXPECT_EQ(peer_.requestLines().back(), "POST /checkuser.php?userName=%20Ada%20L%20&pinCode=12&3");
    expectLoggedIn(" Ada L ");
    expectStored(" Ada L ", "12&3");
    EXPECT_FALSE(isOpen("cwinCloudWindow"));
    EXPECT_TRUE(alerts_.shown().empty());
}

TEST_F(Account, OnlyTheExactReplyLogsIn)
{
    start("\nOK\n");
    for (const char* reply : {"OK", "\nOK", "OK\n", "\nOK\n\n", "\nok\n", "<html>\nOK\n</html>", "\nOK\n\xff", ""}) {
        peer_.play(support::reply(reply));
        logIn("Ada", "1");
        expectLoggedOut();
        EXPECT_EQ(alerts_.shown().back(), kLoginFailed);
        EXPECT_TRUE(isOpen("cwinCloudWindow"));
    }
    EXPECT_EQ(alerts_.shown().size(), 8u);
}

TEST_F(Account, FailedLoginLogsOutAndReplacesWhatIsStored)
{
    platform::UserPreferences(support::Program::kBundleIdentifier).setTexts({{"uName", "A"}, {"uPIN", "1"}});
    start("\nOK\n");
    expectLoggedIn("A");
    std::string labelDuringAlert;
    std::string storedDuringAlert;
    alerts_.whileOpen = [&] {
        labelDuringAlert = program_->text("labLoggedInAs");
        storedDuringAlert = program_->preferences.text("uName").value_or("");
    };
    peer_.play(support::reply("wrong", "500 Oops"));
    logIn("B", "2");
    EXPECT_EQ(alerts_.shown(), std::vector{kLoginFailed});
    EXPECT_EQ(labelDuringAlert, "Logged in as A"); // the state changes once the alert is read
    EXPECT_EQ(storedDuringAlert, "B");
    expectLoggedOut();
    expectStored("B", "2");
}

TEST_F(Account, LoginWithoutAServerFails)
{
    start("\nOK\n");
    logIn("Ada", "1"); // the peer has no script left and hangs up
    EXPECT_EQ(alerts_.shown(), std::vector{kLoginFailed});
    expectLoggedOut();
    EXPECT_EQ(peer_.requests().size(), 2u);
}

TEST_F(Account, EmptyFieldsAreSentAndStored)
{
    platform::UserPreferences(support::Program::kBundleIdentifier).setTexts({{"uName", "A"}, {"uPIN", "1"}});
    start("\nOK\n");
    peer_.play(support::reply("no"));
    logIn("", "");
    EXPECT_EQ(peer_.requestLines().back(), "POST /checkuser.php?userName=&pinCode=");
    EXPECT_EQ(alerts_.shown(), std::vector{kLoginFailed});
    expectStored("", "");
}

TEST_F(Account, SecondLoginSwitchesAccounts)
{
    start("no");
    for (const char* name : {"A", "B"}) {
        peer_.play(support::reply("\nOK\n"));
        logIn(name, "1");
        expectLoggedIn(name);
        EXPECT_FALSE(isOpen("cwinCloudWindow"));
    }
    EXPECT_TRUE(alerts_.shown().empty());
}

TEST_F(Account, OnlyStateOneIsLoggedIn)
{
    start("no");
    for (const int state : {0, 2, -1}) {
        program_->controller.changeLoginStateAndState("Ada", 1);
        expectLoggedIn("Ada");
        program_->controller.changeLoginStateAndState("Ada", state);
        expectLoggedOut();
    }
}

TEST_F(Account, NewAccountShowsTheReplyAndNothingElseHappens)
{
    start("no");
    peer_.play(support::reply("<b>Welcome</b> é\nPIN 1234", "403 Forbidden"));
    program_->click("kvLoginToCloudAccount");
    program_->type("cwinUserNameNew", "Ada L");
    program_->type("cwinEmailAddrNew", "ada+x@example.org");
    program_->click("cwinNewUserCreate");
    EXPECT_EQ(peer_.requestLines().back(), "POST /checkuserexists.php?userName=Ada%20L&emailAddr=ada+x@example.org");
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Create New User Response", "<b>Welcome</b> é\nPIN 1234", 1})});
    expectLoggedOut();
    EXPECT_TRUE(isOpen("cwinCloudWindow"));
    EXPECT_EQ(program_->preferences.text("uName"), std::nullopt);
}

TEST_F(Account, NewAccountWithoutAServerShowsAnEmptyReply)
{
    start("\nOK\n");
    program_->click("cwinNewUserCreate");
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Create New User Response", "", 1})});
    EXPECT_TRUE(canShare());
}

TEST_F(Account, EnterLogsInAndEscapeCloses)
{
    start("no");
    program_->click("kvLoginToCloudAccount");
    EXPECT_EQ(program_->text("labLoggedInAs"), "Not Logged In");
    auto* name = program_->windows.find<QLineEdit>("cwinUserName");
    auto* pin = program_->windows.find<QLineEdit>("cwinPinCode");
    EXPECT_EQ(pin->echoMode(), QLineEdit::Password);
    EXPECT_TRUE(name->text().isEmpty());
    QTest::keyClicks(name, QStringLiteral("Ada"));
    QTest::keyClicks(pin, QStringLiteral("12"));
    peer_.play(support::reply("no"));
    QTest::keyClick(name, Qt::Key_Return);
    peer_.play(support::reply("\nOK\n"));
    QTest::keyClick(pin, Qt::Key_Enter);
    EXPECT_EQ(peer_.requests().size(), 3u);
    expectLoggedIn("Ada");
    for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
        auto* widget = program_->windows.find<QWidget>(window);
        widget->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
        QTest::keyClick(widget, Qt::Key_Escape);
        EXPECT_FALSE(widget->isVisible()) << window;
    }
}

TEST_F(Account, NeitherPinNorAddressIsLogged)
{
    platform::UserPreferences(support::Program::kBundleIdentifier).setTexts({{"uName", "Ada"}, {"uPIN", "98761"}});
    start("\nOK\n");
    logIn("Ada", "98762");
    for (const std::string& line : program_->log.lines) {
        EXPECT_EQ(line.find("9876"), std::string::npos) << line;
        EXPECT_EQ(line.find("checkuser"), std::string::npos) << line;
    }
}

} // namespace
