#pragma once
// Walks everything below a folder, hidden items included, links to folders not followed. Survives folders that vanish
// or cannot be read, names that are not UTF-8, paths beyond the system's limit, and any depth.

#include <functional>
#include <string>

namespace platform {

struct WalkedItem {
    enum class Kind { file, folder, unknown };

    const std::string& path; ///< root, then the names as the file system has them
    Kind kind;               ///< unknown when the system would not say; anything but a folder is a file
};

struct FolderWalkHandlers {
    std::function<void(const WalkedItem&)> item;
    /// A folder that could not be opened or read to its end; `reason` is the system's text.
    std::function<void(const std::string& path, const std::string& reason)> unreadable;
};

/// Visits every item below `root` (not `root` itself): a folder first, then what is in it, in the order the system
/// yields.
void walkFolder(const std::string& root, const FolderWalkHandlers& handlers);

} // namespace platform
