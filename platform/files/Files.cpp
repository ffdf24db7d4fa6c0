#include "platform/files/Files.h"

#include "platform/files/Native.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <string>
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

/// What a system call answers that no signal has interrupted.
template <typename Call>
auto retried(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

Descriptor openFile(const Path& path, int flags, mode_t mode = 0)
{
    return Descriptor(retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

/// Without O_NONBLOCK a pipe that stands where a file should be would stop the program.
Descriptor openToRead(const Path& path)
{
    return openFile(path, O_RDONLY | O_NONBLOCK);
}

bool writeWhole(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = retried([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// What a link leads to, also where nothing stands there; any other path as it is.
Path followed(Path path)
{
    constexpr int kMostLinks = 40; // as many as the system follows itself
    std::error_code failure;
    for (int links = 0; links < kMostLinks; ++links) {
        const Path target = std::filesystem::read_symlink(path, failure);
        if (failure)
            break;
        path = path.parent_path() / target;
    }
    return path;
}

/// Makes a rename in the folder survive a power cut. The file is in its place either way.
void flushFolder(const Path& folder)
{
    if (const Descriptor descriptor = openFile(folder.empty() ? Path(".") : folder, O_RDONLY | O_DIRECTORY))
        flushToDrive(descriptor.number());
}

/// How the names of files in the making begin that are to replace the one of this name. The first letter differs, so
/// that nobody takes one for the file itself, and a number follows: the process that makes it.
std::string partPrefix(const Path& destination)
{
    constexpr std::size_t kLongestName = 255;
    constexpr std::size_t kLongestNumbers = 24;
    std::string name = destination.filename().native().substr(0, kLongestName - kLongestNumbers);
    if (!name.empty())
        name[0] = name[0] == '~' ? '_' : '~';
    return name + ".";
}

/// Whether the process that `number` begins with has ended.
bool isOfEndedProcess(std::string_view number)
{
    pid_t process = 0;
    const auto [end, failure] = std::from_chars(number.data(), number.data() + number.size(), process);
    const bool isNumber = failure == std::errc() && process > 0 && end != number.data() + number.size() && *end == '-';
    return isNumber && ::kill(process, 0) != 0 && errno == ESRCH;
}

void clearLeftPartsOf(const Path& destination)
{
    const std::string prefix = partPrefix(destination);
    std::error_code failure;
    std::filesystem::directory_iterator entry(destination.parent_path(), failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename().native();
        if (name.starts_with(prefix) && isOfEndedProcess(std::string_view(name).substr(prefix.size())))
            files::remove(entry->path());
    }
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
        const ssize_t got =
            retried([&] { return ::read(descriptor.number(), bytes.data() + used, bytes.size() - used); });
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
    return retried([&] { return ::unlink(path.c_str()); }) == 0;
}

std::optional<std::time_t> modificationTime(const Path& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return status.st_mtime;
}

bool rename(const Path& from, const Path& to)
{
    return retried([&] { return ::rename(from.c_str(), to.c_str()); }) == 0;
}

void clearLeftParts(const Path& folder)
{
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename().native();
        const std::size_t numbers = name.rfind('.') + 1;
        if (name.starts_with('~') && numbers > 0 && isOfEndedProcess(std::string_view(name).substr(numbers)))
            files::remove(entry->path());
    }
}

PartialFile::PartialFile(const Path& destination, std::optional<std::filesystem::perms> mode)
    : destination_(followed(destination)), mode_(mode)
{
    clearLeftPartsOf(destination_);
    static std::atomic<unsigned> made = 0;
    // One that an ended process with our number left cannot be told from one of ours, and stays.
    do {
        part_ = destination_.parent_path() /
                (partPrefix(destination_) + std::to_string(::getpid()) + "-" + std::to_string(++made));
        // With a mode of its own the file may be a secret, and opening it to others afterwards is safe.
        descriptor_ = retried([this] {
            return ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode_ ? 0600 : 0666);
        });
    } while (descriptor_ < 0 && errno == EEXIST);
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

void PartialFile::takeAfter(int descriptor)
{
    struct stat status = {};
    if (!isOpen() || ::fstat(descriptor, &status) != 0)
        return;
    copyAttributes(descriptor, descriptor_);
    // Only who may give files away can keep another's; the group can often be kept all the same.
    if (::fchown(descriptor_, status.st_uid, status.st_gid) != 0 &&
        ::fchown(descriptor_, static_cast<uid_t>(-1), status.st_gid) != 0)
        status.st_mode &= ~static_cast<mode_t>(S_IRWXG | S_ISUID | S_ISGID); // meant for another group
    mode_ = static_cast<std::filesystem::perms>(status.st_mode & 07777);
}

bool PartialFile::finish(Flush flush)
{
    if (!isOpen())
        return false;
    if (mode_) // some mounts refuse; the content is what counts
        retried([this] { return ::fchmod(descriptor_, static_cast<mode_t>(*mode_)); });
    const bool isWhole = flush == Flush::none || flushToDrive(descriptor_);
    if (!close() || !isWhole || !files::rename(part_, destination_)) {
        files::remove(part_);
        return false;
    }
    if (flush == Flush::toDrive)
        flushFolder(destination_.parent_path());
    return true;
}

bool PartialFile::close()
{
    // An interrupted one is closed all the same, and closing it again could close somebody else's.
    return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
}

bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode, Flush flush)
{
    PartialFile file(path, mode);
    const Descriptor former = mode ? Descriptor(-1) : openToRead(path);
    if (former)
        file.takeAfter(former.number());
    return file.append(bytes) && file.finish(flush);
}

bool copy(const Path& from, const Path& to)
{
    const Descriptor source = openToRead(from);
    struct stat status = {};
    if (!source || ::fstat(source.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    PartialFile file(to, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    file.takeAfter(source.number());
    std::vector<char> piece(std::size_t{1} << 18);
    for (;;) {
        const ssize_t got = retried([&] { return ::read(source.number(), piece.data(), piece.size()); });
        if (got == 0)
            return file.finish();
        if (got < 0 || !file.append({piece.data(), static_cast<std::size_t>(got)}))
            return false;
    }
}

} // namespace platform::files
