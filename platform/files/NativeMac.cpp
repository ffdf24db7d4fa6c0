#include "platform/files/Native.h"

#include "platform/files/Retried.h"

#include <cerrno>

#include <copyfile.h>
#include <fcntl.h>
#include <unistd.h>

namespace platform::files {

bool flushToDrive(int descriptor)
{
    // fsync() leaves the bytes in the drive's own memory. Drives and shares that cannot flush that refuse F_FULLFSYNC.
    return retried([=] { return ::fcntl(descriptor, F_FULLFSYNC); }) != -1 ||
           retried([=] { return ::fsync(descriptor); }) == 0 || errno == EINVAL || errno == ENOTSUP;
}

void copyAttributes(int from, int to)
{
    retried([=] { return ::fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR); });
}

} // namespace platform::files
