#pragma once

// What the sources of the property-list codec share: the readers and writers of the forms, their bounds, and the text
// of numbers, dates and characters.

#include "platform/Utf8.h"
#include "platform/plist/PropertyList.h"

namespace platform::plist {

inline constexpr std::size_t kMaxFileBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMaxTextBytes = Unfolded{}.textBytes;
inline constexpr std::size_t kMaxValues = Unfolded{}.values;
inline constexpr std::size_t kMaxDepth = 512;

// Of a binary file; its version's last digit follows.
inline constexpr std::string_view kBinaryStart = "bplist0";

// Whatever follows the root's end is ignored. Neither of the texts has a byte-order mark.
std::optional<Value> readXml(std::string_view utf8);
std::optional<Value> readOldStyle(std::string_view utf8);
std::optional<Value> readBinary(std::string_view bytes, const Unfolded& most = {});
// Nothing if XML cannot hold some value.
std::optional<std::string> writeXml(const Value& root);
std::string writeBinary(const Value& root);

// Decimal, with or without exponent; "inf", "infinity" and "nan" in any case; signed. 64 bits wide.
std::optional<Real> realFrom(std::string_view text);
// A text that realFrom() reads as the same number, of at most 17 digits; 1.0 is "1".
std::string textOf(double number);

// Seconds since 2001-01-01T00:00:00Z, proleptic Gregorian, with a year 0. Nothing if the text is no DateText.
std::optional<double> secondsOfDate(std::string_view text);
// YYYY-MM-DDTHH:MM:SSZ; nothing if such a text would not read back as the same seconds.
std::optional<std::string> dateOfSeconds(Real seconds);

inline constexpr std::string_view kBlanks = " \t\r\n"; // of XML
// Without them at both ends.
std::string_view trimmed(std::string_view text);

} // namespace platform::plist
