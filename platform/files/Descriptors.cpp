#include "platform/files/Descriptors.h"

#include <cerrno>
#include <cstddef>

#include <poll.h>
#include <unistd.h>

namespace platform {

bool writeWhole(int descriptor, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (written < 0 && errno == EINTR)
            continue;
        pollfd writable = {descriptor, POLLOUT, 0};
        const bool mustWait = written < 0 && errno == EAGAIN;
        if (!mustWait || ::poll(&writable, 1, -1) == 0)
            return false;
    }
    return true;
}

} // namespace platform
