#include "mapping/MappingFile.h"

#include "mapping/ParameterOrder.h"

#include <string>

namespace mapping {

namespace plist = platform::plist;

namespace {

constexpr char kOrder[] = "ControlSurfaceParameterOrder";
constexpr char kCatalogue[] = "KorvelCSUnique";
constexpr char kMode[] = "KorvelCSMode";

const plist::Array* arrayAt(const plist::Dictionary& file, std::string_view key)
{
    const plist::Value* value = file.find(key);
    return value ? value->asArray() : nullptr;
}

/// The texts of an array, in order; what is no text reads as an empty slot.
Elements textsAt(const plist::Dictionary& file, std::string_view key)
{
    Elements texts;
    const plist::Array* array = arrayAt(file, key);
    if (!array)
        return texts;
    texts.reserve(array->size());
    for (const plist::Value& element : *array) {
        const std::string* text = element.asString();
        texts.push_back(text ? std::string_view(*text) : kEmptyElement);
    }
    return texts;
}

std::optional<std::int32_t> recordedMode(const plist::Dictionary& file)
{
    const plist::Array* array = arrayAt(file, kMode);
    return array && !array->empty() ? modeFromText(array->front().describe()) : std::nullopt;
}

plist::Array arrayOf(const std::vector<std::string>& texts)
{
    return plist::Array(texts.begin(), texts.end());
}

} // namespace

LoadedMapping loadMapping(const plist::Dictionary& file, std::optional<std::int32_t> keptMode)
{
    const Elements catalogue = textsAt(file, kCatalogue);
    const std::optional<std::int32_t> mode = keptMode ? keptMode : recordedMode(file);
    LoadedMapping loaded;
    loaded.parameters = parameterList(catalogue);
    loaded.entries = mappingOf(textsAt(file, kOrder));
    loaded.totalPages = static_cast<std::int32_t>(loaded.entries.size()) / kPotsPerPage;
    loaded.mode = mode ? *mode : guessedMode(catalogue);
    return loaded;
}

bool hasCatalogue(const plist::Dictionary& file)
{
    const plist::Array* catalogue = arrayAt(file, kCatalogue);
    return catalogue && !catalogue->empty();
}

void addCatalogue(plist::Dictionary& file)
{
    file.set(kCatalogue, arrayOf(catalogueOf(textsAt(file, kOrder))));
}

void storeMapping(plist::Dictionary& file, const std::vector<platform::Record>& entries, std::int32_t mode)
{
    file.set(kOrder, arrayOf(orderOf(entries)));
    file.set(kMode, plist::Array{std::to_string(mode)});
}

} // namespace mapping
