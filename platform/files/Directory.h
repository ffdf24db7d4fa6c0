#pragma once
// Folders by path, with the error that tells why the answer is missing.

#include "platform/Error.h"

#include <filesystem>
#include <optional>
#include <variant>

namespace platform::files {

/// Whether what stands at the path is a folder (links are followed), or why that cannot be told: kNoSuchFile when
/// nothing stands there, else the system's error number.
std::variant<bool, Error> isDirectory(const std::filesystem::path& path);

/// Makes the folder and those above it that are missing; none when it stands there afterwards.
std::optional<Error> createDirectories(const std::filesystem::path& path);

} // namespace platform::files
