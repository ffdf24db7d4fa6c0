#include "mapping/Comparison.h"

#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <utility>

namespace mapping {

namespace {

using Records = std::vector<platform::Record>;

bool holdTheSame(const platform::Record& one, const platform::Record& other)
{
    if (one == other)
        return true;
    const auto name = one.text(kParameter);
    return name == other.text(kParameter) && (name == kEmptyName || one.text(kParamNum) == other.text(kParamNum));
}

} // namespace

std::filesystem::path comparedFile(const std::filesystem::path& file, ComparedWith side)
{
    switch (side) {
    case ComparedWith::previous: return backupPath(file, "prev");
    case ComparedWith::original: return backupPath(file, "original");
    case ComparedWith::downloaded: return backupPath(file, "downloaded");
    default: return {};
    }
}

Differences::Differences(Records other) : other_(std::move(other)) {}

void Differences::follow(const Records& entries)
{
    static const platform::Record kNothing = emptyEntry(0, 0);
    const auto at = [](const Records& records, std::size_t i) -> const platform::Record& {
        return i < records.size() ? records[i] : kNothing;
    };
    const std::size_t known = seen_.size();
    const std::size_t count = std::max(entries.size(), other_.size());
    seen_.resize(count);
    differs_.resize(count);
    positions_.clear();
    for (std::size_t i = 0; i < count; ++i) {
        const platform::Record& entry = at(entries, i);
        if (i >= known || seen_[i] != entry) {
            seen_[i] = entry;
            differs_[i] = !holdTheSame(entry, at(other_, i));
        }
        if (differs_[i])
            positions_.push_back(static_cast<std::int32_t>(i));
    }
}

std::optional<std::int32_t> positionAfter(const std::vector<std::int32_t>& positions, std::int32_t from,
                                          std::int32_t end)
{
    const auto last = std::ranges::lower_bound(positions, end);
    if (last == positions.begin())
        return std::nullopt;
    const auto next = std::upper_bound(positions.begin(), last, from);
    return next == last ? positions.front() : *next;
}

std::optional<std::int32_t> positionBefore(const std::vector<std::int32_t>& positions, std::int32_t from,
                                           std::int32_t end)
{
    const auto last = std::ranges::lower_bound(positions, end);
    if (last == positions.begin())
        return std::nullopt;
    const auto next = std::lower_bound(positions.begin(), last, from);
    return *std::prev(next == positions.begin() ? last : next);
}

} // namespace mapping
