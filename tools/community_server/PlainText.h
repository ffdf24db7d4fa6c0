#pragma once
// Text from outside as something to look at: nothing in it moves a cursor, rings, or hides.

#include <string>
#include <string_view>

namespace community_server {

enum class Lines { one, several };

/// The same in UTF-8 with control characters as the symbols that stand for them, and U+FFFD for what no text may hold.
/// Line feeds and tabs stay in several lines, and are blanks in one.
std::string plainText(std::string_view text, Lines lines);

/// The same without the marks that turn the direction of writing, for where nothing would end what they began.
std::string withoutDirections(std::string_view text);

} // namespace community_server
