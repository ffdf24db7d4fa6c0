#include "platform/files/Native.h"

#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

#include <sys/xattr.h>
#include <unistd.h>

namespace platform::files {

bool flushToDrive(int descriptor)
{
    int done = 0;
    do
        done = ::fsync(descriptor);
    while (done != 0 && errno == EINTR);
    // Some network file systems cannot flush and say so with EINVAL; that is as safe as they get.
    return done == 0 || errno == EINVAL;
}

void copyAttributes(int from, int to)
{
    const ssize_t room = ::flistxattr(from, nullptr, 0);
    if (room <= 0)
        return;
    std::string names(static_cast<std::size_t>(room), '\0');
    const ssize_t size = ::flistxattr(from, names.data(), names.size());
    std::vector<char> value;
    for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
        const char* name = names.c_str() + at; // access-control lists are among them
        const ssize_t length = ::fgetxattr(from, name, nullptr, 0);
        value.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        if (length >= 0 && ::fgetxattr(from, name, value.data(), value.size()) == length)
            ::fsetxattr(to, name, value.data(), value.size(), 0);
        at += std::char_traits<char>::length(name) + 1;
    }
}

} // namespace platform::files
