#pragma once
// What may be shared.

#include "platform/plist/PropertyList.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace community_server {

inline constexpr std::size_t kLargestFile = std::size_t{1} << 20;

/// The property list in the bytes. Refused is also a binary one that unfolds into what no mapping needs: a shared file
/// is read for strangers, and what they may make the server keep in memory has an end.
std::optional<platform::plist::Document> readShared(std::string_view bytes);

/// Whether the bytes are a property list with a parameter order of texts in it, and no more than kLargestFile.
bool isMapping(std::string_view bytes);

} // namespace community_server
