#include "tools/community_server/Quotas.h"

namespace community_server {

namespace {

constexpr std::int64_t kDay = 24LL * 3600 * 1000;

} // namespace

bool hasUseLeft(Database& database, const std::string& what, std::int64_t allowed, std::int64_t now)
{
    Statement used(database, "SELECT count FROM usage WHERE day = ? AND what = ?", now / kDay, what);
    return (used.step() ? used.integer(0) : 0) < allowed;
}

bool countUse(Database& database, const std::string& what, std::int64_t allowed, std::int64_t now)
{
    const std::int64_t today = now / kDay;
    database.run("DELETE FROM usage WHERE day < ?", today);
    // Changes no row when there were as many as allowed.
    return allowed > 0 && database.run("INSERT INTO usage (day, what, count) VALUES (?, ?, 1) "
                                       "ON CONFLICT DO UPDATE SET count = count + 1 WHERE count < ?",
                                       today, what, allowed) == 1;
}

} // namespace community_server
