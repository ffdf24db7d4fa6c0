#include "tools/community_server/Connections.h"

#include <sys/socket.h>

#include <algorithm>
#include <iterator>

namespace community_server {

Connections::Connection* Connections::opened(int socket, const std::string& address)
{
    const std::lock_guard lock(mutex_);
    connections_.push_back({socket, address, Clock::now()});
    if (areClients_ && countOf(address) > kMostOfAddress)
        cutOldest(&address);
    else if (connections_.size() > kMost && areClients_) {
        const std::string most = addressWithMost();
        cutOldest(&most);
    } else if (connections_.size() > kMost)
        cutOldest(nullptr);
    return &connections_.back();
}

void Connections::closed(Connection* connection)
{
    const std::lock_guard lock(mutex_);
    connections_.remove_if([=](const Connection& other) { return &other == connection; });
}

void Connections::setPhase(Connection* connection, Phase phase)
{
    const std::lock_guard lock(mutex_);
    // What the library takes is not the client's time.
    if (phase == Phase::idle || connection->phase == Phase::working)
        connection->since = Clock::now();
    connection->phase = phase;
}

bool Connections::takeBytes(const std::string& address, std::size_t bytes)
{
    const std::lock_guard lock(mutex_);
    std::size_t& ofAddress = bytes_[address];
    const bool fits = ofAddress + bytes <= kMostBytesOfAddress && allBytes_ + bytes <= kMostBytes;
    if (fits) {
        ofAddress += bytes;
        allBytes_ += bytes;
    } else if (ofAddress == 0) {
        bytes_.erase(address);
    }
    return fits;
}

void Connections::giveBytesBack(const std::string& address, std::size_t bytes)
{
    const std::lock_guard lock(mutex_);
    const auto ofAddress = bytes_.find(address);
    if (ofAddress == bytes_.end())
        return;
    ofAddress->second -= bytes;
    allBytes_ -= bytes;
    if (ofAddress->second == 0)
        bytes_.erase(ofAddress);
}

void Connections::cutLate(Clock::time_point now)
{
    const std::lock_guard lock(mutex_);
    const auto whole = allBytes_ > kMostBytes / 2 ? kShortTime : kWholeTime;
    for (Connection& connection : connections_) {
        const auto limit = connection.phase == Phase::idle ? std::min(kHeadTime, whole) : whole;
        if (connection.phase != Phase::working && now - connection.since > limit)
            cut(connection);
    }
}

std::size_t Connections::countIn(Phase phase) const
{
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(connections_.begin(), connections_.end(),
                                                  [=](const auto& connection) { return connection.phase == phase; }));
}

void Connections::cut(Connection& connection)
{
    if (!connection.isCut)
        ::shutdown(connection.socket, SHUT_RDWR);
    connection.isCut = true;
}

void Connections::cutOldest(const std::string* address)
{
    // Never the newest, which has come just now.
    const auto oldest = std::find_if(connections_.begin(), std::prev(connections_.end()), [=](const auto& connection) {
        return !connection.isCut && connection.phase != Phase::working && (!address || connection.address == *address);
    });
    if (oldest != std::prev(connections_.end()))
        cut(*oldest);
}

std::size_t Connections::countOf(const std::string& address) const
{
    return static_cast<std::size_t>(
        std::count_if(connections_.begin(), connections_.end(),
                      [&](const auto& connection) { return connection.address == address && !connection.isCut; }));
}

std::string Connections::addressWithMost() const
{
    std::unordered_map<std::string, std::size_t> counts;
    for (const Connection& connection : connections_)
        if (!connection.isCut)
            ++counts[connection.address];
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& one, const auto& other) { return one.second < other.second; });
    return most->first;
}

} // namespace community_server
