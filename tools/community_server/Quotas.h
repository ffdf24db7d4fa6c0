#pragma once
// What an account and an address may do in a day, which begins at midnight UTC.

#include "tools/community_server/Database.h"

#include <cstdint>
#include <string>

namespace community_server {

struct Quotas {
    std::int64_t uploadsOfUser = 50;
    std::int64_t uploadsOfAddress = 200;
    std::int64_t accountsOfAddress = 20;
};

/// Whether one more of `what` is allowed on the day of `now` (milliseconds since 1970).
bool hasUseLeft(Database& database, const std::string& what, std::int64_t allowed, std::int64_t now);

/// Counts one more, unless there were as many as allowed. To be called within the transaction that does it, so that
/// only what was done counts.
bool countUse(Database& database, const std::string& what, std::int64_t allowed, std::int64_t now);

} // namespace community_server
