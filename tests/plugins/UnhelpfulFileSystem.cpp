#include "tests/plugins/UnhelpfulFileSystem.h"

#include <cstddef>
#include <optional>
#include <utility>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::optional<std::string> theVanishing;

} // namespace

#if defined(__linux__)
// The program's own function comes before the system's.
extern "C" ssize_t getdents64(int folder, void* buffer, std::size_t room)
{
    using Function = ssize_t (*)(int, void*, std::size_t);
    static const auto systems = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "getdents64"));
    const ssize_t size = systems(folder, buffer, room);
    for (ssize_t at = 0; theVanishing && at < size;) {
        auto* entry = reinterpret_cast<dirent64*>(static_cast<char*>(buffer) + at);
        entry->d_type = DT_UNKNOWN;
        if (*theVanishing == entry->d_name)
            ::unlinkat(folder, entry->d_name, 0);
        at += entry->d_reclen;
    }
    return size;
}
#endif

namespace test {

UnhelpfulFileSystem::UnhelpfulFileSystem(std::string vanishing)
{
    theVanishing = std::move(vanishing);
}

UnhelpfulFileSystem::~UnhelpfulFileSystem()
{
    theVanishing.reset();
}

bool UnhelpfulFileSystem::isPossible()
{
#if defined(__linux__)
    return true;
#else
    return false;
#endif
}

} // namespace test
