#pragma once
// Threads with a connection to the library each, that do one job after the other. How many wait is bounded.

#include "tools/community_server/Database.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace community_server {

class Workers {
public:
    using Job = std::function<void(Database&)>;

    Workers(const std::filesystem::path& folder, int threads, std::size_t mostWaiting);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    /// Does what waits first.
    ~Workers();

    /// False, and nothing done, when too many wait. The job must not throw.
    bool post(Job job);

private:
    void work(Database database);

    const std::size_t mostWaiting_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> waiting_;
    bool isEnding_ = false;
    std::vector<std::thread> threads_;
};

} // namespace community_server
