// Logging in and asking for an account, in the real windows against a scripted server.

#include "community/CommunityState.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowTest.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

using Lines = std::vector<std::string>;
using test::ShownAlert;

const ShownAlert kLoginFailed{"Login failed", "Please recheck your sign-in details and try again"};

class Account : public test::WindowTest {
protected:
    Account() { test::setBaseUrl(peer_.url()); }

    void start(const std::string& reply)
    {
        peer_.play(test::reply(reply));
        launch();
    }
    void logIn(const char* userName, const char* pin)
    {
        click("kvLoginToCloudAccount");
        fill("cwinUserName", userName);
        fill("cwinPinCode", pin);
        click("cwinLoginAttempt");
    }
    bool isOpen(const char* window) const { return find<QWidget>(window)->isVisible(); }
    bool canShare() const { return find<QPushButton>("kv_btn_cloudLibrary")->isEnabled(); }
    void expectLoggedIn(const std::string& name) const
    {
        EXPECT_EQ(text("labLoggedInAs"), "Logged in as " + name);
        EXPECT_EQ(community::loggedInAs, name);
        EXPECT_TRUE(canShare());
    }
    void expectLoggedOut() const
    {
        EXPECT_EQ(text("labLoggedInAs"), "Not Logged In");
        EXPECT_EQ(community::loggedInAs, "NOONEHERE");
        EXPECT_FALSE(canShare());
    }
    void expectStored(const std::string& name, const std::string& pin) const
    {
        EXPECT_EQ(system_.preferences.text("uName"), name);
        EXPECT_EQ(system_.preferences.text("uPIN"), pin);
    }

    test::ScriptedPeer peer_;
    test::AlertAnswers alerts_;
};

TEST_F(Account, FirstStartAsksWithNothingAndStaysQuiet)
{
    start("no");
    EXPECT_EQ(peer_.requestLines(), Lines{"POST /checkuser.php?userName=(null)&pinCode=(null)"});
    expectLoggedOut();
    test::runFor(20);
    EXPECT_TRUE(alerts_.shown().empty());
    EXPECT_EQ(system_.preferences.text("uName"), std::nullopt);
}

TEST_F(Account, StartsAfterTheScan)
{
    const auto plugin = home_.addPlugin("Maker", "Plug-in", {"0 A"});
    loadInterface();
    std::size_t rows = 0;
    const auto connection = controller().labLoggedInAs()->stringValue.onChange(
        [&](const std::string&) { rows = controller().myArrayController()->content().size(); });
    controller().viewDidLoad();
    EXPECT_EQ(rows, 1u);
}

TEST_F(Account, StartLogsInWithWhatIsStored)
{
    system_.preferences.setTexts({{"uName", "Ada L"}, {"uPIN", " 12"}});
    start("\nOK\n");
    EXPECT_EQ(peer_.requestLines(), Lines{"POST /checkuser.php?userName=Ada%20L&pinCode=%2012"});
    expectLoggedIn("Ada L");
}

TEST_F(Account, StartThatIsRefusedKeepsWhatIsStored)
{
    system_.preferences.setTexts({{"uName", "Ada"}, {"uPIN", "1"}});
    start("OK");
    expectLoggedOut();
    expectStored("Ada", "1");
    test::runFor(20);
    EXPECT_TRUE(alerts_.shown().empty());
}

TEST_F(Account, LoginSendsAndStoresWhatWasTyped)
{
    start("no");
    peer_.play(test::reply("\nOK\n"));
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
        peer_.play(test::reply(reply));
        logIn("Ada", "1");
        expectLoggedOut();
        EXPECT_EQ(alerts_.shown().back(), kLoginFailed);
        EXPECT_TRUE(isOpen("cwinCloudWindow"));
    }
    EXPECT_EQ(alerts_.shown().size(), 8u);
}

