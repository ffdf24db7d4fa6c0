#pragma once
// The three keys of a parameter-order file that are ours to read or write. Every other key of its root dictionary is
// left alone.

#include "platform/controls/Record.h"
#include "platform/plist/PropertyList.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace mapping {

/// What a load puts into the editing state.
struct LoadedMapping {
    std::vector<platform::Record> parameters; ///< the list offered for assignment, the blank entry first
    std::vector<platform::Record> entries;    ///< the mapping, totalPages × 8 entries
    std::int32_t totalPages = 1;
    std::int32_t mode = 0;
};

/// Reads a mapping from a file's root dictionary; missing keys read as empty. The mode is `keptMode` where given, else
/// the one the file records, else the one its catalogue suggests.
LoadedMapping loadMapping(const platform::plist::Dictionary& file, std::optional<std::int32_t> keptMode);

/// Whether the file already carries its plug-in's catalogue.
bool hasCatalogue(const platform::plist::Dictionary& file);

/// Adds the catalogue of the file's own order.
void addCatalogue(platform::plist::Dictionary& file);

/// Replaces the file's order and mode.
void storeMapping(platform::plist::Dictionary& file, const std::vector<platform::Record>& entries, std::int32_t mode);

} // namespace mapping
