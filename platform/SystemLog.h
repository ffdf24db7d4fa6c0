#pragma once
// Where the system keeps what programs have to tell: standard error; on macOS the unified log, under the program's
// bundle identifier, and standard error too where somebody watches it on a terminal.

#include "platform/Effects.h"

#include <memory>

namespace platform {

/// The one log of the program.
std::unique_ptr<Log> systemLog(const char* bundleIdentifier);

} // namespace platform
