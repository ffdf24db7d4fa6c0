#pragma once
// What the mapping being edited can be compared with, and where the two differ. Compared is what they hold as files,
// slot by slot: what lies behind the counted pages counts, and a slot beyond the end of one of them is empty there.

#include "platform/controls/Record.h"

#include <cstddef>
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

/// The slots in which a save would write other parameters than another mapping holds. Kept current edit by edit, since
/// comparing ten thousand slots anew costs as much as the press that changed one.
class Differences {
public:
    Differences() = default;
    explicit Differences(std::vector<platform::Record> other);

    void follow(const std::vector<platform::Record>& entries);
    /// From 0, ascending.
    const std::vector<std::int32_t>& positions() const { return positions_; }
    const std::vector<platform::Record>& other() const { return other_; }

private:
    std::vector<platform::Record> other_;
    std::vector<platform::Record> seen_; ///< what was compared last, a record a slot of the longer side
    std::vector<bool> differs_;          ///< one a slot
    std::vector<std::int32_t> positions_;
};

/// The next of ascending positions behind `from`, or the one before it, round the ends; only of those before `end`.
std::optional<std::int32_t> positionAfter(const std::vector<std::int32_t>& positions, std::int32_t from,
                                          std::int32_t end);
std::optional<std::int32_t> positionBefore(const std::vector<std::int32_t>& positions, std::int32_t from,
                                           std::int32_t end);

} // namespace mapping
