#include "tests/support/ScriptedPeer.h"

#include <cstdlib>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

namespace {

/// The same socket, which programs that a test starts do not inherit.
int closedOnExec(int socket)
{
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    return socket;
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

} // namespace

bool ScriptedPeer::Connection::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool ScriptedPeer::Connection::waitForTheEnd()
{
    char byte = 0;
    while (::recv(socket_, &byte, 1, 0) > 0) {
    }
    const std::lock_guard lock(peer_.mutex_);
    return !peer_.isEnding_;
}

bool ScriptedPeer::Connection::wait(std::chrono::milliseconds time)
{
    std::unique_lock lock(peer_.mutex_);
    return !peer_.ended_.wait_for(lock, time, [this] { return peer_.isEnding_; });
}

ScriptedPeer::ScriptedPeer() : listener_(closedOnExec(::socket(AF_INET, SOCK_STREAM, 0)))
{
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, general, size) != 0 || ::listen(listener_, 64) != 0 ||
        ::getsockname(listener_, general, &size) != 0)
        std::abort();
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { accept(); });
}

ScriptedPeer::~ScriptedPeer()
{
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
        for (const int socket : open_)
            ::shutdown(socket, SHUT_RDWR);
    }
    ended_.notify_all();
    // A Mac does not wake who accepts when the socket is shut down; another connection does.
    const int caller = ::socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port_);
    ::connect(caller, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    acceptor_.join();
    ::close(caller);
    ::close(listener_);
    for (std::thread& thread : threads_)
        thread.join();
}

std::string ScriptedPeer::url() const
{
    return "http://" + host() + "/";
}

std::string ScriptedPeer::host() const
{
    return "127.0.0.1:" + std::to_string(port_);
}

void ScriptedPeer::play(Script script)
{
    const std::lock_guard lock(mutex_);
    scripts_.push_back(std::move(script));
}

void ScriptedPeer::play(std::string reply)
{
    play([reply = std::move(reply)](Connection& connection) { connection.send(reply); });
}

void ScriptedPeer::always(std::string beginning, std::string reply)
{
    const std::lock_guard lock(mutex_);
    standing_[std::move(beginning)] = std::move(reply);
}

std::vector<std::string> ScriptedPeer::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> ScriptedPeer::requestLines() const
{
    std::vector<std::string> lines;
    for (const std::string& request : requests())
        lines.push_back(request.substr(0, request.find(" HTTP/1.1\r\n")));
    return lines;
}

void ScriptedPeer::accept()
{
    for (;;) {
        const int socket = closedOnExec(::accept(listener_, nullptr, nullptr));
        const std::lock_guard lock(mutex_);
        if (isEnding_ || socket < 0) {
            if (socket >= 0)
                ::close(socket);
            return;
        }
        open_.push_back(socket);
        threads_.emplace_back([this, socket] { serve(socket); });
    }
}

void ScriptedPeer::serve(int socket)
{
    const std::string request = readRequest(socket);
    if (const Script script = scriptFor(request)) {
        Connection connection(*this, socket);
        script(connection);
    }
    const std::lock_guard lock(mutex_);
    open_.remove(socket);
    ::close(socket);
}

std::string ScriptedPeer::readRequest(int socket)
{
    std::string request;
    std::size_t whole = std::string::npos;
    char buffer[65536];
    while (request.size() < whole) {
        const ssize_t got = ::recv(socket, buffer, hangsUpEarly_ ? 16 : sizeof buffer, 0);
        if (got <= 0)
            break;
        request.append(buffer, static_cast<std::size_t>(got));
        if (hangsUpEarly_)
            break;
        const std::size_t head = request.find("\r\n\r\n");
        if (whole != std::string::npos || head == std::string::npos)
            continue;
        const std::size_t length = request.find("\r\nContent-Length: ");
        whole = head + 4;
        if (length < head)
            whole += static_cast<std::size_t>(std::strtoull(request.c_str() + length + 18, nullptr, 10));
    }
    return request;
}

ScriptedPeer::Script ScriptedPeer::scriptFor(const std::string& request)
{
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    for (const auto& [beginning, reply] : standing_) {
        if (request.starts_with(beginning))
            return [bytes = reply](Connection& connection) { connection.send(bytes); };
    }
    if (scripts_.empty())
        return {};
    Script script = std::move(scripts_.front());
    scripts_.pop_front();
    return script;
}

std::string reply(std::string_view body, std::string_view status, std::string_view headers)
{
    std::string text = "HTTP/1.1 ";
    text.append(status).append("\r\n").append(headers);
    text.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n").append(body);
    return text;
}

std::string redirect(int status, const std::string& location)
{
    return reply("moved", std::to_string(status) + " Elsewhere", "Location: " + location + "\r\n");
}

} // namespace test
