#pragma once
// The clients that are connected, and how long and how much each may keep. Safe to use from several threads.

#include <chrono>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

namespace community_server {

class Connections {
public:
    using Clock = std::chrono::steady_clock;

    /// From connecting, or from the request before, to the end of a request's head.
    static constexpr std::chrono::seconds kHeadTime{10};
    /// The same to the last byte of the reply, what the library takes not counted...
    static constexpr std::chrono::seconds kWholeTime{60};
    /// ... and while memory is short.
    static constexpr std::chrono::seconds kShortTime{5};

    /// A connection too many costs its address the oldest one, one too many in all the address that has most.
    static constexpr std::size_t kMostOfAddress = 64;
    static constexpr std::size_t kMost = 448;

    /// Bytes of bodies and replies in memory. What is no larger than kSmall does not count.
    static constexpr std::size_t kMostBytesOfAddress = std::size_t{12} << 20;
    static constexpr std::size_t kMostBytes = std::size_t{48} << 20;
    static constexpr std::size_t kSmall = std::size_t{64} << 10;

    enum class Phase { idle, reading, working, sending };
    struct Connection {
        int socket;
        std::string address;
        Clock::time_point since;
        Phase phase = Phase::idle;
        bool isCut = false;
        std::size_t bytes = 0; ///< that are kept for it
    };

    /// Whether addresses tell clients apart, which they do not behind a proxy.
    explicit Connections(bool areClients) : areClients_(areClients) {}

    /// The connection is valid until it is closed, which has to be told before its socket is.
    Connection* opened(int socket, const std::string& address);
    void closed(Connection* connection);
    /// A request goes on to its next phase; idle is the end of one.
    void setPhase(Connection* connection, Phase phase);

    /// Whether so many bytes more may be kept for the client at the address; then give them back at the end. From half
    /// of kMostBytes on, the address that has most, if that is not this one, loses its oldest connection that has some.
    bool takeBytes(Connection* connection, const std::string& address, std::size_t bytes);
    void giveBytesBack(Connection* connection, const std::string& address, std::size_t bytes);

    /// Cuts those whose time is over.
    void cutLate(Clock::time_point now);

    std::size_t countIn(Phase phase) const;

private:
    void cut(Connection& connection);
    void cutOldest(const std::string* address);
    std::size_t countOf(const std::string& address) const;
    std::string addressWithMost() const;
    void makeRoom(const std::string& address, std::size_t bytes);

    const bool areClients_;
    mutable std::mutex mutex_;
    std::list<Connection> connections_; // oldest first
    std::unordered_map<std::string, std::size_t> bytes_;
    std::size_t allBytes_ = 0;
};

} // namespace community_server
