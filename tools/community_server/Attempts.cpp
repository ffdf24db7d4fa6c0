#include "tools/community_server/Attempts.h"

#include <algorithm>

namespace community_server {

namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kHour = 3600 * kSecond;
/// How long after the last wrong try, and the wait for it, nothing is held against anybody.
constexpr std::int64_t kMemory = 12 * kHour;

// Any bytes may be tried as a name, so what makes the three kinds of keys differ stands in front of it: nobody can have
// tries counted that another one would be held to.
std::string pairKey(const std::string& name, const std::string& address)
{
    return "pair " + address + '\n' + name;
}
std::string addressKey(const std::string& address)
{
    return "address " + address;
}
std::string nameKey(const std::string& name)
{
    return "name " + name;
}

} // namespace

bool Attempts::begin(const std::string& name, const std::string& address, bool isKnownThere, std::int64_t now)
{
    const std::string pair = pairKey(name, address);
    const std::string anywhere = addressKey(address);
    if (!mayTry(pair, now) || !mayTry(anywhere, now) || (!isKnownThere && !mayTry(nameKey(name), now)))
        return false;
    count(pair, {5, kHour}, now);
    count(anywhere, {20, kHour}, now);
    if (!isKnownThere)
        count(nameKey(name), {50, 60 * kSecond}, now);
    return true;
}

void Attempts::succeeded(const std::string& name, const std::string& address, bool isKnownThere)
{
    entries_.erase(pairKey(name, address));
    // Only this try: with an account of one's own the others' could be tried for ever.
    takeBack(addressKey(address));
    if (!isKnownThere)
        takeBack(nameKey(name));
}

void Attempts::takeBack(const std::string& key)
{
    const auto entry = entries_.find(key);
    if (entry == entries_.end())
        return;
    entry->second.waitsUntil = 0;
    if (--entry->second.wrong <= 0)
        entries_.erase(entry);
}

bool Attempts::mayTry(const std::string& key, std::int64_t now) const
{
    const auto entry = entries_.find(key);
    return entry == entries_.end() || entry->second.waitsUntil <= now;
}

void Attempts::count(const std::string& key, const Limit& limit, std::int64_t now)
{
    if (entries_.size() >= kMost && !entries_.contains(key))
        forgetSome(now);
    Entry& entry = entries_[key];
    if (entry.forgottenAt <= now)
        entry.wrong = 0;
    ++entry.wrong;
    const int doublings = entry.wrong - limit.free;
    const std::int64_t wait = doublings < 0 ? 0 : std::min(kSecond << std::min(doublings, 20), limit.longestMs);
    entry.waitsUntil = now + wait;
    entry.forgottenAt = entry.waitsUntil + kMemory;
}

void Attempts::forgetSome(std::int64_t now)
{
    std::erase_if(entries_, [now](const auto& entry) { return entry.second.forgottenAt <= now; });
    // Those with the fewest wrong tries, which lose the least.
    for (int least = 1; entries_.size() >= kMost; least *= 2)
        std::erase_if(entries_, [least](const auto& entry) { return entry.second.wrong <= least; });
}

} // namespace community_server
