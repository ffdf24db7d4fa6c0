#include "platform/files/FolderWalk.h"

#include "platform/files/Retried.h"

#include <cerrno>
#include <cstddef>
#include <memory>
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
constexpr int kFollowingLinks = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr int kNoLinks = kFollowingLinks | O_NOFOLLOW;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// None, with errno, where it cannot be opened.
Folder openFolder(int parent, const char* name, int flags)
{
    const int descriptor = files::retried([=] { return ::openat(parent, name, flags); });
    Folder folder(descriptor < 0 ? nullptr : ::fdopendir(descriptor));
    if (descriptor >= 0 && !folder) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
    }
    return folder;
}

WalkedItem::Kind kindOf(int folder, const dirent& entry)
{
    using Kind = WalkedItem::Kind;
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR ? Kind::folder : Kind::file;
    struct stat status = {};
    if (files::retried([&] { return ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW); }) != 0)
        return Kind::unknown;
    return S_ISDIR(status.st_mode) ? Kind::folder : Kind::file;
}

class Walk {
public:
    Walk(const std::string& root, const FolderWalkHandlers& handlers) : handlers_(handlers), path_(root)
    {
        while (path_.size() > 1 && path_.back() == '/')
            path_.pop_back();
    }

    void run()
    {
        // The root itself may be a link; below it links are left alone.
        enter(openFolder(AT_FDCWD, path_.c_str(), kFollowingLinks));
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next == level.entries.size())
                leave();
            else
                visit(level, level.entries[level.next++]);
        }
    }

private:
    struct Entry {
        std::string name;
        WalkedItem::Kind kind;
    };
    struct Level {
        Folder folder;           ///< none once it was closed for want of descriptors
        struct stat closed = {}; ///< what was closed, to be sure when coming back through ".."
        std::size_t pathSize;    ///< length of the folder's own path in path_
        std::vector<Entry> entries = {};
        std::size_t next = 0;
    };

    void visit(const Level& level, const Entry& entry)
    {
        path_.resize(level.pathSize);
        if (path_.back() != '/')
            path_ += '/';
        path_ += entry.name;
        handlers_.item({path_, entry.kind});
        if (entry.kind != WalkedItem::Kind::folder)
            return;
        errno = ESTALE; // where this level's folder could not be come back to
        enter(level.folder ? openFolder(::dirfd(level.folder.get()), entry.name.c_str(), kNoLinks) : nullptr);
    }

    /// Reads the folder at path_ and makes it the deepest level.
    void enter(Folder folder)
    {
        if (!folder)
            return tellUnreadable();
        levels_.push_back({.folder = std::move(folder), .pathSize = path_.size()});
        read(levels_.back());
        if (levels_.size() > kOpenLevels) {
            Level& above = levels_[levels_.size() - 1 - kOpenLevels];
            if (above.folder &&
                files::retried([&] { return ::fstat(::dirfd(above.folder.get()), &above.closed); }) == 0)
                above.folder.reset();
        }
    }

    void read(Level& level)
    {
        errno = 0;
        while (const dirent* entry = ::readdir(level.folder.get())) {
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                level.entries.push_back({std::string(name), kindOf(::dirfd(level.folder.get()), *entry)});
            errno = 0;
        }
        if (errno != 0)
            tellUnreadable();
    }

    void leave()
    {
        const Folder left = std::move(levels_.back().folder);
        levels_.pop_back();
        if (!left || levels_.empty() || levels_.back().folder)
            return;
        Level& level = levels_.back();
        Folder folder = openFolder(::dirfd(left.get()), "..", kNoLinks);
        struct stat status = {};
        const bool isSame = folder && files::retried([&] { return ::fstat(::dirfd(folder.get()), &status); }) == 0 &&
                            status.st_dev == level.closed.st_dev && status.st_ino == level.closed.st_ino;
        if (isSame) // or the tree was moved about meanwhile
            level.folder = std::move(folder);
    }

    void tellUnreadable() { handlers_.unreadable(path_, std::generic_category().message(errno)); }

    const FolderWalkHandlers& handlers_;
    std::string path_;
    std::vector<Level> levels_;
};

} // namespace

void walkFolder(const std::string& root, const FolderWalkHandlers& handlers)
{
    Walk(root, handlers).run();
}

} // namespace platform
