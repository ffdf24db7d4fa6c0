#include "panel/OfferedHere.h"

#include "mapping/ParameterOrder.h"

#include <unordered_map>
#include <unordered_set>

namespace panel {

namespace {

using Index = std::unordered_map<std::string, const platform::Record*>;

/// The first parameter for each key. The blank entry is none.
template <typename Key>
Index indexOf(std::span<const platform::Record> parameters, const Key& key)
{
    Index index;
    for (const platform::Record& parameter : parameters) {
        if (!mapping::isEmptyEntry(parameter))
            index.emplace(key(parameter), &parameter);
    }
    return index;
}

std::string nameOf(const platform::Record& parameter)
{
    return std::string(parameter.text(mapping::kParameter));
}

std::string elementOf(const SlotContent& content)
{
    return content.number + ' ' + content.name;
}

bool isEmpty(const SlotContent& content)
{
    return content.name == mapping::kEmptyName;
}

} // namespace

std::vector<std::optional<SlotContent>> offeredHere(std::span<const SlotContent> contents,
                                                    std::span<const platform::Record> parameters, const FoldName& fold)
{
    const Index byElement = indexOf(parameters, mapping::elementFromEntry);
    std::optional<Index> byName, byFoldedName; // made when they are asked for
    const auto find = [&](const SlotContent& content) -> const platform::Record* {
        if (const auto same = byElement.find(elementOf(content)); same != byElement.end())
            return same->second;
        if (!byName) {
            byName = indexOf(parameters, nameOf);
            byFoldedName = indexOf(parameters, [&](const auto& parameter) { return fold(nameOf(parameter)); });
        }
        if (const auto named = byName->find(content.name); named != byName->end())
            return named->second;
        const auto alike = byFoldedName->find(fold(content.name));
        return alike != byFoldedName->end() ? alike->second : nullptr;
    };
    std::vector<std::optional<SlotContent>> found;
    for (const SlotContent& content : contents) {
        const platform::Record* parameter = isEmpty(content) ? nullptr : find(content);
        if (parameter)
            found.emplace_back(contentOf(*parameter));
        else if (isEmpty(content))
            found.emplace_back(content);
        else
            found.emplace_back();
    }
    return found;
}

Placed placedOf(std::span<const SlotContent> contents, std::span<const std::optional<SlotContent>> found)
{
    Placed placed;
    std::unordered_set<std::string_view> told;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        if (isEmpty(contents[i]))
            continue;
        ++placed.wanted;
        if (found[i])
            ++placed.placed;
        else if (told.insert(contents[i].name).second)
            placed.missing.push_back(contents[i].name);
    }
    return placed;
}

} // namespace panel
