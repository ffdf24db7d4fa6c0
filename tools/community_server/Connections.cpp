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

bool Connections::takeBytes(Connection* connection, const std::string& address, std::size_t bytes)
{
    const std::lock_guard lock(mutex_);
    if (areClients_)
        makeRoom(address, bytes);
    std::size_t& ofAddress = bytes_[address];
    const bool fits = ofAddress + bytes <= kMostBytesOfAddress && allBytes_ + bytes <= kMostBytes;
    if (fits) {
        ofAddress += bytes;
        allBytes_ += bytes;
        connection->bytes += bytes;
    } else if (ofAddress == 0) {
        bytes_.erase(address);
    }
    return fits;
}

void Connections::giveBytesBack(Connection* connection, const std::string& address, std::size_t bytes)
{
    const std::lock_guard lock(mutex_);
    const auto ofAddress = bytes_.find(address);
    if (ofAddress == bytes_.end())
        return;
    ofAddress->second -= bytes;
    allBytes_ -= bytes;
    connection->bytes -= bytes;
    if (ofAddress->second == 0)
        bytes_.erase(ofAddress);
}

void Connections::makeRoom(const std::string& address, std::size_t bytes)
{
    std::unordered_map<std::string, std::size_t> kept; // without what is about to be given back
    std::size_t all = 0;
    for (const Connection& connection : connections_)
        if (!connection.isCut && connection.bytes > 0) {
            kept[connection.address] += connection.bytes;
            all += connection.bytes;
        }
    if (kept.empty() || all + bytes <= kMostBytes / 2)
        return;
    const auto most = std::ranges::max_element(kept, {}, [](const auto& each) { return each.second; });
    const auto own = kept.find(address);
    if (most->second <= (own == kept.end() ? 0 : own->second) + bytes)
        return;
    const auto oldest = std::ranges::find_if(connections_, [&](const Connection& connection) {
        return !connection.isCut && connection.bytes > 0 && connection.address == most->first;
    });
    cut(*oldest);
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
