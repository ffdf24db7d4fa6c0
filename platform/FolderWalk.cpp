#include "platform/FolderWalk.h"

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
        DIR* stream = nullptr; ///< null once the folder was closed for want of descriptors
        int folder = -1;       ///< the stream's while there is one; -1 while closed
        dev_t device = 0;      ///< who a closed folder is, to be sure when coming back through ".."
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
        level.stream = ::fdopendir(folder);
        level.folder = folder;
        level.pathSize = path_.size();
        level.firstName = level.next = names_.size();
        levels_.push_back(level); // before any handler is called, which may throw
        if (level.stream)
            readNames(level.stream, folder);
        else
            handlers_.unreadable(path_, reasonFor(errno));
        if (levels_.size() > kOpenLevels)
            closeForNow(levels_[levels_.size() - 1 - kOpenLevels]);
    }

    static void close(Level& level)
    {
        if (level.stream)
            ::closedir(std::exchange(level.stream, nullptr));
        else if (level.folder >= 0)
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

    void readNames(DIR* stream, int folder)
    {
        for (;;) {
            errno = 0;
            const dirent* entry = ::readdir(stream);
            if (!entry)
                break;
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            const auto folderAnswer = isFolder(folder, entry->d_name, entry->d_type);
            const auto kind = !folderAnswer   ? WalkedItem::Kind::unknown
                              : *folderAnswer ? WalkedItem::Kind::folder
                                              : WalkedItem::Kind::file;
            names_ += static_cast<char>(kind);
            names_ += name;
            names_ += '\0';
        }
        if (errno != 0)
            handlers_.unreadable(path_, reasonFor(errno));
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
