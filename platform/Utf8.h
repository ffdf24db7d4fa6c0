#pragma once

#include <string_view>

namespace platform {

/// Whether the bytes are UTF-8 throughout: no byte out of place, no overlong form, no surrogate, nothing above
/// U+10FFFF.
bool isUtf8(std::string_view bytes);

} // namespace platform
