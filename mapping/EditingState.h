#pragma once
// The mapping being edited. Process-wide: one plug-in is edited at a time.

#include "platform/controls/Record.h"

#include <cstdint>
#include <vector>

namespace mapping {

/// The entry at position p drives pot (p mod 8) + 1 of page (p div 8) + 1. Empty until a plug-in has been loaded, then
/// at least totalPages × 8 entries.
inline std::vector<platform::Record> plistBuild;

/// Number of pages, at least 1.
inline std::int32_t totalPages = 1;

/// The page shown on the panel, from 1 to totalPages.
inline std::int32_t curPage = 1;

/// 1 = instrument, 0 = insert/effect.
inline std::int32_t plugin_Mode = 0;

} // namespace mapping
