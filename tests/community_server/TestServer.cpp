#include "tests/community_server/TestServer.h"

#include "community/Requests.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/community_server/Database.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace test {

namespace {

constexpr int kPatience = 10; // seconds

sockaddr_in addressOf(const std::string& host, std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = inet_addr(host.c_str());
    return address;
}

/// The first line that comes through the descriptor.
std::string lineFrom(int descriptor)
{
    std::string line;
    char c = 0;
    while (::read(descriptor, &c, 1) == 1 && c != '\n')
        line += c;
    return line;
}

} // namespace

int connectTo(std::uint16_t port, const std::string& from)
{
    std::signal(SIGPIPE, SIG_IGN); // the server may have gone
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    const timeval patience{kPatience, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const sockaddr_in source = addressOf(from, 0);
    const sockaddr_in server = addressOf(kHere, port);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&source), sizeof source) == 0 &&
        ::connect(socket, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0)
        return socket;
    ::close(socket);
    return -1;
}

bool hasOtherAddresses()
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in other = addressOf("127.0.0.2", 0);
    const bool has = ::bind(socket, reinterpret_cast<const sockaddr*>(&other), sizeof other) == 0;
    ::close(socket);
    return has;
}

bool sendAll(int socket, const std::string& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(socket, bytes.data() + sent, bytes.size() - sent, 0);
        if (count <= 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

std::string readAll(int socket)
{
    std::string bytes;
    char part[65536];
    for (ssize_t count = 0; (count = ::recv(socket, part, sizeof part, 0)) > 0;)
        bytes.append(part, static_cast<std::size_t>(count));
    return bytes;
}

std::string valueIn(const std::string& json, const std::string& path)
{
    static const TemporaryFolder folder;
    static community_server::Database database(folder.path());
    community_server::Statement select(database, "SELECT json_extract(?, ?)", json, path);
    return select.step() ? std::string(select.text(0)) : std::string();
}

TestServer::TestServer(const Path& data, const Arguments& further, std::uint16_t port)
{
    Arguments arguments{KV_COMMUNITY_SERVER, "--port", std::to_string(port), "--data", data.native()};
    arguments.insert(arguments.end(), further.begin(), further.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    int output[2] = {-1, -1};
    EXPECT_EQ(::pipe(output), 0);
    process_ = ::fork();
    if (process_ == 0) {
        ::dup2(output[1], STDOUT_FILENO);
        ::close(output[0]);
        ::close(output[1]);
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    ::close(output[1]);
    const std::string address = lineFrom(output[0]);
    ::close(output[0]);
    const std::size_t colon = address.rfind(':');
    EXPECT_NE(colon, std::string::npos) << "the server does not listen";
    if (colon != std::string::npos)
        port_ = static_cast<std::uint16_t>(std::atoi(address.c_str() + colon + 1));
}

TestServer::~TestServer()
{
    if (process_ < 0)
        return;
    ::kill(process_, SIGTERM);
    int status = -1;
    EXPECT_EQ(::waitpid(process_, &status, 0), process_);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

void TestServer::kill()
{
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
}

Reply TestServer::send(const std::string& bytes, const std::string& from) const
{
    const int socket = connectTo(port_, from);
    if (socket < 0)
        return {};
    sendAll(socket, bytes);
    const std::string reply = readAll(socket);
    ::close(socket);
    const std::size_t head = reply.find("\r\n\r\n");
    return head == std::string::npos ? Reply{} : Reply{std::atoi(reply.c_str() + 9), reply.substr(head + 4)};
}

Reply TestServer::get(const std::string& target, const std::string& from) const
{
    return send("GET " + target + " HTTP/1.1\r\nHost: library\r\nConnection: close\r\n\r\n", from);
}

Reply TestServer::post(const std::string& target, const std::string& body, const std::string& headers,
                       const std::string& from) const
{
    return send("POST /" + target + " HTTP/1.1\r\nHost: library\r\nConnection: close\r\n" + headers +
                    "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body,
                from);
}

std::string TestServer::createAccount(const std::string& name, const std::string& from) const
{
    const std::string reply = post(community::newUserAddress("", name, "ada@example.org"), {}, {}, from).body;
    const std::size_t start = reply.find("PIN is ");
    return start == std::string::npos ? "" : reply.substr(start + 7, 6);
}

std::string TestServer::join(const std::string& name, const std::string& from) const
{
    std::string pin = createAccount(name, from);
    EXPECT_EQ(logIn(name, pin, from), "\nOK\n") << name;
    return pin;
}

std::string TestServer::logIn(const std::string& name, const std::string& pin, const std::string& from) const
{
    return post(community::loginCheckAddress("", name, pin), {}, {}, from).body;
}

Reply TestServer::upload(const std::string& user, const std::string& file, const std::string& comments,
                         const std::string& plugin, const std::string& from) const
{
    return post(community::uploadAddress("", user, plugin, comments), community::uploadBody(file),
                "Content-Type: " + community::uploadContentType() + "\r\n", from);
}

std::string TestServer::listing(const std::string& plugin) const
{
    return post(community::listingAddress("", plugin)).body;
}

std::string TestServer::listed(const std::string& key, const std::string& plugin) const
{
    return valueIn(listing(plugin), "$[0]." + key);
}

} // namespace test
