#pragma once
// What the program answers on the command line instead of opening its window.

#include <optional>
#include <span>
#include <string_view>

/// What to print when one of the arguments, the first of which is the program's own name, asks for the version or for
/// help; none when the window is to be opened, whatever else they are.
std::optional<std::string_view> answerTo(std::span<char* const> arguments);
