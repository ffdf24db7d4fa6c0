// The server alone, over raw sockets: what it refuses, what it keeps, and how it ends.

#include "community/Requests.h"
#include "tests/community_server/TestServer.h"
#include "tests/support/OrderFiles.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;

class Server : public testing::Test {
protected:
    test::Path data() const { return folder_ / "data"; }

    const test::TemporaryFolder folder_;
    const test::TestServer server_{data()};
    const std::string mapping_ = test::orderBytes({"0 Cutoff", "1 Resonance"});
};

TEST_F(Server, GivesOutNothingButSharedFiles)
{
    server_.join("Ada");
    server_.upload("Ada", mapping_);
    test::write(data() / "secret.plist", "secret");
    test::write(data() / "files" / "abc.plist", "secret");
    for (const char* target : {"/files/../secret.plist", "/files/%2e%2e/secret.plist", "/files/..%2fsecret.plist",
                               "/files/%2e%2e%2fsecret.plist", "/files/..%252fsecret.plist", "/files//secret.plist",
                               "/files/./abc.plist", "/files/abc.plist", "/files/abc.plist%00", "/files/",
                               "/library.sqlite", "/../library.sqlite", "/files/..%5csecret.plist"}) {
        const test::Reply reply = server_.get(target);
        EXPECT_EQ(reply.status, 404) << target;
        EXPECT_EQ(reply.body, "The library has nothing at this address.") << target;
    }
}

TEST_F(Server, NamesFilesItself)
{
    server_.join("Ada");
    server_.post(community::uploadAddress("", "Ada", "Echo", ""),
                 "--edge\r\nContent-Disposition: form-data; name=\"userfile\"; filename=\"../../evil.plist\"\r\n\r\n" +
                     mapping_ + "\r\n--edge--\r\n",
                 "Content-Type: multipart/form-data; boundary=edge\r\n");
    const std::string location = server_.listed("fileLocation");
    EXPECT_EQ(location.size(), std::string("files/").size() + 32 + std::string(".plist").size()) << location;
    EXPECT_EQ(location.find("evil"), std::string::npos);
    EXPECT_EQ(server_.get("/" + location).body, mapping_);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
        EXPECT_TRUE(entry.is_directory() || entry.path().filename().native().starts_with("library.sqlite"))
            << entry.path();
}

TEST_F(Server, TakesSqlForText)
{
    server_.join("Ada");
    server_.upload("Ada", mapping_);
    EXPECT_EQ(server_.post("kv_downloadreg.php?patchID=1%20OR%201=1").body, "\nNO\n");
    EXPECT_EQ(server_.post("kv_downloadreg.php?patchID=1;DELETE%20FROM%20mapping").body, "\nNO\n");
    EXPECT_EQ(server_.listed("downloads"), "0");
    EXPECT_EQ(server_.logIn("Ada' OR '1'='1", "1"), "\nNO\n");
    server_.join("x'); DROP TABLE account; --");
    EXPECT_EQ(server_.post("kv_downloadreg.php?patchID=1").body, "\nOK\n");
    EXPECT_EQ(server_.listed("downloads"), "1");
}

TEST_F(Server, KeepsNoPinAndNothingOthersCanRead)
{
    const std::string pin = server_.join("Ada");
    server_.upload("Ada", mapping_);
    std::string all;
    for (const auto& entry : std::filesystem::directory_iterator(data()))
        all += test::read(entry.path());
    EXPECT_NE(all.find("ada@example.org"), std::string::npos);
    EXPECT_EQ(all.find(pin), std::string::npos);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
        EXPECT_EQ(entry.status().permissions() & std::filesystem::perms(077), std::filesystem::perms::none)
            << entry.path();
}

TEST_F(Server, RefusesWrongPins)
{
    const std::string pin = server_.createAccount("Ada");
    const std::string otherPin = server_.createAccount("Bob");
    const std::string wrong = pin == "000000" ? "000001" : "000000";
    for (const std::string& tried : {wrong, std::string(), pin + "0", pin.substr(1)})
        EXPECT_EQ(server_.logIn("Ada", tried), "\nNO\n") << tried;
    EXPECT_EQ(server_.logIn("Bob", otherPin), "\nOK\n");
    EXPECT_EQ(server_.logIn("Eve", pin), "\nNO\n");
    EXPECT_EQ(server_.logIn("Ada", pin), "\nOK\n");
}

TEST_F(Server, SaysWhyThereIsNoAccount)
{
    const auto reply = [&](const std::string& name, const std::string& email) {
        return server_.post(community::newUserAddress("", name, email)).body;
    };
    server_.createAccount("Ada");
    EXPECT_EQ(reply("ADA", "eve@example.org"), "The user name ADA is taken. Please choose another one.");
    EXPECT_EQ(reply("\xD0\x90"
                    "da",
                    "eve@example.org"), // a Cyrillic letter
              "The user name \xD0\x90"
              "da looks like one that is taken. Please choose another one.");
    EXPECT_EQ(reply("NOONEHERE", "eve@example.org"),
              "Please choose another user name, one of 3 to 32 characters that can be seen.");
    EXPECT_EQ(reply("Eve", "nowhere"), "Please give an e-mail address.");
}

