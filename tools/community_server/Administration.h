#pragma once
// What a host does with a library, whether its server runs or not.

#include <ostream>
#include <string>
#include <vector>

namespace community_server {

/// What community_admin ends with.
enum AdminStatus {
    kAdminDone = 0,
    kAdminFailed = 1, ///< or what was checked is not as it should be
    kAdminNotUnderstood = 2,
    kAdminNothingThere = 3, ///< no such mapping or account
};

/// Runs "community_admin ARGUMENTS", with the environment as "NAME=value" each.
int administer(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
               std::ostream& out, std::ostream& err);

} // namespace community_server
