// The demo's server alone, over raw sockets: what it refuses, what it keeps, and how it ends.

#include "community/Requests.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QThread>
#include <QUrl>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <string>

namespace {

constexpr int kPatience = 10'000;
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

void start(QProcess& server, const test::Path& data, const QString& port = QStringLiteral("0"))
{
    server.start(QStringLiteral(KV_COMMUNITY_SERVER),
                 {QStringLiteral("--port"), port, QStringLiteral("--data"), QString::fromStdString(data.native())});
    ASSERT_TRUE(server.waitForStarted(kPatience));
}

/// The port of the address that the server prints when it listens.
quint16 portIn(const QByteArray& address)
{
    return static_cast<quint16>(QUrl(QString::fromUtf8(address.trimmed())).port());
}
quint16 portOf(QProcess& server)
{
    EXPECT_TRUE(server.waitForReadyRead(kPatience));
    return portIn(server.readLine());
}

/// A connection to the port of this machine; a negative number when nobody listens there.
int connectTo(quint16 port)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return socket;
    ::close(socket);
    return -1;
}

bool listens(quint16 port)
{
    const int socket = connectTo(port);
    if (socket >= 0)
        ::close(socket);
    return socket >= 0;
}

struct Reply {
    int status = 0;
    std::string body;
};

class Server : public testing::Test {
protected:
    void SetUp() override
    {
        start(server_, data());
        port_ = portOf(server_);
        ASSERT_NE(port_, 0);
    }
    void TearDown() override
    {
        server_.terminate();
        EXPECT_TRUE(server_.waitForFinished(kPatience));
        EXPECT_EQ(server_.exitCode(), 0);
    }

    test::Path data() const { return folder_ / "data"; }

