#pragma once
// A server that understands nothing: it keeps the bytes of every request and plays back what the test tells it to, one
// script a connection. Listens on a free port of 127.0.0.1.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace test {

class ScriptedPeer {
public:
    /// What a script can do with its connection; closed when the script returns.
    class Connection {
    public:
        Connection(ScriptedPeer& peer, int socket) : peer_(peer), socket_(socket) {}

        /// False when the other side or the test has ended it.
        bool send(std::string_view bytes);
        /// Says nothing until the other side hangs up; false when the test ended before.
        bool waitForTheEnd();
        /// Waits; false when the test ended meanwhile.
        bool wait(std::chrono::milliseconds time);

    private:
        ScriptedPeer& peer_;
        int socket_;
    };
    using Script = std::function<void(Connection&)>;

    ScriptedPeer();
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;
    ~ScriptedPeer();

    /// "http://127.0.0.1:PORT/"
    std::string url() const;
    std::string host() const;

    /// Scripts of the connections to come, in order. Without one a connection is closed without a reply.
    void play(Script script);
    /// The bytes are the whole reply.
    void play(std::string reply);
    /// Requests that begin so are always replied to with these bytes, and need no script.
    void always(std::string beginning, std::string reply);
    /// Reads no further than the first bytes of a request before playing the next script.
    void hangUpEarly() { hangsUpEarly_ = true; }

    /// Every request so far: its head and as much body as it announced.
    std::vector<std::string> requests() const;
    /// First lines of the requests, without the protocol: "POST /a?b".
    std::vector<std::string> requestLines() const;

private:
    void accept();
    void serve(int socket);
    std::string readRequest(int socket);
    Script scriptFor(const std::string& request);

    int listener_;
    std::uint16_t port_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable ended_;
    bool isEnding_ = false;
    bool hangsUpEarly_ = false;
    std::deque<Script> scripts_;
    std::map<std::string, std::string> standing_;
    std::vector<std::string> requests_;
    std::list<int> open_;
    std::list<std::thread> threads_;
    std::thread acceptor_;
};

/// A whole reply of HTTP/1.1 with its length; `headers` are lines that end in CR LF.
std::string reply(std::string_view body, std::string_view status = "200 OK", std::string_view headers = {});
std::string redirect(int status, const std::string& location);

} // namespace test
