#pragma once
// Which page to show to somebody who looks for something.

#include "panel/Pages.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

/// Of the pages with these positions (from 0, ascending) the one to show next: the first, or, where one of them is
/// shown, the one after it, and the first again after the last. None without positions.
std::optional<std::int32_t> nextPageOf(const std::vector<std::int32_t>& positions, std::int32_t shownPage);

/// The page that somebody means: of that number, else the first on which a name begins with the text, else the first
/// on which a word of a name does. `folded` leaves of a text what counts in comparing.
std::optional<std::int32_t> pageMeant(std::string_view typed, const Entries& entries, std::int32_t totalPages,
                                      const std::function<std::string(std::string_view)>& folded);

} // namespace panel