    /// Sends the bytes as they are and reads until the server ends the connection.
    Reply send(const std::string& bytes) const
    {
        const int socket = connectTo(port_);
        EXPECT_GE(socket, 0);
        const timeval patience{kPatience / 1000, 0};
        ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        EXPECT_EQ(::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
        std::string reply;
        char part[4096];
        for (ssize_t count = 0; (count = ::recv(socket, part, sizeof part, 0)) > 0;)
            reply.append(part, static_cast<std::size_t>(count));
        ::close(socket);
        const std::size_t head = reply.find("\r\n\r\n");
        if (head == std::string::npos || reply.size() < 12) {
            ADD_FAILURE() << "no reply: " << reply;
            return {};
        }
        return {std::stoi(reply.substr(9, 3)), reply.substr(head + 4)};
    }
    Reply get(const std::string& target) const
    {
        return send("GET " + target + " HTTP/1.1\r\nHost: library\r\nConnection: close\r\n\r\n");
    }
    Reply post(const std::string& target, const std::string& body = {}, const std::string& headers = {}) const
    {
        return send("POST /" + target + " HTTP/1.1\r\nHost: library\r\nConnection: close\r\n" + headers +
                    "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
    /// Creates an account and returns its PIN.
    std::string createAccount(const std::string& name) const
    {
        const std::string reply = post(community::newUserAddress("", name, "ada@example.org")).body;
        const std::size_t start = reply.find("PIN is ");
        EXPECT_NE(start, std::string::npos) << reply;
        return start == std::string::npos ? "" : reply.substr(start + 7, 6);
    }
    std::string login(const std::string& name, const std::string& pin) const
    {
        return post(community::loginCheckAddress("", name, pin)).body;
    }
    Reply upload(const std::string& file, const std::string& comments = "", const std::string& plugin = "Echo",
                 const std::string& fileName = "x.plist") const
    {
        return post(community::uploadAddress("", "Ada", plugin, comments),
                    "--edge\r\nContent-Disposition: form-data; name=\"userfile\"; filename=\"" + fileName +
                        "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + file + "\r\n--edge--\r\n",
                    "Content-Type: multipart/form-data; boundary=edge\r\n");
    }
    QJsonArray listing(const std::string& plugin = "Echo") const
    {
        const std::string body = post(community::listingAddress("", plugin)).body;
        return QJsonDocument::fromJson(QByteArray::fromStdString(body)).array();
    }
    std::string listed(const char* key, const std::string& plugin = "Echo") const
    {
        return listing(plugin).at(0).toObject().value(QLatin1String(key)).toVariant().toString().toStdString();
    }

    const test::TemporaryFolder folder_;
    const std::string mapping_ = test::orderBytes({"0 Cutoff", "1 Resonance"});
    QProcess server_;
    quint16 port_ = 0;
};

TEST_F(Server, GivesOutNothingButSharedFiles)
{
    createAccount("Ada");
    upload(mapping_);
    test::write(data() / "secret.plist", "secret");
    test::write(data() / "files" / "abc.plist", "secret");
    for (const char* target : {"/files/../secret.plist", "/files/%2e%2e/secret.plist", "/files/..%2fsecret.plist",
                               "/files/%2e%2e%2fsecret.plist", "/files/..%252fsecret.plist", "/files//secret.plist",
                               "/files/./abc.plist", "/files/abc.plist", "/files/abc.plist%00", "/files/",
                               "/library.sqlite", "/../library.sqlite", "/files/..%5csecret.plist"}) {
        const Reply reply = get(target);
        EXPECT_EQ(reply.status, 404) << target;
        EXPECT_EQ(reply.body, "The library has nothing at this address.") << target;
    }
}

TEST_F(Server, NamesFilesItself)
{
    createAccount("Ada");
    upload(mapping_, "", "Echo", "../../evil.plist");
    const std::string location = listed("fileLocation");
    EXPECT_EQ(location.size(), std::string("files/").size() + 32 + std::string(".plist").size()) << location;
    EXPECT_EQ(location.find("evil"), std::string::npos);
    EXPECT_EQ(get("/" + location).body, mapping_);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "evil.plist"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(data() / "files"), {}), 1);
}

TEST_F(Server, TakesSqlForText)
{
    createAccount("Ada");
    upload(mapping_);
    EXPECT_EQ(post("kv_downloadreg.php?patchID=1%20OR%201=1").body, "\nNO\n");
    EXPECT_EQ(post("kv_downloadreg.php?patchID=1;DELETE%20FROM%20mapping").body, "\nNO\n");
    EXPECT_EQ(listed("downloads"), "0");
    EXPECT_EQ(login("Ada' OR '1'='1", "1"), "\nNO\n");
    const std::string name = "x'); DROP TABLE account; --";
    const std::string pin = createAccount(name);
    EXPECT_EQ(login(name, pin), "\nOK\n");
    EXPECT_EQ(post("kv_downloadreg.php?patchID=1").body, "\nOK\n");
    EXPECT_EQ(listed("downloads"), "1");
}

TEST_F(Server, KeepsNoPinAndNothingOthersCanRead)
{
    const std::string pin = createAccount("Ada");
    createAccount("Bob");
    EXPECT_EQ(login("Ada", pin), "\nOK\n");
    const std::string database = test::read(data() / "library.sqlite");
    EXPECT_NE(database.find("ada@example.org"), std::string::npos);
    EXPECT_EQ(database.find(pin), std::string::npos);
    upload(mapping_);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path()))
        EXPECT_EQ(entry.status().permissions() & std::filesystem::perms(077), std::filesystem::perms::none)
            << entry.path();
}

TEST_F(Server, RefusesWrongPins)
{
    const std::string pin = createAccount("Ada");
    const std::string otherPin = createAccount("Bob");
    const std::string wrong = pin == "000000" ? "000001" : "000000";
    for (const std::string& tried : {wrong, std::string(), pin + "0", pin.substr(1)})
        EXPECT_EQ(login("Ada", tried), "\nNO\n") << tried;
    EXPECT_EQ(login("Bob", otherPin), "\nOK\n");
    EXPECT_EQ(login("Eve", pin), "\nNO\n");
    EXPECT_EQ(login("Ada", pin), "\nOK\n");
}

TEST_F(Server, RefusesTakenReservedAndImpossibleNames)
{
    const std::string pin = createAccount("Ada");
    EXPECT_EQ(post(community::newUserAddress("", "Ada", "eve@example.org")).body,
              "The user name Ada is taken. Please choose another one.");
    EXPECT_EQ(login("Ada", pin), "\nOK\n");
    for (const std::string& name : {std::string("NOONEHERE"), std::string("(null)"), std::string(), std::string("\xff"),
                                    std::string("a\0b", 3), std::string(201, 'x')})
        EXPECT_EQ(post(community::newUserAddress("", name, "eve@example.org")).body, "Please choose another user name.")
            << name;
    EXPECT_EQ(post(community::newUserAddress("", "Eve", "nowhere")).body, "Please give an e-mail address.");
}

