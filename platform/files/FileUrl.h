#pragma once
// The `file:` URL of a path.

#include <filesystem>
#include <string>

namespace platform {

/// "file://" and the absolute path's bytes, every byte but letters, digits and `-._~/` as %XX: blanks, quotes, `#`, `%`
/// and what is not ASCII (or not even UTF-8) survive.
std::string fileUrl(const std::filesystem::path& path);

} // namespace platform
