#include "platform/files/Files.h"

#include "platform/files/Native.h"
#include "platform/files/Retried.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::files {

namespace {

constexpr std::optional kOwnerOnly(std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

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

Descriptor openFile(const Path& path, int flags)
{
    return Descriptor(retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC); }));
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

/// Makes a rename in the folder survive a power cut. The file is in its place either way.
void flushFolder(const Path& folder)
{
    if (const Descriptor descriptor = openFile(folder.empty() ? Path(".") : folder, O_RDONLY | O_DIRECTORY))
        flushToDrive(descriptor.number());
}

bool look(const Path& path, struct stat& status)
{
    return retried([&] { return ::stat(path.c_str(), &status); }) == 0;
}

bool look(int descriptor, struct stat& status)
{
    return retried([&] { return ::fstat(descriptor, &status); }) == 0;
}

/// False, with EWOULDBLOCK, while another descriptor holds the lock.
bool lock(int descriptor)
{
    return retried([=] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0;
}

bool isNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// How the names of the parts for a destination begin, so that nobody takes one for the file itself. "PROCESS-COUNT"
/// follows.
std::string partPrefix(const Path& destination)
{
    constexpr std::size_t kLongestName = 255;
    constexpr std::size_t kRoom = 24; // for the other characters
    std::string name = destination.filename().native();
    if (std::size_t size = kLongestName - kRoom; name.size() > size) {
        while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80)
            --size; // some systems refuse names that end within a character
        name.resize(size);
    }
    return "~" + name + ".";
}

/// What follows the prefix in a part's name.
bool arePartNumbers(std::string_view text)
{
    const std::size_t dash = text.find('-');
    return dash != std::string_view::npos && isNumber(text.substr(0, dash)) && isNumber(text.substr(dash + 1));
}

void clearLeftPartsOf(const Path& destination)
{
    const std::string prefix = partPrefix(destination);
    for (const Path& entry : entriesOf(destination.parent_path())) {
        const std::string name = entry.filename().native();
        if (name.starts_with(prefix) && arePartNumbers(std::string_view(name).substr(prefix.size())))
            clearLeftPart(entry);
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
    return look(path, status);
}

bool isMissing(const Path& path)
{
    struct stat status = {};
    return !look(path, status) && (errno == ENOENT || errno == ENOTDIR);
}

std::optional<Path> followed(Path path)
{
    constexpr int kMostLinks = 40; // as many as the system follows itself
    for (int links = 0; links <= kMostLinks; ++links) {
        char target[PATH_MAX];
        const ssize_t length = retried([&] { return ::readlink(path.c_str(), target, sizeof target); });
        if (length < 0 && (errno == EINVAL || errno == ENOENT || errno == ENOTDIR))
            return path;
        if (length < 0 || length == ssize_t{sizeof target})
            return std::nullopt;
        path = path.parent_path() / std::string(target, static_cast<std::size_t>(length));
    }
    return std::nullopt;
}

std::optional<std::string> read(const Path& path, std::size_t limit)
{
    const Descriptor descriptor = openToRead(path);
    struct stat status = {};
    if (!descriptor || !look(descriptor.number(), status) || !S_ISREG(status.st_mode))
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
    if (!look(path, status) || !S_ISREG(status.st_mode))
        return std::nullopt;
    return status.st_mtime;
}

bool rename(const Path& from, const Path& to)
{
    return retried([&] { return ::rename(from.c_str(), to.c_str()); }) == 0;
}

std::vector<Path> entriesOf(const Path& folder)
{
    std::vector<Path> entries;
    std::error_code failure;
    std::filesystem::directory_iterator entry;
    do {
        entry = std::filesystem::directory_iterator(folder.empty() ? Path(".") : folder, failure);
    } while (failure == std::errc::interrupted);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure))
        entries.push_back(entry->path());
    return entries;
}

