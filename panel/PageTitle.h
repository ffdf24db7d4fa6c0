#pragma once
// What a page is called at a glance, by the parameters that stand on it.

#include "panel/Pages.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

/// The words that all the names share at their beginning, "Osc 1" of "Osc 1 Level" and "Osc 1 Pan", without signs that
/// only lead on to the rest; else the first name. Empty without names. Words are parted by blanks and shared whole; no
/// more than a dozen are told, one blank between them.
std::string titleOf(const std::vector<std::string_view>& names);

/// That of the parameters on a page (from 1), which may lie behind the last one; empty where none stands there.
std::string pageTitle(const Entries& entries, std::int32_t page);

} // namespace panel
