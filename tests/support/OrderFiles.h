#pragma once
// Parameter-order files for tests, made and read back.

#include "platform/plist/PropertyList.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace test {

using Texts = std::vector<std::string>;

inline constexpr char kOrder[] = "ControlSurfaceParameterOrder";
inline constexpr char kCatalogue[] = "KorvelCSUnique";
inline constexpr char kMode[] = "KorvelCSMode";

/// "1 name 1", "2 name 2", ... `count` of them.
Texts numbered(int count, const std::string& name = "Knob");

platform::plist::Dictionary orderFile(const Texts& order);
/// The file of an order as bytes.
std::string orderBytes(const Texts& order);
void writeDictionary(const Path& file, const platform::plist::Dictionary& dictionary,
                     platform::plist::Form form = platform::plist::Form::xml);
/// The root dictionary of a file; throws when it is none.
platform::plist::Dictionary readDictionary(const Path& file);
/// The texts of the array under a key; throws when it is no array of texts.
Texts textsAt(const Path& file, const char* key);

} // namespace test
