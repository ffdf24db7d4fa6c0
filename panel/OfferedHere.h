#pragma once
// Parameters of one plug-in looked up in the list of another.

#include "panel/Pages.h"
#include "platform/controls/Record.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

/// A name without what does not count when names are compared.
using FoldName = std::function<std::string(std::string_view)>;

/// What the list has for each of the contents: of the same number and name, else of the same name, else as names are
/// folded; the first of several. An empty content stays one; what is not offered is none.
std::vector<std::optional<SlotContent>> offeredHere(std::span<const SlotContent> contents,
                                                    std::span<const platform::Record> parameters, const FoldName& fold);

/// How many parameters were wanted, and the names of those that were not there.
struct Placed {
    std::size_t wanted = 0;
    std::size_t placed = 0;
    std::vector<std::string> missing; ///< each once, in their order

    bool operator==(const Placed&) const = default;
};

Placed placedOf(std::span<const SlotContent> contents, std::span<const std::optional<SlotContent>> found);

/// Of a whole mapping, each of its parameters counted once.
Placed countOffered(const Entries& entries, std::span<const platform::Record> parameters, const FoldName& fold);

} // namespace panel
