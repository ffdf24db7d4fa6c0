#include "platform/files/FolderWalk.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

/// So many levels keep their folder open; deeper trees come back to a closed one through "..".
constexpr std::size_t kOpenLevels = 64;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string reasonFor(int error)
{
    return std::generic_category().message(error);
}

#ifdef __linux__
/// readdir() without its detours: it asks twice more what the descriptor is, and takes a buffer for each folder.
class FolderReader {
public:
    /// Answers false, with errno, where not all entries could be read.
    template <typename Each>
    bool forEachEntry(int folder, Each each)
    {
        for (;;) {
            const ssize_t size = ::getdents64(folder, buffer_, sizeof buffer_);
            if (size <= 0)
                return size == 0 || errno == ENOENT; // the folder was removed meanwhile, so there are none
            for (ssize_t at = 0; at < size;) {
                const auto* entry = reinterpret_cast<const dirent64*>(buffer_ + at);
                each(entry->d_name, entry->d_type);
                at += entry->d_reclen;
            }
        }
    }

private:
    alignas(dirent64) char buffer_[32768];
};
#else
class FolderReader {
public:
    /// Answers false, with errno, where not all entries could be read.
    template <typename Each>
    bool forEachEntry(int folder, Each each)
    {
        const int own = ::fcntl(folder, F_DUPFD_CLOEXEC, 0); // or closing the stream would close the folder
        DIR* const stream = own < 0 ? nullptr : ::fdopendir(own);
        if (!stream) {
            const int error = errno;
            if (own >= 0)
                ::close(own);
            errno = error;
            return false;
        }
        errno = 0;
        while (const dirent* entry = ::readdir(stream)) {
            each(entry->d_name, entry->d_type);
            errno = 0;
        }
        const int error = errno;
        ::closedir(stream);
        errno = error;
        return error == 0;
    }
};
#endif

class Walk {
public:
    Walk(const std::string& root, const FolderWalkHandlers& handlers) : handlers_(handlers), path_(root)
    {
        while (path_.size() > 1 && path_.back() == '/')
            path_.pop_back();
    }

    ~Walk()
    {
        while (!levels_.empty())
            leaveFolder();
    }

    void run()
    {
        // The root itself may be a link; below it links are left alone.
        enterFolder(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next == names_.size())
                leaveFolder();
            else
                visit(level);
        }
    }

private:
    struct Level {
        int folder = -1;  ///< -1 once the folder was closed for want of descriptors
        dev_t device = 0; ///< who a closed folder is, to be sure when coming back through ".."
        ino_t node = 0;
        std::size_t pathSize = 0;  ///< length of the folder's own path in path_
        std::size_t firstName = 0; ///< where the folder's entries begin in names_
        std::size_t next = 0;      ///< the entry to visit next
    };

    void visit(Level& level)
    {
        // An entry in names_: its kind as one character, its name, a NUL.
        const char* entry = names_.data() + level.next;
        const auto kind = static_cast<WalkedItem::Kind>(entry[0]);
        const std::string_view name(entry + 1);
        level.next += name.size() + 2;
        path_.resize(level.pathSize);
        if (path_.back() != '/')
            path_ += '/';
        path_ += name;
        handlers_.item({path_, kind});
        if (kind == WalkedItem::Kind::folder) {
            const int parent = level.folder;
            errno = ESTALE; // of a folder that could not be come back to
            enterFolder(parent < 0 ? -1 : ::openat(parent, path_.c_str() + path_.size() - name.size(), kOpenFolder));
        }
    }

    /// Reads the folder at path_ and makes it the deepest level; takes over the descriptor.
    void enterFolder(int folder)
    {
        if (folder < 0) {
            handlers_.unreadable(path_, reasonFor(errno));
            return;
        }
        Level level;
        level.folder = folder;
        level.pathSize = path_.size();
        level.firstName = level.next = names_.size();
        levels_.push_back(level); // before any handler is called, which may throw
        const bool isRead =
            reader_.forEachEntry(folder, [&](const char* name, unsigned char type) { keepName(folder, name, type); });
        if (!isRead)
            handlers_.unreadable(path_, reasonFor(errno));
        if (levels_.size() > kOpenLevels)
            closeForNow(levels_[levels_.size() - 1 - kOpenLevels]);
    }

    static void close(Level& level)
    {
        if (level.folder >= 0)
            ::close(level.folder);
        level.folder = -1;
    }

    static void closeForNow(Level& level)
    {
        struct stat status = {};
        if (level.folder < 0 || ::fstat(level.folder, &status) != 0)
            return;
        level.device = status.st_dev;
        level.node = status.st_ino;
        close(level);
    }

    void keepName(int folder, const char* entry, unsigned char typeHint)
    {
        const std::string_view name = entry;
        if (name == "." || name == "..")
            return;
        const auto folderAnswer = isFolder(folder, entry, typeHint);
        const auto kind = !folderAnswer   ? WalkedItem::Kind::unknown
                          : *folderAnswer ? WalkedItem::Kind::folder
                                          : WalkedItem::Kind::file;
        names_ += static_cast<char>(kind);
        names_ += name;
        names_ += '\0';
    }

    void leaveFolder()
    {
        Level left = levels_.back();
        levels_.pop_back();
        names_.resize(left.firstName);
        if (!levels_.empty() && levels_.back().folder < 0)
            comeBack(levels_.back(), left.folder);
        close(left);
    }

    /// Opens a level that was closed on the way down, by way of the folder just left.
    void comeBack(Level& level, int child)
    {
        const int folder = child < 0 ? -1 : ::openat(child, "..", kOpenFolder);
        struct stat status = {};
        if (folder >= 0 && ::fstat(folder, &status) == 0 && status.st_dev == level.device &&
            status.st_ino == level.node) {
            level.folder = folder;
            return;
        }
        if (folder >= 0)
            ::close(folder); // the tree was moved about while we were below
    }

    const FolderWalkHandlers& handlers_;
    FolderReader reader_;
    std::string path_;
    std::string names_; ///< the entries of all levels, one level after the other
    std::vector<Level> levels_;
};

} // namespace

void walkFolder(const std::string& root, const FolderWalkHandlers& handlers)
{
    Walk(root, handlers).run();
}

std::optional<bool> isFolder(int folder, const char* name, unsigned char typeHint)
{
    if (typeHint != DT_UNKNOWN)
        return typeHint == DT_DIR;
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return S_ISDIR(status.st_mode);
}

} // namespace platform
