#pragma once
// The texts of a parameter-order file and the mapping entries made of them. An element is "NUMBER NAME", split at its
// first blank; an element without a blank, in practice "-1", is an empty slot.

#include "platform/controls/Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mapping {

inline constexpr std::int32_t kPotsPerPage = 8;

/// Keys of an entry: the parameter's number and name as text, and where the entry stood when it was made.
inline constexpr char kParamNum[] = "ParamNum";
inline constexpr char kParameter[] = "Parameter";
inline constexpr char kKorvelPage[] = "KorvelPage";
inline constexpr char kKorvelControlNo[] = "KorvelControlNo";

/// What an empty slot holds, in an entry and in the file.
inline constexpr char kEmptyNumber[] = "0";
inline constexpr char kEmptyName[] = "-";
inline constexpr char kEmptyElement[] = "-1";

/// Editing modes as the file records them.
inline constexpr std::int32_t kModeInstrument = 1;
inline constexpr std::int32_t kModeInsertEffect = 0;

/// The elements of an order or a catalogue, which somebody else keeps.
struct Elements : std::vector<std::string_view> {
    using vector::vector;
    Elements(const std::vector<std::string>& texts) : vector(texts.begin(), texts.end()) {}
};

// Parse

/// An entry of the element with the given page and position.
platform::Record entryFromElement(std::string_view element, std::int32_t page, std::int32_t controlNo);

/// An entry that holds no parameter.
platform::Record emptyEntry(std::int32_t page, std::int32_t controlNo);

bool isEmptyEntry(const platform::Record& entry);

/// Whether two entries have the same number and name.
bool isSameParameter(const platform::Record& one, const platform::Record& other);

/// Name of the parameter at a position (from 0); an empty slot's where the mapping ends before it.
std::string_view nameAt(const std::vector<platform::Record>& entries, std::int32_t position);

/// Page (from 1) of the n-th element (from 1).
std::int32_t pageOfElement(std::int32_t n);

/// Pages that so many elements fill, the last one perhaps in part.
std::int32_t pagesFilledBy(std::size_t elements);

// Convert

/// The mode that the text of a file's mode entry names; none for anything but "1" and "0".
std::optional<std::int32_t> modeFromText(std::string_view text);

/// The mode a catalogue suggests: instrument when one of its elements speaks of a volume, else insert/effect.
std::int32_t guessedMode(const Elements& catalogue);

/// Every distinct parameter of an order, in order of first appearance, behind a leading "-1".
std::vector<std::string> catalogueOf(const Elements& order);

/// The list offered for assignment: the blank entry, then the catalogue's parameters; pages and positions are 0.
std::vector<platform::Record> parameterList(const Elements& catalogue);

/// The mapping of an order, its last page filled up with empty entries: at least one page of eight.
std::vector<platform::Record> mappingOf(const Elements& order);

// Write

/// "-1" for an empty entry, else number, blank, name.
std::string elementFromEntry(const platform::Record& entry);

/// The elements of every entry, empty ones included, in order.
std::vector<std::string> orderOf(const std::vector<platform::Record>& entries);

} // namespace mapping