TEST_F(Account, FailedLoginLogsOutAndReplacesWhatIsStored)
{
    system_.preferences.setTexts({{"uName", "A"}, {"uPIN", "1"}});
    start("\nOK\n");
    expectLoggedIn("A");
    std::string labelDuringAlert;
    std::string storedDuringAlert;
    alerts_.whileOpen = [&] {
        labelDuringAlert = text("labLoggedInAs");
        storedDuringAlert = system_.preferences.text("uName").value_or("");
    };
    peer_.play(test::reply("wrong", "500 Oops"));
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
    system_.preferences.setTexts({{"uName", "A"}, {"uPIN", "1"}});
    start("\nOK\n");
    peer_.play(test::reply("no"));
    logIn("", "");
    EXPECT_EQ(peer_.requestLines().back(), "POST /checkuser.php?userName=&pinCode=");
    EXPECT_EQ(alerts_.shown(), std::vector{kLoginFailed});
    expectStored("", "");
}

TEST_F(Account, SecondLoginSwitchesAccounts)
{
    start("no");
    for (const char* name : {"A", "B"}) {
        peer_.play(test::reply("\nOK\n"));
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
        controller().changeLoginStateAndState("Ada", 1);
        expectLoggedIn("Ada");
        controller().changeLoginStateAndState("Ada", state);
        expectLoggedOut();
    }
}

TEST_F(Account, NewAccountShowsTheReplyAndNothingElseHappens)
{
    start("no");
    peer_.play(test::reply("<b>Welcome</b> é\nPIN 1234", "403 Forbidden"));
    click("kvLoginToCloudAccount");
    fill("cwinUserNameNew", "Ada L");
    fill("cwinEmailAddrNew", "ada+x@example.org");
    click("cwinNewUserCreate");
    EXPECT_EQ(peer_.requestLines().back(), "POST /checkuserexists.php?userName=Ada%20L&emailAddr=ada+x@example.org");
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Create New User Response", "<b>Welcome</b> é\nPIN 1234"})});
    expectLoggedOut();
    EXPECT_TRUE(isOpen("cwinCloudWindow"));
    EXPECT_EQ(system_.preferences.text("uName"), std::nullopt);
}

TEST_F(Account, NewAccountWithoutAServerShowsAnEmptyReply)
{
    start("\nOK\n");
    click("cwinNewUserCreate");
    EXPECT_EQ(alerts_.shown(), std::vector{(ShownAlert{"Create New User Response", ""})});
    EXPECT_TRUE(canShare());
}

TEST_F(Account, EnterLogsInAndEscapeCloses)
{
    start("no");
    click("kvLoginToCloudAccount");
    EXPECT_EQ(text("labLoggedInAs"), "Not Logged In");
    auto* name = find<QLineEdit>("cwinUserName");
    auto* pin = find<QLineEdit>("cwinPinCode");
    EXPECT_EQ(pin->echoMode(), QLineEdit::Password);
    EXPECT_TRUE(name->text().isEmpty());
    QTest::keyClicks(name, QStringLiteral("Ada"));
    QTest::keyClicks(pin, QStringLiteral("12"));
    peer_.play(test::reply("no"));
    QTest::keyClick(name, Qt::Key_Return);
    peer_.play(test::reply("\nOK\n"));
    QTest::keyClick(pin, Qt::Key_Enter);
    EXPECT_EQ(peer_.requests().size(), 3u);
    expectLoggedIn("Ada");
    for (const char* window : {"cwinCloudWindow", "cwinUploadWindow", "cwinDownloadWindow"}) {
        auto* widget = find<QWidget>(window);
        widget->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
        QTest::keyClick(widget, Qt::Key_Escape);
        EXPECT_FALSE(widget->isVisible()) << window;
    }
}

TEST_F(Account, NeitherPinNorAddressIsLogged)
{
    system_.preferences.setTexts({{"uName", "Ada"}, {"uPIN", "98761"}});
    start("\nOK\n");
    logIn("Ada", "98762");
    for (const std::string& line : log_.lines) {
        EXPECT_EQ(line.find("9876"), std::string::npos) << line;
        EXPECT_EQ(line.find("checkuser"), std::string::npos) << line;
    }
}

} // namespace
