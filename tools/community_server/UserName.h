#pragma once
// Names of accounts: what may be one, and when two are the same or look the same. Any bytes may be handed in.

#include <optional>
#include <string>
#include <string_view>

namespace community_server {

struct UserName {
    std::string shown;    ///< in normal form (NFKC), blanks at the ends gone and single within
    std::string key;      ///< the same for names that differ in case alone
    std::string skeleton; ///< the same for names that look alike
};

/// The name in these bytes, when they are 3 to 32 characters of UTF-8 that can be seen. None also for the names that
/// clients send when there is none, for what looks like them, and for one with "&plugin=", which ends it in an upload.
std::optional<UserName> userNameIn(std::string_view bytes);

} // namespace community_server
