#include "tools/community_server/Workers.h"

#include <utility>

namespace community_server {

Workers::Workers(const std::filesystem::path& folder, int threads, std::size_t mostWaiting) : mostWaiting_(mostWaiting)
{
    // All opened before any thread runs, so that what cannot be opened is thrown with nothing to end.
    std::vector<Database> databases;
    for (int i = 0; i < threads; ++i)
        databases.emplace_back(folder);
    for (Database& database : databases)
        threads_.emplace_back([this, own = std::move(database)]() mutable { work(std::move(own)); });
}

Workers::~Workers()
{
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

bool Workers::post(Job job)
{
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.size() >= mostWaiting_)
            return false;
        waiting_.push_back(std::move(job));
    }
    changed_.notify_one();
    return true;
}

void Workers::work(Database database)
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        const Job job = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        job(database);
        lock.lock();
    }
}

} // namespace community_server
