#pragma once
// The account that is logged in. Process-wide, as the rest of the editing state.

#include <string>

namespace community {

/// What `loggedInAs` holds while nobody is logged in; uploads then go out under this name.
inline constexpr char kNobody[] = "NOONEHERE";

inline std::string loggedInAs = kNobody;

} // namespace community
