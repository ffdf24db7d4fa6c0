#pragma once
// Files by path, with POSIX calls. A write is atomic: readers see the old file or the whole new one, never a part, and
// a failed write leaves nothing behind.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace platform::files {

using Path = std::filesystem::path;

inline constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

/// Whether something stands at the path; a link whose target is missing does not count.
bool exists(const Path& path);

/// The whole content of a regular file; none when it cannot be read, is no regular file or exceeds `limit` bytes.
std::optional<std::string> read(const Path& path, std::size_t limit = kNoLimit);

/// Removes a file or a link (the link itself, not its target). False when that failed.
bool remove(const Path& path);

/// Permission bits of a regular file, so that its successor can have them; none when there is no such file.
std::optional<std::filesystem::perms> permissions(const Path& path);

/// Writes a temporary file in the folder of `path` (named as `partialName` says), flushes it to disk, renames it to
/// `path` and flushes the folder. `mode` gives the permission bits; without it they follow the process's mask.
/// False when any step failed: `path` is then as it was and the temporary file is gone.
bool writeAtomically(const Path& path, std::string_view bytes, std::optional<std::filesystem::perms> mode = {});

/// Copies a regular file's content and permission bits, written as `writeAtomically` does; replaces what stands there.
bool copy(const Path& from, const Path& to);

/// The temporary name a write to `path` uses. Always the same for one path, so that a later write clears what a killed
/// process left.
Path partialName(const Path& path);

} // namespace platform::files
