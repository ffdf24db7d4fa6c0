#include "platform/files/Directory.h"

#include "platform/files/Retried.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/stat.h>

namespace platform::files {

namespace {

Error fileError(int code, std::string description, int number)
{
    return {std::string(kFileErrorDomain), code, {std::move(description), std::generic_category().message(number)}};
}

} // namespace

std::variant<bool, Error> isDirectory(const std::filesystem::path& path)
{
    struct stat status = {};
    if (retried([&] { return ::stat(path.c_str(), &status); }) == 0)
        return S_ISDIR(status.st_mode);
    const int number = errno;
    return fileError(number == ENOENT ? kNoSuchFile : number, "Could not examine “" + path.native() + "”.", number);
}

std::optional<Error> createDirectories(const std::filesystem::path& path)
{
    std::error_code failure;
    do {
        std::filesystem::create_directories(path, failure);
    } while (failure == std::errc::interrupted);
    if (!failure)
        return std::nullopt;
    return fileError(failure.value(), "Could not create the folder “" + path.native() + "”.", failure.value());
}

} // namespace platform::files