Lock::Lock(const Path& file)
    : descriptor_(retried([&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC); }))
{
    struct stat status = {};
    if (descriptor_ < 0 || (look(descriptor_, status) && S_ISREG(status.st_mode) && lock(descriptor_)))
        return;
    isOthers_ = S_ISREG(status.st_mode) && errno == EWOULDBLOCK;
    ::close(std::exchange(descriptor_, -1));
}

Lock::~Lock()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool isPartOf(std::string_view destinationName, std::string_view name)
{
    return name.starts_with('~') && name.substr(1).starts_with(destinationName) &&
           name.substr(1 + destinationName.size()).starts_with('.') && arePartNumbers(name.substr(name.rfind('.') + 1));
}

void clearLeftPart(const Path& part)
{
    // Whoever makes it holds its lock; a process number would be given to another program some day.
    if (const Lock left(part); left)
        files::remove(part);
}

void clearLeftParts(const Path& folder)
{
    for (const Path& entry : entriesOf(folder)) {
        const std::string name = entry.filename().native();
        if (name.starts_with('~') && arePartNumbers(std::string_view(name).substr(name.rfind('.') + 1)))
            clearLeftPart(entry);
    }
}

PartialFile::PartialFile(const Path& destination, std::optional<std::filesystem::perms> mode)
    : destination_(destination), mode_(mode)
{
    clearLeftPartsOf(destination_);
    static std::atomic<unsigned> count = 0;
    const std::string prefix = partPrefix(destination_) + std::to_string(::getpid()) + "-";
    do {
        part_ = destination_.parent_path() / (prefix + std::to_string(++count));
        // With a mode of its own the file may be a secret, and opening it to others afterwards is safe.
        descriptor_ = retried(
            [this] { return ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode_ ? 0600 : 0666); });
    } while (isOpen() ? !keepLocked() : errno == EEXIST);
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
    if (!isOpen() || !look(descriptor, status))
        return;
    const auto give = [this](uid_t owner, gid_t group) {
        return retried([&] { return ::fchown(descriptor_, owner, group); }) == 0;
    };
    copyAttributes(descriptor, descriptor_);
    unsigned mode = status.st_mode & 07777U;
    // Only who may give files away can keep another's; the group can often be kept all the same.
    if (!give(status.st_uid, status.st_gid)) {
        mode &= ~unsigned{S_ISUID};
        if (!give(static_cast<uid_t>(-1), status.st_gid)) // another group may do no more than everybody
            mode &= ~unsigned{S_IRWXG | S_ISGID} | (mode & S_IRWXO) << 3;
    }
    mode_ = static_cast<std::filesystem::perms>(mode);
}

bool PartialFile::finish(Flush flush)
{
    if (!isOpen())
        return false;
    if (mode_) // some mounts refuse; the content is what counts
        retried([this] { return ::fchmod(descriptor_, static_cast<mode_t>(*mode_)); });
    const bool isWhole = flush == Flush::none || flushToDrive(descriptor_);
    const Descriptor locked(
        retried([this] { return ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0); })); // until it is renamed
    if (!close() || !isWhole || !files::rename(part_, destination_)) {
        files::remove(part_);
        return false;
    }
    if (flush == Flush::toDrive)
        flushFolder(destination_.parent_path());
    return true;
}

bool PartialFile::keepLocked()
{
    // Between its creation and the lock another program may have taken it for one that was left, and removed it.
    if ((lock(descriptor_) || errno != EWOULDBLOCK) && !isMissing(part_))
        return true;
    close();
    files::remove(part_);
    return false;
}

bool PartialFile::close()
{
    // An interrupted one is closed all the same, and closing it again could close somebody else's.
    return ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
}

bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode, Flush flush)
{
    const Descriptor former = mode ? Descriptor(-1) : openToRead(path);
    PartialFile file(path, former ? kOwnerOnly : mode);
    if (former)
        file.takeAfter(former.number());
    return file.append(bytes) && file.finish(flush);
}

bool copy(const Path& from, const Path& to)
{
    const Descriptor source = openToRead(from);
    struct stat status = {};
    if (!source || !look(source.number(), status) || !S_ISREG(status.st_mode))
        return false;
    PartialFile file(to, kOwnerOnly);
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
