#include "tools/community_server/Workers.h"

#include <algorithm>
#include <utility>

namespace community_server {

Workers::Workers(const std::filesystem::path& folder, int threads)
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

bool Workers::post(const std::string& client, Job job)
{
    Job givesWay;
    {
        const std::lock_guard lock(mutex_);
        auto turn = std::find_if(turns_.begin(), turns_.end(), [&](const Turn& each) { return each.client == client; });
        const std::size_t own = turn == turns_.end() ? 0 : turn->jobs.size();
        if (own >= kMostOfClient)
            return false;
        if (waiting_ >= kMost) {
            const auto most = std::ranges::max_element(turns_, {}, sizeOf);
            if (sizeOf(*most) <= own + 1)
                return false;
            givesWay = std::move(most->jobs.back());
            most->jobs.pop_back();
            --waiting_;
        }
        if (turn == turns_.end())
            turn = turns_.insert(turns_.end(), Turn{client, {}});
        turn->jobs.push_back(std::move(job));
        ++waiting_;
    }
    changed_.notify_one();
    if (givesWay)
        givesWay(nullptr);
    return true;
}

void Workers::work(Database database)
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || waiting_ > 0; });
        if (waiting_ == 0)
            return;
        {
            const Job job = next();
            lock.unlock();
            job(&database);
        }
        lock.lock();
    }
}

Workers::Job Workers::next()
{
    Turn turn = std::move(turns_.front());
    turns_.pop_front();
    Job job = std::move(turn.jobs.front());
    turn.jobs.pop_front();
    if (!turn.jobs.empty())
        turns_.push_back(std::move(turn));
    --waiting_;
    return job;
}

} // namespace community_server