TEST_F(Server, SaysWhichLimitWasExceeded)
{
    constexpr char kTooLarge[] = "The file is too large, so it was not shared. A mapping has at most 1 MiB.";
    server_.join("Ada");
    test::Reply reply = server_.upload("Ada", std::string(kLargestFile + 1, 'x'));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, kTooLarge);
    reply = server_.upload("Ada", std::string(2 * kLargestFile, 'x'));
    EXPECT_EQ(reply.status, 413);
    EXPECT_EQ(reply.body, kTooLarge);
    EXPECT_EQ(server_.upload("Ada", mapping_, std::string(4001, 'x')).body,
              "The name of the plug-in or the comments cannot be stored.");
    reply = server_.upload("Ada", mapping_, std::string(9000, 'x'));
    EXPECT_EQ(reply.status, 414);
    EXPECT_EQ(reply.body, "The text is too long. Please shorten it.");
    EXPECT_EQ(server_.listing(), "[]");
    // The largest that is allowed.
    EXPECT_NE(
        server_.upload("Ada", mapping_ + std::string(kLargestFile - mapping_.size(), '\n'), std::string(4000, 'x'))
            .body.find("now shared"),
        std::string::npos);
}

TEST_F(Server, RefusesWhatIsNoMapping)
{
    server_.join("Ada");
    for (const std::string& file :
         {std::string("nonsense"), std::string(), std::string("<plist version=\"1.0\"><dict/></plist>"),
          mapping_.substr(0, mapping_.size() / 2), std::string("{ControlSurfaceParameterOrder = ((a, b));}")})
        EXPECT_EQ(server_.upload("Ada", file).body,
                  "The file is no mapping, so it was not shared. Save the mapping first.")
            << file;
    EXPECT_EQ(server_.listing(), "[]");
}

TEST_F(Server, ListsTextsAsTheyWereSent)
{
    const std::string comments = "<b>1+1=2</b> \"dry\" & wet \\ 50%\n\tpremière&comments=; '; -- </script> \x01 😀";
    const std::string plugin = "Drum & Bass+ <Co> 100%";
    server_.join("Ada & Eve");
    EXPECT_EQ(server_.upload("Ada & Eve", mapping_, comments, plugin).body,
              "Thank you, Ada & Eve! Your mapping for " + plugin + " is now shared.");
    EXPECT_EQ(server_.listed("userComments", plugin), comments);
    EXPECT_EQ(server_.listed("uploader", plugin), "Ada & Eve");
}

TEST_F(Server, BelievesAnUploadOnlyWhereItsUserLoggedIn)
{
    constexpr char kLogIn[] = "Please log in before you share a mapping.";
    const std::string pin = server_.createAccount("Ada");
    EXPECT_EQ(server_.upload("Ada", mapping_).body, kLogIn);
    EXPECT_EQ(server_.upload("NOONEHERE", mapping_).body, kLogIn);
    server_.logIn("ada", pin);
    EXPECT_EQ(server_.upload("Ada", mapping_).body, "Thank you, Ada! Your mapping for Echo is now shared.");
    if (test::hasOtherAddresses()) {
        EXPECT_EQ(server_.upload("Ada", mapping_, "", "Echo", "127.0.0.2").body, kLogIn);
    }
}

TEST(ServerQuotas, RefuseInWords)
{
    const test::TemporaryFolder folder;
    const test::TestServer server(
        folder / "data", {"--uploads-of-user", "2", "--uploads-of-address", "3", "--accounts-of-address", "3"});
    for (const char* name : {"Ada", "Bob", "Eve"})
        server.join(name);
    EXPECT_EQ(server.post(community::newUserAddress("", "Dan", "dan@example.org")).body,
              "Too many accounts were made from your address today. Please try again tomorrow.");
    const auto share = [&](const std::string& user, const std::string& parameter) {
        return server.upload(user, test::orderBytes({parameter})).body;
    };
    EXPECT_NE(share("Ada", "1 a").find("now shared"), std::string::npos);
    EXPECT_EQ(server.upload("Ada", "nonsense").body.find("now shared"), std::string::npos); // does not count
    EXPECT_NE(share("Ada", "2 a").find("now shared"), std::string::npos);
    EXPECT_EQ(share("Ada", "3 a"),
              "You have shared as many mappings today as the library takes. Please go on tomorrow.");
    EXPECT_NE(share("Bob", "4 a").find("now shared"), std::string::npos);
    EXPECT_EQ(share("Eve", "5 a"), "Too many mappings were shared from your address today. Please go on tomorrow.");
    EXPECT_EQ(test::valueIn(server.listing(), "$[#-1].patchID"), "1");
    EXPECT_EQ(test::valueIn(server.listing(), "$[3]"), "");
}

