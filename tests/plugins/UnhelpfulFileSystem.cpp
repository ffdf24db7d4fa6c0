#include "tests/plugins/UnhelpfulFileSystem.h"

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
extern "C" dirent* readdir(DIR* stream)
{
    using Function = dirent* (*)(DIR*);
    static const auto systems = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "readdir"));
    dirent* entry = systems(stream);
    if (!entry || !theVanishing)
        return entry;
    entry->d_type = DT_UNKNOWN;
    if (*theVanishing == entry->d_name)
        ::unlinkat(::dirfd(stream), entry->d_name, 0);
    return entry;
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
