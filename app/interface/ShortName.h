#pragma once
// How much of a name is told where there is little room. Names from files may have any length.

#include <QString>

namespace interface {

/// So that a tip with several names stays one that can be read.
inline constexpr qsizetype kLongestInTip = 90;

/// The name, or its first characters and a mark that there are more.
inline QString shortName(const QString& name, qsizetype longest = kLongestInTip)
{
    return name.size() <= longest ? name : name.left(longest) + QChar(0x2026);
}

} // namespace interface
