#include "platform/files/Native.h"

#include <cerrno>

#include <copyfile.h>
#include <fcntl.h>
#include <unistd.h>

namespace platform::files {

namespace {

template <typename Call>
bool succeeds(Call call)
{
    int done = 0;
    do
        done = call();
    while (done == -1 && errno == EINTR);
    return done != -1;
}

} // namespace

bool flushToDrive(int descriptor)
{
    // fsync() leaves the bytes in the drive's own memory. Drives and shares that cannot flush that refuse F_FULLFSYNC.
    return succeeds([descriptor] { return ::fcntl(descriptor, F_FULLFSYNC); }) ||
           succeeds([descriptor] { return ::fsync(descriptor); }) || errno == EINVAL || errno == ENOTSUP;
}

void copyAttributes(int from, int to)
{
    ::fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR);
}

} // namespace platform::files
