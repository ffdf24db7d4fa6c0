#pragma once
// Calls of the system that a signal interrupted are made again.

#include <cerrno>

namespace platform::files {

/// What a call answers that no signal has interrupted. Not for ::close(), which has closed all the same.
template <typename Call>
auto retried(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace platform::files
