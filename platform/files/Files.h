#pragma once
// Files by path, with POSIX calls. A write is atomic: readers see the old file or the whole new one, never a part, and
// a failed write leaves nothing behind.

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::files {

using Path = std::filesystem::path;

inline constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

/// To be called once: from then on a write beyond the process's limit on file sizes fails, as one to a full disk does,
/// instead of ending the process.
void failBeyondSizeLimits();

/// Whether something stands at the path; a link whose target is missing does not count.
bool exists(const Path& path);

/// Whether certainly nothing stands at the path; not the opposite of `exists` where the system would not say.
bool isMissing(const Path& path);

/// What a link at the path leads to in the end, also where nothing stands there; the path itself where no link stands.
/// None where links lead in circles.
std::optional<Path> followed(Path path);

/// The whole content of a regular file; none when it cannot be read, is no regular file or exceeds `limit` bytes.
std::optional<std::string> read(const Path& path, std::size_t limit = kNoLimit);

/// Removes a file or a link (the link itself, not its target). False when that failed.
bool remove(const Path& path);

/// When a regular file was last written; none when there is no such file.
std::optional<std::time_t> modificationTime(const Path& path);

/// Gives a file or a link another name, in place of what has that. False when that failed; nothing has changed then.
bool rename(const Path& from, const Path& to);

/// What stands in a folder, in no order; nothing where that cannot be found out.
std::vector<Path> entriesOf(const Path& folder);

/// A lock on a regular file, which ends with this object and with its program in whatever way. A link is not followed.
class Lock {
public:
    explicit Lock(const Path& file);
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock();

    explicit operator bool() const { return descriptor_ >= 0; }
    /// Somebody else holds it.
    bool isOthers() const { return isOthers_; }

private:
    int descriptor_;
    bool isOthers_ = false;
};

/// Whether a file, by its name, is or was one in the making for a destination of this name, or for one whose name goes
/// on behind it, as those of backups do.
bool isPartOf(std::string_view destinationName, std::string_view name);

/// Removes a file in the making that an ended program has left.
void clearLeftPart(const Path& part);

/// Removes what ended programs have left unfinished in a folder that is ours alone.
void clearLeftParts(const Path& folder);

/// Whether a finished file has to outlast a power cut, or only the end of the program.
enum class Flush { toDrive, none };

/// A file in the making beside its destination, under a name that no other file in the making has. Gets its own name
/// when it is whole; until then, and whenever a step fails, the destination is as it was, and the part goes with this
/// object. A link at the destination is replaced, not followed.
class PartialFile {
public:
    /// Creates the part and clears those that ended programs have left for the same destination. Without a `mode` (the
    /// permission bits; until it is finished only its owner can read it) they follow the process's mask.
    explicit PartialFile(const Path& destination, std::optional<std::filesystem::perms> mode = {});
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    ~PartialFile();

    bool isOpen() const { return descriptor_ >= 0; }
    bool append(std::string_view bytes);
    /// Owner, permission bits, extended attributes and access-control list as those of an open file, as far as is
    /// permitted.
    void takeAfter(int descriptor);
    /// Flushes the part and renames it to the destination.
    bool finish(Flush flush = Flush::toDrive);

private:
    bool keepLocked();
    bool close();

    Path destination_;
    Path part_;
    std::optional<std::filesystem::perms> mode_;
    int descriptor_ = -1;
};

/// Replaces the file at `path` in one step; it keeps owner, permissions and attributes unless a `mode` is given. False
/// when any step failed: `path` is then as it was.
bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode = {},
                     Flush flush = Flush::toDrive);

/// Replaces the file at `to`, in one step, by a copy of a regular file with its owner, permissions and attributes.
bool copy(const Path& from, const Path& to);

} // namespace platform::files
