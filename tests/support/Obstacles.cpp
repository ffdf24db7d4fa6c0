#include "tests/support/Obstacles.h"

#include <stdexcept>

#include <unistd.h>

namespace test {

namespace {

constexpr uid_t kNobody = 65534;

} // namespace

Forbidden::Forbidden(Path path, std::filesystem::perms mode)
    : path_(std::move(path)), mode_(std::filesystem::status(path_).permissions()), isRoot_(::geteuid() == 0)
{
    std::filesystem::permissions(path_, mode);
    if (isRoot_ && ::seteuid(kNobody) != 0)
        throw std::runtime_error("cannot become nobody");
}

Forbidden::~Forbidden()
{
    if (isRoot_ && ::seteuid(0) != 0)
        std::abort(); // every later test would fail for no reason of its own
    std::filesystem::permissions(path_, mode_);
}

FullDisk::FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
{
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        throw std::runtime_error("cannot limit the size of files");
}

FullDisk::~FullDisk()
{
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
}

} // namespace test
