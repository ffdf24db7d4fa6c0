// The bytes of blocking requests, and what becomes of replies.

#include "community/Requests.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "tests/support/ScriptedPeer.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <string>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform::qt {

namespace {

using namespace std::chrono_literals;
using test::ScriptedPeer;
using Connection = ScriptedPeer::Connection;

class Post : public testing::Test {
protected:
    std::optional<std::string> post(const std::string& path) { return http_.post(peer_.url() + path, {}, {}); }
    std::string head(const std::string& firstLine, const std::string& rest) const
    {
        return firstLine + " HTTP/1.1\r\nHost: " + peer_.host() + "\r\nAccept: */*\r\n" + rest + "\r\n";
    }

    CompletionGate gate_;
    CurlHttp http_{gate_};
    CurlHttp impatient_{gate_, {}, {300ms, 300ms, 1000, 1000}};
    ScriptedPeer peer_;
};

TEST_F(Post, SendsAnEmptyBodyWithoutAnyHeaderOfItsOwn)
{
    peer_.play(test::reply("\nOK\n"));
    EXPECT_EQ(post("checkuser.php?userName=(null)&pinCode=(null)"), "\nOK\n");
    EXPECT_EQ(peer_.requests(), std::vector<std::string>{head("POST /checkuser.php?userName=(null)&pinCode=(null)",
                                                              "Content-Length: 0\r\n")});
}

TEST_F(Post, SendsTheAddressByteForByte)
{
    const std::string paths[] = {
        "a/../b/./c//d",  "?",           "x?y?z=/../&&=",      "%41%2f%2F%c3%A9",
        "!$&'()*+,;=:@~", "%20%23%25?%", "kv.php?q=\xc3\xa9x", "a;b=c,d/(null)?userName=A&B",
    };
    for (const std::string& path : paths) {
        peer_.play(test::reply("."));
        EXPECT_EQ(post(path), ".") << path;
        EXPECT_EQ(peer_.requestLines().back(), "POST /" + path);
    }
}

TEST_F(Post, SendsEveryByteThatEscapingLeaves)
{
    std::string all;
    for (int byte = 1; byte < 0x100; ++byte)
        all += static_cast<char>(byte);
    const std::string path = "f.php?plugin=" + community::escaped(all);
    peer_.play(test::reply("."));
    EXPECT_EQ(post(path), ".");
    EXPECT_EQ(peer_.requestLines().back(), "POST /" + path);
}

TEST_F(Post, FailsWithoutAWordOnAnAddressWithABlank)
{
    EXPECT_EQ(post("kv_downloadreg.php?patchID=a b"), std::nullopt);
    EXPECT_EQ(post("kv_downloadreg.php?patchID=a\r\nX: y"), std::nullopt);
    for (const char* byte : {"\x01", "\t", "\x1f", "\x7f"})
        EXPECT_EQ(post(byte), std::nullopt);
    EXPECT_TRUE(peer_.requests().empty());
}

TEST_F(Post, FailsOnAnAddressThatANulWouldCutShort)
{
    using namespace std::string_literals;
    EXPECT_EQ(post("kv_downloadreg.php?patchID=a\0b"s), std::nullopt);
    EXPECT_TRUE(peer_.requests().empty());
}

TEST_F(Post, NoRedirectMakesItSendAnAuthorization)
{
    std::string target = peer_.url();
    target.insert(std::string("http://").size(), "user:secret@");
    peer_.play(test::redirect(302, target + "there"));
    peer_.play(test::reply("there"));
    EXPECT_EQ(post("here"), std::nullopt);
    for (const std::string& request : peer_.requests())
        EXPECT_EQ(request.find("Authorization"), std::string::npos);
}

TEST_F(Post, SendsABodyWithOneContentType)
{
    peer_.play(test::reply("stored"));
    const std::string body = community::uploadBody(std::string("\0plist\r\n", 8));
    EXPECT_EQ(http_.post(peer_.url() + "kv_upload.php?user=A", community::uploadContentType(), body), "stored");
    EXPECT_EQ(peer_.requests(), std::vector<std::string>{head("POST /kv_upload.php?user=A",
                                                              "Content-Type: " + community::uploadContentType() +
                                                                  "\r\nContent-Length: 260\r\n") +
                                                         body});
}

TEST_F(Post, SendsALargeBodyAtOnce)
{
    peer_.play(test::reply("stored"));
    const std::string body(3'000'000, 'x');
    EXPECT_EQ(http_.post(peer_.url(), "text/plain", body), "stored");
    EXPECT_EQ(peer_.requests().front(),
              head("POST /", "Content-Type: text/plain\r\nContent-Length: 3000000\r\n") + body);
}

TEST_F(Post, IsNotRepeatedWhenTheServerHangsUp)
{
    EXPECT_EQ(post("once"), std::nullopt);
    peer_.play(test::reply("first"));
    EXPECT_EQ(post("twice"), "first"); // a server that kept the connection must not be asked again on it
    EXPECT_EQ(post("third"), std::nullopt);
    EXPECT_EQ(peer_.requestLines(), (std::vector<std::string>{"POST /once", "POST /twice", "POST /third"}));
}

TEST_F(Post, OutlivesAServerThatHangsUpDuringTheBody)
{
    peer_.hangUpEarly();
    EXPECT_EQ(http_.post(peer_.url(), "text/plain", std::string(20'000'000, 'x')), std::nullopt);
    EXPECT_EQ(peer_.requests().size(), 1u);
}

TEST_F(Post, TakesABodyWhateverTheStatus)
{
    for (const char* status : {"404 Not Found", "500 Oops", "401 Who", "417 No", "503 Later", "201 Made"}) {
        peer_.play(test::reply("<h1>page</h1>", status, "WWW-Authenticate: Basic\r\nRetry-After: 0\r\n"));
        EXPECT_EQ(post("x"), "<h1>page</h1>") << status;
    }
    EXPECT_EQ(peer_.requests().size(), 6u);
}

TEST_F(Post, TakesBodiesInEveryFraming)
{
    peer_.play("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    EXPECT_EQ(post("chunked"), "abcde");
    peer_.play("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\na\r\n0\r\nLocation: /x\r\nA: b\r\n\r\n");
    EXPECT_EQ(post("trailers"), "a");
    peer_.play("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\na");
    EXPECT_EQ(post("continue"), "a");
    peer_.play("HTTP/1.1 200 OK\r\n\r\nuntil the end");
    EXPECT_EQ(post("closed"), "until the end");
    peer_.play("HTTP/1.0 200 OK\r\nContent-Length: 3\r\n\r\nold");
    EXPECT_EQ(post("old"), "old");
    peer_.play("HTTP/1.1 204 Nothing\r\n\r\n");
    EXPECT_EQ(post("nothing"), "");
}

TEST_F(Post, LeavesACompressedBodyAsItIs)
{
    const std::string body = "\x1f\x8b\x08 not even whole";
    peer_.play(test::reply(body, "200 OK", "Content-Encoding: gzip\r\n"));
    EXPECT_EQ(post("x"), body);
}

TEST_F(Post, KeepsNoCookies)
{
    peer_.play(test::reply("a", "200 OK", "Set-Cookie: a=b; Path=/\r\n"));
    peer_.play(test::reply("b"));
    post("one");
    post("two");
    EXPECT_EQ(peer_.requests().back(), head("POST /two", "Content-Length: 0\r\n"));
}

TEST_F(Post, FailsWhenTheReplyIsCutOff)
{
    peer_.play("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n\nOK\n");
    EXPECT_EQ(post("length"), std::nullopt);
    peer_.play("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n\nOK\n\r\n");
    EXPECT_EQ(post("chunk"), std::nullopt);
    peer_.play("HTTP/1.1 200 OK\r\nContent-Le");
    EXPECT_EQ(post("head"), std::nullopt);
    peer_.play("\nOK\n");
    EXPECT_EQ(post("headless"), std::nullopt);
}

TEST_F(Post, FailsWhenNobodyListens)
{
    const std::string gone = ScriptedPeer().url();
    EXPECT_EQ(http_.post(gone, {}, {}), std::nullopt);
    EXPECT_EQ(http_.post("http://nowhere.invalid/", {}, {}), std::nullopt);
}

TEST_F(Post, TakesSixteenMebibytesAndNoMore)
{
    const std::string most(std::size_t{32} << 20, 'x');
    peer_.play(test::reply(most));
    EXPECT_EQ(post("most"), most);
    peer_.play(test::reply(most + "x"));
    EXPECT_EQ(post("more"), std::nullopt);
}

TEST_F(Post, EndsAnEndlessReply)
{
    peer_.play([](Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        while (connection.send(std::string(65536, 'x'))) {
        }
    });
    EXPECT_EQ(post("endless"), std::nullopt);
}

TEST_F(Post, GivesUpOnASilentServer)
{
    for (const char* beginning : {"", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc"}) {
        peer_.play([beginning](Connection& connection) {
            connection.send(beginning);
            connection.wait(20s);
        });
        QElapsedTimer time;
        time.start();
        EXPECT_EQ(impatient_.post(peer_.url(), {}, {}), std::nullopt);
        EXPECT_GE(time.elapsed(), 290); // libcurl counts whole milliseconds
        EXPECT_LT(time.elapsed(), 3000);
    }
}

TEST_F(Post, HasItsTimeInAllHoweverMuchMoves)
{
    const auto drip = [](const char* beginning, const char* drop, const char* end) {
        return [=](Connection& connection) {
            connection.send(beginning);
            for (int i = 0; i < 20; ++i) {
                connection.wait(50ms);
                connection.send(drop);
            }
            connection.send(end);
        };
    };
    peer_.play(drip("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n", "x", ""));
    EXPECT_EQ(impatient_.post(peer_.url() + "body", {}, {}), std::nullopt);
    peer_.play(drip("HTTP/1.1 200 OK\r\n", "X-Drop: x\r\n", "\r\n"));
    EXPECT_EQ(impatient_.post(peer_.url() + "head", {}, {}), std::nullopt);
    peer_.play(drip("HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n", "x", ""));
    EXPECT_EQ(post("patient"), std::string(20, 'x'));
}

TEST_F(Post, HasItsTimeInAllOverRedirects)
{
    for (int i = 0; i < 10; ++i) {
        peer_.play([](Connection& connection) {
            connection.wait(100ms);
            connection.send(test::redirect(302, "/again"));
        });
    }
    peer_.play(test::reply("there"));
    EXPECT_EQ(impatient_.post(peer_.url(), {}, {}), std::nullopt);
    EXPECT_LT(peer_.requests().size(), 6u);
}

TEST_F(Post, HasItsTimeInAllWhileItConnects)
{
    // Nobody accepts and the queue is full, so that the next one waits for an answer to its first packet.
    const auto open = [] { return ::socket(AF_INET, SOCK_STREAM, 0); };
    const int listener = open();
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(::bind(listener, general, size), 0);
    ASSERT_EQ(::listen(listener, 0), 0);
    ASSERT_EQ(::getsockname(listener, general, &size), 0);
    std::vector<int> waiting;
    for (int i = 0; i < 5; ++i) {
        waiting.push_back(open());
        ::fcntl(waiting.back(), F_SETFL, O_NONBLOCK);
        ::connect(waiting.back(), general, size);
    }
    QElapsedTimer time;
    time.start();
    const std::string url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    EXPECT_EQ(impatient_.post(url, {}, {}), std::nullopt);
    EXPECT_GE(time.elapsed(), 290); // libcurl counts whole milliseconds
    EXPECT_LT(time.elapsed(), 3000);
    waiting.push_back(listener);
    for (const int socket : waiting)
        ::close(socket);
}

TEST_F(Post, TakesTheReplyToAVeryLongAddress)
{
    peer_.play(test::reply("<h1>too long</h1>", "414 URI Too Long"));
    EXPECT_EQ(post(std::string(1'000'000, 'x')), "<h1>too long</h1>");
}

TEST_F(Post, BecomesAGetWhenRedirectedAsBrowsersDo)
{
    for (const int status : {301, 302, 303}) {
        peer_.play(test::redirect(status, "/there?a=b"));
        peer_.play(test::reply("found"));
        EXPECT_EQ(http_.post(peer_.url() + "here", "text/plain", "body"), "found") << status;
        EXPECT_EQ(peer_.requests().back(), head("GET /there?a=b", "")) << status;
    }
}

TEST_F(Post, StaysAPostWhenTheRedirectSaysSo)
{
    for (const int status : {307, 308}) {
        peer_.play(test::redirect(status, peer_.url() + "there"));
        peer_.play(test::reply("found"));
        EXPECT_EQ(http_.post(peer_.url() + "here", "text/plain", "body"), "found") << status;
        EXPECT_EQ(peer_.requests().back(),
                  head("POST /there", "Content-Type: text/plain\r\nContent-Length: 4\r\n") + "body");
    }
}

TEST_F(Post, FollowsTenRedirectsAndNoMore)
{
    for (int i = 0; i < 10; ++i)
        peer_.play(test::redirect(302, std::to_string(i)));
    peer_.play(test::reply("there"));
    EXPECT_EQ(post("start"), "there");
    EXPECT_EQ(peer_.requests().size(), 11u);

    for (int i = 0; i < 11; ++i)
        peer_.play(test::redirect(302, std::to_string(i)));
    peer_.play(test::reply("too far"));
    EXPECT_EQ(post("start"), std::nullopt);
    EXPECT_EQ(peer_.requests().size(), 22u);
}

TEST_F(Post, IsNeverRedirectedToAnythingButHttp)
{
    for (const char* target :
         {"file:///etc/hostname", "ftp://127.0.0.1/", "gopher://127.0.0.1/", "data:,OK", "nonsense:x"}) {
        peer_.play(test::redirect(302, target));
        EXPECT_EQ(post("x"), std::nullopt) << target;
    }
}

TEST_F(Post, TakesThePageOfARedirectThatLeadsNowhere)
{
    peer_.play(test::reply("page", "302 Elsewhere"));
    EXPECT_EQ(post("nowhere"), "page");
    peer_.play(test::reply("page", "300 Choose", "Location: /other\r\n"));
    EXPECT_EQ(post("choice"), "page");
    EXPECT_EQ(peer_.requests().size(), 2u);
}

TEST_F(Post, GoesThroughTheProxyOfTheEnvironmentExceptToThisMachine)
{
    ScriptedPeer proxy;
    proxy.play(test::reply("by proxy"));
    peer_.play(test::reply("direct"));
    qputenv("http_proxy", QByteArray::fromStdString(proxy.url()));
    EXPECT_EQ(http_.post("http://library.invalid/a/../b?c=%2f", {}, {}), "by proxy");
    EXPECT_EQ(post("x"), "direct");
    http_.post("http://localhost:1/", {}, {});
    http_.post("http://[::1]:1/", {}, {});
    http_.post("http://LOCALHOST:1/", {}, {});
    qunsetenv("http_proxy");
    EXPECT_EQ(proxy.requestLines(), std::vector<std::string>{"POST http://library.invalid/a/../b?c=%2f"});
}

} // namespace

} // namespace platform::qt
