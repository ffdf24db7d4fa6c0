#pragma once
// What may be shared.

#include <cstddef>
#include <string_view>

namespace community_server {

inline constexpr std::size_t kLargestFile = std::size_t{1} << 20;

/// Whether the bytes are a property list with a parameter order of texts in it, and no more than kLargestFile.
bool isMapping(std::string_view bytes);

} // namespace community_server
