#pragma once
// Files by path, with POSIX calls. A write is atomic: readers see the old file or the whole new one, never a part, and
// a failed write leaves nothing behind.

#include <cstddef>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

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

/// The whole content of a regular file; none when it cannot be read, is no regular file or exceeds `limit` bytes.
std::optional<std::string> read(const Path& path, std::size_t limit = kNoLimit);

/// Removes a file or a link (the link itself, not its target). False when that failed.
bool remove(const Path& path);

/// Permission bits of a regular file, so that its successor can have them; none when there is no such file.
std::optional<std::filesystem::perms> permissions(const Path& path);

/// When a regular file was last written; none when there is no such file.
std::optional<std::time_t> modificationTime(const Path& path);

/// A file in the making beside its destination. Gets its name when it is whole; until then, and whenever a step fails,
/// the destination is as it was, and the part goes with this object.
class PartialFile {
public:
    /// Creates the part, in place of one that was left there. `mode` gives the finished file's permission bits; until
    /// it is finished only its owner can read it. Without it they follow the process's mask.
    PartialFile(Path destination, Path part, std::optional<std::filesystem::perms> mode = {});
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    ~PartialFile();

    const Path& part() const { return part_; }
    bool isOpen() const { return descriptor_ >= 0; }
    bool append(std::string_view bytes);
    /// Flushes the part to disk, renames it to the destination and flushes the folder.
    bool finish();

private:
    bool close();

    Path destination_;
    Path part_;
    std::optional<std::filesystem::perms> mode_;
    int descriptor_;
};

/// Writes a PartialFile named as `partialName` says and gives it the name `path`. False when any step failed: `path` is
/// then as it was and the temporary file is gone.
bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode = {});

/// Copies a regular file's content and permission bits, written as `writeAtomically` does; replaces what stands there.
bool copy(const Path& from, const Path& to);

/// The temporary name a write to `path` uses: its own name but for the first character, so that where a path could be
/// read and deleted it can be written again. Always the same for one path, so that a later write clears what a killed
/// process left.
Path partialName(const Path& path);

} // namespace platform::files
