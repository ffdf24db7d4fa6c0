#pragma once
// What the mapping being edited can be compared with, and where the two differ. Compared is what they hold as files,
// slot by slot: what lies behind the counted pages counts, and a slot beyond the end of one of them is empty there.

#include "platform/controls/Record.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace mapping {

enum class ComparedWith { nothing, saved, previous, original, downloaded };

inline constexpr ComparedWith kAllCompared[] = {ComparedWith::nothing, ComparedWith::saved, ComparedWith::previous,
                                                ComparedWith::original, ComparedWith::downloaded};

/// The file beside the plug-in's that holds the other side; empty where none does.
std::filesystem::path comparedFile(const std::filesystem::path& file, ComparedWith side);

/// What a comparison has found.
struct Comparison {
    ComparedWith side = ComparedWith::nothing;
    std::vector<std::int32_t> positions;   ///< of the slots that differ, from 0, ascending
    std::int32_t morePages = 0;            ///< that the other side has; fewer where it is negative
    std::optional<std::int32_t> otherMode; ///< only where it differs
};

/// Positions (from 0, ascending) of the slots in which a save would write other parameters.
std::vector<std::int32_t> differingPositions(const std::vector<platform::Record>& one,
                                             const std::vector<platform::Record>& other);

/// Pages that so many entries fill, the last one perhaps in part.
std::int32_t pagesFilledBy(std::size_t entries);

/// The next of ascending positions behind `from`, or the one before it, round the ends; only of those before `end`.
std::optional<std::int32_t> positionAfter(const std::vector<std::int32_t>& positions, std::int32_t from,
                                          std::int32_t end);
std::optional<std::int32_t> positionBefore(const std::vector<std::int32_t>& positions, std::int32_t from,
                                           std::int32_t end);

} // namespace mapping
