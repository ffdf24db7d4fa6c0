#include "panel/PageTitle.h"

#include "mapping/ParameterOrder.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace panel {

namespace {

using Words = std::vector<std::string_view>;

/// No tile shows more.
constexpr std::size_t kMostWords = 12;
constexpr std::string_view kBlanks = " \t\r\n";
/// Stand between what names share and the rest of them.
constexpr std::string_view kLeadOn[] = {" ", ":", ";", ",", ".",      "-",      "_",      "/",
                                        "|", ">", "+", "(", "\u2013", "\u2014", "\u00b7", "\u2022"};

Words wordsOf(std::string_view text)
{
    Words words;
    auto from = text.find_first_not_of(kBlanks);
    while (from != std::string_view::npos && words.size() < kMostWords) {
        const auto end = std::min(text.find_first_of(kBlanks, from), text.size());
        words.push_back(text.substr(from, end - from));
        from = text.find_first_not_of(kBlanks, end);
    }
    return words;
}

std::string joined(Words::const_iterator from, Words::const_iterator end)
{
    std::string text;
    for (auto word = from; word != end; ++word)
        text.append(word == from ? "" : " ").append(*word);
    return text;
}

std::string_view withoutLeadOn(std::string_view text)
{
    const auto leadOn = [&text] {
        return std::ranges::find_if(kLeadOn, [&text](std::string_view sign) { return text.ends_with(sign); });
    };
    for (auto sign = leadOn(); sign != std::end(kLeadOn); sign = leadOn())
        text.remove_suffix(sign->size());
    return text;
}

} // namespace

std::string titleOf(const std::vector<std::string_view>& names)
{
    Words first;
    Words::const_iterator shared;
    for (const std::string_view name : names) {
        const Words words = wordsOf(name);
        if (first.empty()) {
            first = words;
            shared = first.end();
        } else if (!words.empty()) {
            shared = std::min(shared, std::mismatch(first.cbegin(), shared, words.cbegin(), words.cend()).first);
        }
    }
    if (first.empty())
        return {};
    const std::string whole = joined(first.begin(), first.end());
    if (shared == first.end())
        return whole;
    const std::string beginning = joined(first.begin(), shared);
    const std::string_view title = withoutLeadOn(beginning);
    return title.empty() ? whole : std::string(title);
}

std::string pageTitle(const Entries& entries, std::int32_t page)
{
    std::vector<std::string_view> names;
    const auto begin = std::min(static_cast<std::size_t>(firstSlotOf(page)), entries.size());
    const auto end = std::min(begin + mapping::kPotsPerPage, entries.size());
    for (std::size_t i = begin; i < end; ++i) {
        if (!mapping::isEmptyEntry(entries[i]))
            names.push_back(entries[i].text(mapping::kParameter));
    }
    return titleOf(names);
}

} // namespace panel
