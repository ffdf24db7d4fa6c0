#pragma once
// Threads with a connection to the library each, that do one job after the other, those of different clients in turns.
// How many wait is bounded; when there are too many, it is the client with most that has one less, so that a few who
// ask much leave the others their turn.

#include "tools/community_server/Database.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace community_server {

class Workers {
public:
    /// Called with none when it had to give way to another client's.
    using Job = std::function<void(Database*)>;

    /// Of a client, and of all: less than a quarter of the connections, so that what waits at all four groups of
    /// workers leaves some to others.
    static constexpr std::size_t kMostOfClient = 64;
    static constexpr std::size_t kMost = 96;

    Workers(const std::filesystem::path& folder, int threads);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    /// Does what waits first.
    ~Workers();

    /// False, and nothing done, when too many of this client wait. The job must not throw.
    bool post(const std::string& client, Job job);

private:
    struct Turn {
        std::string client;
        std::deque<Job> jobs;
    };
    static std::size_t sizeOf(const Turn& turn) { return turn.jobs.size(); }
    void work(Database database);
    Job next();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Turn> turns_; // no client twice
    std::size_t waiting_ = 0;
    bool isEnding_ = false;
    std::vector<std::thread> threads_;
};

} // namespace community_server
