#include "panel/OfferedHere.h"

#include "mapping/ParameterOrder.h"

#include <unordered_map>
#include <unordered_set>

namespace panel {

namespace {

bool isEmpty(const SlotContent& content)
{
    return content.name == mapping::kEmptyName;
}

/// What the list has of one wanted name: null until it is found.
struct Named {
    const platform::Record* first = nullptr;
    std::unordered_map<std::string_view, const platform::Record*> byNumber; ///< of the wanted numbers
};

using Wanted = std::unordered_map<std::string_view, Named>;

Wanted wantedNames(std::span<const SlotContent> contents)
{
    Wanted wanted;
    for (const SlotContent& content : contents) {
        if (!isEmpty(content))
            wanted[content.name].byNumber.emplace(content.number, nullptr);
    }
    return wanted;
}

/// Takes the first of several.
void take(const platform::Record*& found, const platform::Record& parameter)
{
    if (!found)
        found = &parameter;
}

void findNames(Wanted& wanted, std::span<const platform::Record> parameters)
{
    for (const platform::Record& parameter : parameters) {
        const auto named = wanted.find(parameter.text(mapping::kParameter));
        if (named == wanted.end())
            continue;
        take(named->second.first, parameter);
        const auto numbered = named->second.byNumber.find(parameter.text(mapping::kParamNum));
        if (numbered != named->second.byNumber.end())
            take(numbered->second, parameter);
    }
}

void findFoldedNames(Wanted& wanted, std::span<const platform::Record> parameters, const FoldName& fold)
{
    std::unordered_map<std::string, std::vector<Named*>> missing;
    for (auto& [name, named] : wanted) {
        if (!named.first)
            missing[fold(name)].push_back(&named);
    }
    if (missing.empty())
        return;
    for (const platform::Record& parameter : parameters) {
        const auto alike =
            mapping::isEmptyEntry(parameter) ? missing.end() : missing.find(fold(parameter.text(mapping::kParameter)));
        if (alike == missing.end())
            continue;
        for (Named* named : alike->second) {
            take(named->first, parameter);
            const auto numbered = named->byNumber.find(parameter.text(mapping::kParamNum));
            if (numbered != named->byNumber.end())
                take(numbered->second, parameter);
        }
    }
}

} // namespace

std::vector<std::optional<SlotContent>> offeredHere(std::span<const SlotContent> contents,
                                                    std::span<const platform::Record> parameters, const FoldName& fold)
{
    // What is wanted is little, the list is long: so the list is gone through, and folded only where something is
    // missing.
    Wanted wanted = wantedNames(contents);
    findNames(wanted, parameters);
    findFoldedNames(wanted, parameters, fold);
    std::vector<std::optional<SlotContent>> found;
    for (const SlotContent& content : contents) {
        if (isEmpty(content)) {
            found.emplace_back(content);
            continue;
        }
        const Named& named = wanted.at(content.name);
        const platform::Record* same = named.byNumber.at(content.number);
        const platform::Record* parameter = same ? same : named.first;
        found.push_back(parameter ? std::optional(contentOf(*parameter)) : std::nullopt);
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

Placed countOffered(const Entries& entries, std::span<const platform::Record> parameters, const FoldName& fold)
{
    std::unordered_set<std::string> seen;
    std::vector<SlotContent> contents;
    for (const platform::Record& entry : entries) {
        if (!mapping::isEmptyEntry(entry) && seen.insert(mapping::elementFromEntry(entry)).second)
            contents.push_back(contentOf(entry));
    }
    return placedOf(contents, offeredHere(contents, parameters, fold));
}

} // namespace panel
