#include "tests/support/UnhelpfulFileSystem.h"

#include <optional>
#include <utility>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::optional<std::string> theVanishing;

#if defined(__APPLE__) && defined(__x86_64__)
constexpr char kReaddir[] = "readdir$INODE64"; // what <dirent.h> makes of it there
#else
constexpr char kReaddir[] = "readdir";
#endif

} // namespace

// The program's own function comes before the system's.
extern "C" dirent* readdir(DIR* folder)
{
    static const auto systems = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, kReaddir));
    dirent* entry = systems(folder);
    if (theVanishing && entry) {
        entry->d_type = DT_UNKNOWN;
        if (*theVanishing == entry->d_name)
            ::unlinkat(::dirfd(folder), entry->d_name, 0);
    }
    return entry;
}

namespace test {

UnhelpfulFileSystem::UnhelpfulFileSystem(std::string vanishing)
{
    theVanishing = std::move(vanishing);
}

UnhelpfulFileSystem::~UnhelpfulFileSystem()
{
    theVanishing.reset();
}

} // namespace test