TEST(ServerBehindAProxy, KnowsClientsByWhatTheProxyTells)
{
    const test::TemporaryFolder folder;
    const std::string login = "&pinCode=000000";
    const auto tries = [&](const test::TestServer& server) {
        const std::string pin = server.createAccount("Ada");
        for (int i = 0; i < 8; ++i)
            server.post(community::loginCheckAddress("", "Ada", "nothing"), {}, "X-Forwarded-For: 10.0.0.1\r\n");
        return server.post(community::loginCheckAddress("", "Ada", pin), {}, "X-Forwarded-For: 10.0.0.1, 10.0.0.2\r\n")
            .body;
    };
    const auto triesOfOneWhoClaimsAnother = [](const test::TestServer& server) {
        const std::string pin = server.createAccount("Ada");
        const auto logIn = [&](const std::string& tried, const std::string& claimed) {
            return server
                .post(community::loginCheckAddress("", "Ada", tried), {},
                      "X-Forwarded-For: " + claimed + "\r\nx-forwarded-for: 10.0.0.1\r\n")
                .body;
        };
        for (int i = 0; i < 8; ++i)
            logIn("nothing", "10.1.1." + std::to_string(i));
        return logIn(pin, "10.2.2.2");
    };
    // Whoever is believed to come from elsewhere has all tries; whoever only says so has not.
    EXPECT_EQ(tries(test::TestServer(folder / "behind", {"--behind-proxy", "yes"})), "\nOK\n");
    EXPECT_EQ(tries(test::TestServer(folder / "before")), "\nNO\n");
    EXPECT_EQ(triesOfOneWhoClaimsAnother(test::TestServer(folder / "claims", {"--behind-proxy", "yes"})), "\nNO\n");
}

/// Starts the server and returns its process.
pid_t start(const test::Path& data)
{
    const pid_t process = ::fork();
    if (process == 0) {
        ::close(STDOUT_FILENO);
        ::execl(KV_COMMUNITY_SERVER, KV_COMMUNITY_SERVER, "--port", "0", "--data", data.c_str(),
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    return process;
}

TEST(ServerProcess, ExitsWhenThePortIsTaken)
{
    const test::TemporaryFolder folder;
    const test::TestServer first(folder / "first");
    const std::string command = KV_COMMUNITY_SERVER " --port " + std::to_string(first.port()) + " --data " +
                                (folder / "second").native() + " 2>" + (folder / "says").native();
    const int status = std::system(command.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(test::read(folder / "says"),
              "community_server: cannot listen on 127.0.0.1, port " + std::to_string(first.port()) + "\n");
}

TEST(ServerProcess, EndsOnASignalSentWhileItStarts)
{
    const test::TemporaryFolder folder;
    for (int delay = 0; delay < 20; ++delay) {
        const pid_t process = start(folder / "data");
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        ::kill(process, SIGTERM);
        int status = -1;
        ASSERT_EQ(::waitpid(process, &status, 0), process) << delay;
    }
}

TEST(ServerProcess, EndsOnASignalSentAsItSaysThatItListens)
{
    const test::TemporaryFolder folder;
    for (int i = 0; i < 20; ++i)
        const test::TestServer server(folder / "data");
}

TEST(ServerProcess, AnswersWhatItHasBegunBeforeItEnds)
{
    const test::TemporaryFolder folder;
    for (int i = 0; i < 5; ++i) {
        test::TestServer server(folder / "data");
        const int socket = test::connectTo(server.port());
        test::sendAll(socket, "POST /" + community::newUserAddress("", "User " + std::to_string(i), "a@b") +
                                  " HTTP/1.1\r\nHost: library\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // while the PIN is hashed
        ::kill(server.process(), SIGTERM);
        EXPECT_NE(test::readAll(socket).find("Your PIN is "), std::string::npos) << i;
        ::close(socket);
    }
}

TEST(ServerProcess, EndsWithItsParent)
{
    const test::TemporaryFolder folder;
    const std::string command = KV_COMMUNITY_SERVER " --with-parent $$ --port 0 --data " + (folder / "data").native() +
                                " >" + (folder / "address").native() + " & while ! test -s " +
                                (folder / "address").native() + "; do sleep 0.05; done";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string address = test::read(folder / "address");
    const auto port = static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
    bool listens = true;
    for (int i = 0; i < 300 && listens; ++i) {
        const int socket = test::connectTo(port);
        listens = socket >= 0;
        ::close(socket);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_FALSE(listens);
}

} // namespace
