// Preloaded into a program, counts what it does to the files below one folder. At the operation of a given number the
// process ends as if the plug were pulled, or is sent another signal, or the operation fails as the system can let it
// fail. Counted is what can fail in that way, or what changes something where there is a signal. Counting begins when
// the program calls kvWatchFiles(1), so that a number names the same operation in every run.
//
//   KV_FAULT_FOLDER  what is watched, an absolute path
//   KV_FAULT_AT      the number, from 1; none only counts
//   KV_FAULT         the number of an error; none sends a signal
//   KV_FAULT_SIGNAL  the number of that; none pulls the plug
//   KV_FAULT_LASTS   when set, every later operation fails too
//   KV_FAULT_TRACE   file that gets a line an operation

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

/// What decides by which errors an operation can fail.
enum class Kind { look, open, read, create, write, flush, close, name, change };

enum class Verdict { proceed, half, fail };

struct Watch {
    bool isOn = false;
    std::string folder;
    long at = 0;
    long count = 0;
    int error = 0; ///< 0 sends the signal
    int signal = SIGKILL;
    bool lasts = false;
    bool hasBegun = false;
    int trace = -1;
    bool isWatched[1024] = {};
};

Watch watch;

template <typename Function>
Function systems(Function, const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool canFailWith(Kind kind, int error)
{
    switch (error) {
    case 0: return kind != Kind::look && kind != Kind::open && kind != Kind::read;
    case EFBIG: return kind == Kind::write;
    case ENOSPC:
    case EDQUOT: return kind == Kind::create || kind == Kind::write || kind == Kind::flush || kind == Kind::close;
    case EROFS: return kind == Kind::create || kind == Kind::name || kind == Kind::change;
    case EACCES: return kind == Kind::look || kind == Kind::open || kind == Kind::create || kind == Kind::name;
    case ENOENT: return kind == Kind::look || kind == Kind::open || kind == Kind::create || kind == Kind::name;
    default: return true;
    }
}

/// The last free blocks of a disk take a part of what is written.
bool takesHalf(Kind kind, int error)
{
    return kind == Kind::write && (error == ENOSPC || error == EDQUOT || error == EFBIG);
}

void note(const char* name, const char* what)
{
    if (watch.trace < 0)
        return;
    char line[4096];
    const int length = std::snprintf(line, sizeof line, "%ld %s %s\n", watch.count, name, what);
    static const auto write = systems(&::write, "write");
    if (write(watch.trace, line, static_cast<std::size_t>(length)) != length)
        std::abort();
}

/// Counts an operation and says what becomes of it; sets errno where it is to fail.
Verdict meet(Kind kind, const char* name, const char* what)
{
    if (!canFailWith(kind, watch.error))
        return Verdict::proceed;
    ++watch.count;
    note(name, what);
    if (watch.at == 0 || watch.count < watch.at || (watch.count > watch.at && !watch.lasts))
        return Verdict::proceed;
    if (watch.error == 0) {
        if (kind == Kind::write)
            return Verdict::half;
        ::raise(watch.signal);
        return Verdict::proceed;
    }
    errno = watch.error;
    const bool isFirst = !std::exchange(watch.hasBegun, true);
    return isFirst && takesHalf(kind, watch.error) ? Verdict::half : Verdict::fail;
}

bool isBelow(const char* path)
{
    const std::size_t length = watch.folder.size();
    return watch.isOn && path && watch.folder.compare(0, length, path, std::min(length, std::strlen(path))) == 0 &&
           (path[length] == '/' || path[length] == '\0');
}

bool isWatched(int descriptor)
{
    return watch.isOn && descriptor >= 0 && descriptor < 1024 && watch.isWatched[descriptor];
}

bool isBelow(int folder, const char* path)
{
    return isBelow(path) || (path && path[0] != '/' && isWatched(folder));
}

/// Whether the operation on a path is to go on.
bool mayGoOn(Kind kind, const char* name, int folder, const char* path)
{
    return !isBelow(folder, path) || meet(kind, name, path) == Verdict::proceed;
}

std::string pathOf(int descriptor)
{
    char path[4096];
    const ssize_t length = ::readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return std::string(path, length < 0 ? 0 : static_cast<std::size_t>(length));
}

bool mayGoOn(Kind kind, const char* name, int descriptor)
{
    return !isWatched(descriptor) || meet(kind, name, pathOf(descriptor).c_str()) == Verdict::proceed;
}

int noteOpened(int descriptor, bool isOurs)
{
    if (descriptor >= 0 && descriptor < 1024)
        watch.isWatched[descriptor] = isOurs;
    return descriptor;
}

int openAs(const char* name, int folder, const char* path, int flags, mode_t mode)
{
    const bool creates = (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_ACCMODE) != O_RDONLY;
    if (!mayGoOn(creates ? Kind::create : Kind::open, name, folder, path))
        return -1;
    static const auto open = systems(&::openat, "openat");
    return noteOpened(open(folder, path, flags, mode), isBelow(folder, path));
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

/// What remains of a write that ends early.
template <typename Write>
ssize_t writeAs(const char* name, int descriptor, std::size_t size, Write write)
{
    if (!isWatched(descriptor))
        return write(size);
    switch (meet(Kind::write, name, pathOf(descriptor).c_str())) {
    case Verdict::proceed: return write(size);
    case Verdict::fail: return -1;
    case Verdict::half: break;
    }
    const ssize_t written = write(size / 2);
    if (watch.error == 0)
        ::raise(watch.signal);
    return written;
}

const char* settingOr(const char* name, const char* otherwise)
{
    const char* value = std::getenv(name);
    return value ? value : otherwise;
}

} // namespace

extern "C" {

/// Begins (1) or ends (0) counting; answers how many operations there were.
long kvWatchFiles(int on);

long kvWatchFiles(int on)
{
    if (on == 0) {
        watch.isOn = false;
        return watch.count;
    }
    watch.folder = settingOr("KV_FAULT_FOLDER", "");
    watch.at = std::atol(settingOr("KV_FAULT_AT", "0"));
    watch.error = std::atoi(settingOr("KV_FAULT", "0"));
    watch.signal = std::atoi(settingOr("KV_FAULT_SIGNAL", "9"));
    watch.lasts = std::getenv("KV_FAULT_LASTS") != nullptr;
    if (const char* trace = std::getenv("KV_FAULT_TRACE"))
        watch.trace = ::open(trace, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    watch.isOn = !watch.folder.empty();
    return 0;
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openAs("open", AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openAs("open", AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openAs("open", folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openAs("open", folder, path, flags, mode);
}

// What hardened programs call instead where the compiler cannot tell whether a mode or a size is missing.

int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);
int __openat_2(int folder, const char* path, int flags);
int __openat64_2(int folder, const char* path, int flags);
ssize_t __read_chk(int descriptor, void* bytes, std::size_t size, std::size_t room);

int __open_2(const char* path, int flags)
{
    return openAs("open", AT_FDCWD, path, flags, 0);
}

int __open64_2(const char* path, int flags)
{
    return openAs("open", AT_FDCWD, path, flags, 0);
}

int __openat_2(int folder, const char* path, int flags)
{
    return openAs("open", folder, path, flags, 0);
}

int __openat64_2(int folder, const char* path, int flags)
{
    return openAs("open", folder, path, flags, 0);
}

ssize_t __read_chk(int descriptor, void* bytes, std::size_t size, std::size_t)
{
    return read(descriptor, bytes, size);
}

int creat(const char* path, mode_t mode)
{
    return openAs("open", AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}

ssize_t read(int descriptor, void* bytes, std::size_t size)
{
    static const auto read = systems(&::read, "read");
    return mayGoOn(Kind::read, "read", descriptor) ? read(descriptor, bytes, size) : -1;
}

ssize_t write(int descriptor, const void* bytes, std::size_t size)
{
    static const auto write = systems(&::write, "write");
    return writeAs("write", descriptor, size, [&](std::size_t part) { return write(descriptor, bytes, part); });
}

ssize_t pwrite(int descriptor, const void* bytes, std::size_t size, off_t at)
{
    static const auto write = systems(&::pwrite, "pwrite");
    return writeAs("pwrite", descriptor, size, [&](std::size_t part) { return write(descriptor, bytes, part, at); });
}

ssize_t writev(int descriptor, const iovec* pieces, int count)
{
    static const auto write = systems(&::writev, "writev");
    return writeAs("writev", descriptor, static_cast<std::size_t>(count),
                   [&](std::size_t part) { return write(descriptor, pieces, static_cast<int>(part)); });
}

ssize_t sendfile(int to, int from, off_t* at, std::size_t size)
{
    static const auto send = systems(&::sendfile, "sendfile");
    return writeAs("sendfile", to, size, [&](std::size_t part) { return send(to, from, at, part); });
}

ssize_t copy_file_range(int from, off64_t* at, int to, off64_t* toAt, std::size_t size, unsigned flags)
{
    static const auto copy = systems(&::copy_file_range, "copy_file_range");
    return writeAs("copy_file_range", to, size,
                   [&](std::size_t part) { return copy(from, at, to, toAt, part, flags); });
}

int close(int descriptor)
{
    static const auto close = systems(&::close, "close");
    const bool mayClose = mayGoOn(Kind::close, "close", descriptor);
    noteOpened(descriptor, false);
    const int error = errno;
    const int result = close(descriptor); // one that fails closes all the same
    if (mayClose)
        return result;
    errno = error;
    return -1;
}

int fsync(int descriptor)
{
    static const auto flush = systems(&::fsync, "fsync");
    return mayGoOn(Kind::flush, "fsync", descriptor) ? flush(descriptor) : -1;
}

int fdatasync(int descriptor)
{
    static const auto flush = systems(&::fdatasync, "fdatasync");
    return mayGoOn(Kind::flush, "fdatasync", descriptor) ? flush(descriptor) : -1;
}

int ftruncate(int descriptor, off_t size) noexcept
{
    static const auto truncate = systems(&::ftruncate, "ftruncate");
    return mayGoOn(Kind::change, "ftruncate", descriptor) ? truncate(descriptor, size) : -1;
}

int truncate(const char* path, off_t size) noexcept
{
    static const auto truncate = systems(&::truncate, "truncate");
    return mayGoOn(Kind::change, "truncate", AT_FDCWD, path) ? truncate(path, size) : -1;
}

int fchmod(int descriptor, mode_t mode) noexcept
{
    static const auto change = systems(&::fchmod, "fchmod");
    return mayGoOn(Kind::change, "fchmod", descriptor) ? change(descriptor, mode) : -1;
}

int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    static const auto change = systems(&::fchown, "fchown");
    return mayGoOn(Kind::change, "fchown", descriptor) ? change(descriptor, owner, group) : -1;
}

int fsetxattr(int descriptor, const char* name, const void* value, std::size_t size, int flags) noexcept
{
    static const auto change = systems(&::fsetxattr, "fsetxattr");
    return mayGoOn(Kind::change, "fsetxattr", descriptor) ? change(descriptor, name, value, size, flags) : -1;
}

ssize_t fgetxattr(int descriptor, const char* name, void* value, std::size_t size) noexcept
{
    static const auto get = systems(&::fgetxattr, "fgetxattr");
    return mayGoOn(Kind::look, "fgetxattr", descriptor) ? get(descriptor, name, value, size) : -1;
}

ssize_t flistxattr(int descriptor, char* names, std::size_t size) noexcept
{
    static const auto list = systems(&::flistxattr, "flistxattr");
    return mayGoOn(Kind::look, "flistxattr", descriptor) ? list(descriptor, names, size) : -1;
}

int flock(int descriptor, int operation) noexcept
{
    static const auto lock = systems(&::flock, "flock");
    return mayGoOn(Kind::look, "flock", descriptor) ? lock(descriptor, operation) : -1;
}

int chmod(const char* path, mode_t mode) noexcept
{
    static const auto change = systems(&::chmod, "chmod");
    return mayGoOn(Kind::change, "chmod", AT_FDCWD, path) ? change(path, mode) : -1;
}

int unlink(const char* path) noexcept
{
    static const auto remove = systems(&::unlink, "unlink");
    return mayGoOn(Kind::name, "unlink", AT_FDCWD, path) ? remove(path) : -1;
}

int unlinkat(int folder, const char* path, int flags) noexcept
{
    static const auto remove = systems(&::unlinkat, "unlinkat");
    return mayGoOn(Kind::name, "unlink", folder, path) ? remove(folder, path, flags) : -1;
}

int remove(const char* path) noexcept
{
    static const auto remove = systems(static_cast<int (*)(const char*)>(&::remove), "remove");
    return mayGoOn(Kind::name, "unlink", AT_FDCWD, path) ? remove(path) : -1;
}

int rename(const char* from, const char* to) noexcept
{
    static const auto rename = systems(&::rename, "rename");
    return mayGoOn(Kind::name, "rename", AT_FDCWD, to) ? rename(from, to) : -1;
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    static const auto rename = systems(&::renameat, "renameat");
    return mayGoOn(Kind::name, "rename", toFolder, to) ? rename(fromFolder, from, toFolder, to) : -1;
}

int link(const char* from, const char* to) noexcept
{
    static const auto link = systems(&::link, "link");
    return mayGoOn(Kind::name, "link", AT_FDCWD, to) ? link(from, to) : -1;
}

int symlink(const char* target, const char* path) noexcept
{
    static const auto link = systems(&::symlink, "symlink");
    return mayGoOn(Kind::name, "symlink", AT_FDCWD, path) ? link(target, path) : -1;
}

int mkdir(const char* path, mode_t mode) noexcept
{
    static const auto make = systems(&::mkdir, "mkdir");
    return mayGoOn(Kind::create, "mkdir", AT_FDCWD, path) ? make(path, mode) : -1;
}

int rmdir(const char* path) noexcept
{
    static const auto remove = systems(&::rmdir, "rmdir");
    return mayGoOn(Kind::name, "rmdir", AT_FDCWD, path) ? remove(path) : -1;
}

int stat(const char* path, struct stat* status) noexcept
{
    static const auto look = systems(static_cast<int (*)(const char*, struct stat*)>(&::stat), "stat");
    return mayGoOn(Kind::look, "stat", AT_FDCWD, path) ? look(path, status) : -1;
}

int lstat(const char* path, struct stat* status) noexcept
{
    static const auto look = systems(static_cast<int (*)(const char*, struct stat*)>(&::lstat), "lstat");
    return mayGoOn(Kind::look, "lstat", AT_FDCWD, path) ? look(path, status) : -1;
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept
{
    static const auto look = systems(&::fstatat, "fstatat");
    return mayGoOn(Kind::look, "fstatat", folder, path) ? look(folder, path, status, flags) : -1;
}

int fstat(int descriptor, struct stat* status) noexcept
{
    static const auto look = systems(static_cast<int (*)(int, struct stat*)>(&::fstat), "fstat");
    return mayGoOn(Kind::look, "fstat", descriptor) ? look(descriptor, status) : -1;
}

} // extern "C"
