#include "app/ViewController.h"
#include "community/BaseUrl.h"
#include "community/CommunityState.h"
#include "community/Requests.h"

namespace {

constexpr char kUserName[] = "uName";
constexpr char kPin[] = "uPIN";

} // namespace

void ViewController::kvLoginToCloudAccount(Sender)
{
    cwinCloudWindow()->makeKeyAndOrderFront();
    cwinCloudWindow()->center();
}

void ViewController::cwinLoginAttempt(Sender)
{
    const std::string userName = cwinUserName()->stringValue.get();
    const std::string pin = cwinPinCode()->stringValue.get();
    const std::string reply = checkCloudUserNameAndPinCode(userName, pin);
    writePrefsFileAndPIN(userName, pin); // also what the server rejects: it is tried again at the next start
    if (community::isLoginAccepted(reply)) {
        changeLoginStateAndState(userName, 1);
        cwinCloudWindow()->close();
        return;
    }
    alertUserAndSub("Login failed", "Please recheck your sign-in details and try again");
    changeLoginStateAndState(userName, 0);
}

void ViewController::cwinNewUserCreate(Sender)
{
    const std::string userName = cwinUserNameNew()->stringValue.get();
    const std::string email = cwinEmailAddrNew()->stringValue.get();
    alertUserAndSub("Create New User Response", createNewCloudUserNameAndEmail(userName, email));
}

void ViewController::changeLoginStateAndState(const std::optional<std::string>& userName, std::int32_t state)
{
    const bool isLoggedIn = state == 1;
    community::loggedInAs = isLoggedIn ? community::textOrNull(userName) : community::kNobody;
    if (labLoggedInAs())
        labLoggedInAs()->stringValue.set(isLoggedIn ? "Logged in as " + community::loggedInAs : "Not Logged In");
    kv_btn_cloudLibrary()->enabled.set(isLoggedIn);
}

std::string ViewController::checkCloudUserNameAndPinCode(const std::optional<std::string>& userName,
                                                         const std::optional<std::string>& pinCode)
{
    return sendRequest(community::loginCheckAddress(community::baseUrl(), userName, pinCode));
}

std::string ViewController::createNewCloudUserNameAndEmail(const std::string& userName, const std::string& email)
{
    return sendRequest(community::newUserAddress(community::baseUrl(), userName, email));
}

void ViewController::writePrefsFileAndPIN(const std::string& userName, const std::string& pin)
{
    platform_.preferences.setTexts({{kUserName, userName}, {kPin, pin}});
}

void ViewController::readPrefsFile()
{
    const auto userName = platform_.preferences.text(kUserName);
    const auto pin = platform_.preferences.text(kPin);
    const bool isAccepted = community::isLoginAccepted(checkCloudUserNameAndPinCode(userName, pin));
    changeLoginStateAndState(userName, isAccepted ? 1 : 0);
}

std::string ViewController::sendRequest(const std::string& address)
{
    keepDraft(); // the server may take its time
    return community::replyText(platform_.http.post(address, {}, {}));
}
