#include "platform/files/Files.h"

#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::files {

namespace {

/// An open file descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

private:
    int number_;
};

/// Without O_NONBLOCK a pipe that stands where a file should be would stop the program.
Descriptor openToRead(const Path& path)
{
    return Descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

bool writeWhole(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

std::optional<struct stat> statusOfFile(const Path& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? std::optional(status) : std::nullopt;
}

bool flushToDisk(int descriptor)
{
    // Some network file systems cannot flush and say so with EINVAL; that is as safe as they get.
    return ::fsync(descriptor) == 0 || errno == EINVAL;
}

/// Makes a rename in the folder survive a power cut. The file is in its place either way.
void flushFolder(const Path& folder)
{
    const Descriptor descriptor(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor)
        ::fsync(descriptor.number());
}

} // namespace

void failBeyondSizeLimits()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

bool exists(const Path& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0;
}

bool isMissing(const Path& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

std::optional<std::string> read(const Path& path, std::size_t limit)
{
    const Descriptor descriptor = openToRead(path);
    struct stat status = {};
    if (!descriptor || ::fstat(descriptor.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    if (static_cast<std::uintmax_t>(status.st_size) > limit)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0'); // one more tells a file that grew
    std::size_t used = 0;
    for (;;) {
        if (used == bytes.size())
            bytes.resize(bytes.size() * 2);
        const ssize_t got = ::read(descriptor.number(), bytes.data() + used, bytes.size() - used);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return std::nullopt;
        used += static_cast<std::size_t>(got);
        if (used > limit)
            return std::nullopt;
        if (got == 0)
            break;
    }
    bytes.resize(used);
    return bytes;
}

bool remove(const Path& path)
{
    return ::unlink(path.c_str()) == 0;
}

std::optional<std::filesystem::perms> permissions(const Path& path)
{
    const auto status = statusOfFile(path);
    return status ? std::optional(static_cast<std::filesystem::perms>(status->st_mode & 0777)) : std::nullopt;
}

std::optional<std::time_t> modificationTime(const Path& path)
{
    const auto status = statusOfFile(path);
    return status ? std::optional(status->st_mtime) : std::nullopt;
}

PartialFile::PartialFile(Path destination, Path part, std::optional<std::filesystem::perms> mode)
    : destination_(std::move(destination)), part_(std::move(part)), mode_(mode)
{
    files::remove(part_); // what a killed process may have left
    // With a mode of its own the file may be a secret, and opening it to others afterwards is safe.
    descriptor_ = ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode_ ? 0600 : 0666);
}

PartialFile::~PartialFile()
{
    if (isOpen()) {
        close();
        files::remove(part_);
    }
}

bool PartialFile::append(std::string_view bytes)
{
    return isOpen() && writeWhole(descriptor_, bytes);
}

bool PartialFile::finish()
{
    if (!isOpen())
        return false;
    if (mode_)
        ::fchmod(descriptor_, static_cast<mode_t>(*mode_)); // some mounts refuse; the content is what counts
    const bool isOnDisk = flushToDisk(descriptor_);
    if (!close() || !isOnDisk || ::rename(part_.c_str(), destination_.c_str()) != 0) {
        files::remove(part_);
        return false;
    }
    flushFolder(destination_.parent_path());
    return true;
}

bool PartialFile::close()
{
    return ::close(std::exchange(descriptor_, -1)) == 0;
}

bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode)
{
    PartialFile file(path, partialName(path), mode);
    return file.append(bytes) && file.finish();
}

bool copy(const Path& from, const Path& to)
{
    const Descriptor source = openToRead(from);
    const auto mode = permissions(from);
    if (!source || !mode)
        return false;
    PartialFile file(to, partialName(to), mode);
    std::vector<char> piece(std::size_t{1} << 18);
    for (;;) {
        const ssize_t got = ::read(source.number(), piece.data(), piece.size());
        if (got == 0)
            return file.finish();
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 || !file.append({piece.data(), static_cast<std::size_t>(got)}))
            return false;
    }
}

Path partialName(const Path& path)
{
    std::string name = path.filename().native();
    if (!name.empty())
        name[0] = name[0] == '~' ? '_' : '~';
    return path.parent_path() / name;
}

} // namespace platform::files
