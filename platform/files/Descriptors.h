#pragma once
// File descriptors of any kind: files, pipes, terminals.

#include <string_view>

namespace platform {

/// Writes every byte, however many calls it takes. A descriptor that would have to wait is waited for, each time at
/// most so long in milliseconds; a negative time is no limit. False when that or the writing failed. Does only what a
/// signal handler may.
bool writeWhole(int descriptor, std::string_view bytes, int patience = -1) noexcept;

} // namespace platform