TEST_F(Server, SaysWhichLimitWasExceeded)
{
    constexpr char kTooLarge[] = "The file is too large, so it was not shared. A mapping has at most 1 MiB.";
    createAccount("Ada");
    Reply reply = upload(std::string(kLargestFile + 1, 'x'));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, kTooLarge);
    reply = upload(std::string(2 * kLargestFile, 'x'));
    EXPECT_EQ(reply.status, 413);
    EXPECT_EQ(reply.body, kTooLarge);
    EXPECT_EQ(upload(mapping_, std::string(4001, 'x')).body,
              "The name of the plug-in or the comments cannot be stored.");
    reply = upload(mapping_, std::string(9000, 'x'));
    EXPECT_EQ(reply.status, 414);
    EXPECT_EQ(reply.body, "The text is too long. Please shorten it.");
    reply = send("nonsense\r\n\r\n");
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(reply.body, "The request was not understood.");
    EXPECT_TRUE(listing().isEmpty());
    // The largest that is allowed.
    EXPECT_NE(upload(mapping_ + std::string(kLargestFile - mapping_.size(), '\n'), std::string(4000, 'x'))
                  .body.find("now shared"),
              std::string::npos);
}

TEST_F(Server, RefusesWhatIsNoMapping)
{
    createAccount("Ada");
    for (const std::string& file :
         {std::string("nonsense"), std::string(), std::string("<plist version=\"1.0\"><dict/></plist>"),
          mapping_.substr(0, mapping_.size() / 2)})
        EXPECT_EQ(upload(file).body, "The file is no mapping, so it was not shared. Save the mapping first.") << file;
    EXPECT_TRUE(listing().isEmpty());
}

TEST_F(Server, ListsCommentsAsTheyWereSent)
{
    const std::string comments = "<b>1+1=2</b> \"dry\" \\ 50%\n\tpremière '; -- </script> \x01 😀";
    const std::string plugin = "Echo+ <Co> 100%";
    createAccount("Ada");
    upload(mapping_, comments, plugin);
    EXPECT_EQ(listing(plugin).size(), 1);
    EXPECT_EQ(listed("userComments", plugin), comments);
    EXPECT_EQ(listed("uploader", plugin), "Ada");
}

TEST_F(Server, ExitsWhenThePortIsTaken)
{
    QProcess second;
    start(second, folder_ / "second", QString::number(port_));
    ASSERT_TRUE(second.waitForFinished(kPatience));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_EQ(second.readAllStandardOutput(), "");
    EXPECT_EQ(second.readAllStandardError().toStdString(),
              "community_server: cannot listen on 127.0.0.1, port " + std::to_string(port_) + "\n");
}

TEST(ServerProcess, EndsOnASignalSentWhileItStarts)
{
    const test::TemporaryFolder folder;
    for (unsigned long delay = 0; delay < 20; ++delay) {
        QProcess server;
        start(server, folder / "data");
        QThread::msleep(delay);
        server.terminate();
        ASSERT_TRUE(server.waitForFinished(3000)) << delay;
    }
}

TEST(ServerProcess, EndsOnASignalSentAsItSaysThatItListens)
{
    const test::TemporaryFolder folder;
    for (int i = 0; i < 20; ++i) {
        QProcess server;
        start(server, folder / "data");
        ASSERT_NE(portOf(server), 0);
        server.terminate();
        ASSERT_TRUE(server.waitForFinished(3000)) << i;
        EXPECT_EQ(server.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(server.exitCode(), 0);
    }
}

TEST(ServerProcess, EndsWithItsParent)
{
    const test::TemporaryFolder folder;
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QStringLiteral("\"$0\" --with-parent $$ --port 0 --data \"$1\" & echo $!; wait"),
                 QStringLiteral(KV_COMMUNITY_SERVER), QString::fromStdString((folder / "data").native())});
    while (shell.bytesAvailable() == 0 || !shell.peek(1000).contains("http"))
        ASSERT_TRUE(shell.waitForReadyRead(kPatience));
    const pid_t server = shell.readLine().trimmed().toInt();
    ASSERT_GT(server, 0);
    const quint16 port = portIn(shell.readLine());
    EXPECT_TRUE(listens(port));
    shell.kill();
    ASSERT_TRUE(shell.waitForFinished(kPatience));
    for (int i = 0; i < 300 && listens(port); ++i)
        QThread::msleep(10);
    EXPECT_FALSE(listens(port));
    if (listens(port))
        ::kill(server, SIGKILL);
}

} // namespace
