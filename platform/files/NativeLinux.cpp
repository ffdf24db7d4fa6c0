#include "platform/files/Native.h"

#include "platform/files/Retried.h"

#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

#include <sys/xattr.h>
#include <unistd.h>

namespace platform::files {

bool flushToDrive(int descriptor)
{
    // Some network file systems cannot flush and say so with EINVAL; that is as safe as they get.
    return retried([=] { return ::fsync(descriptor); }) == 0 || errno == EINVAL;
}

void copyAttributes(int from, int to)
{
    const ssize_t room = retried([=] { return ::flistxattr(from, nullptr, 0); });
    if (room <= 0)
        return;
    std::string names(static_cast<std::size_t>(room), '\0');
    const ssize_t size = retried([&] { return ::flistxattr(from, names.data(), names.size()); });
    std::vector<char> value;
    for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
        const char* name = names.c_str() + at; // access-control lists are among them
        at += std::char_traits<char>::length(name) + 1;
        const ssize_t length = retried([=] { return ::fgetxattr(from, name, nullptr, 0); });
        if (length < 0)
            continue;
        value.resize(static_cast<std::size_t>(length));
        if (retried([&] { return ::fgetxattr(from, name, value.data(), value.size()); }) == length)
            retried([&] { return ::fsetxattr(to, name, value.data(), value.size(), 0); });
    }
}

} // namespace platform::files
