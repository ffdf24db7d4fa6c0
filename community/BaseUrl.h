#pragma once
// The community server. In a source file of its own, so that tests can be built with another address.

#include <string>

namespace community {

/// Plain HTTP, ending in "/". Fixed when the program is built (CMake's KV_COMMUNITY_BASE_URL).
const std::string& baseUrl();

} // namespace community
