#pragma once
// File descriptors of any kind: files, pipes, terminals.

#include <string_view>

namespace platform {

/// Writes every byte, however many calls it takes; a descriptor that would have to wait is waited for. False when the
/// writing failed. Does only what a signal handler may.
bool writeWhole(int descriptor, std::string_view bytes) noexcept;

} // namespace platform
