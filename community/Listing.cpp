#include "community/Listing.h"

#include <set>
#include <variant>

namespace community {

namespace {

constexpr std::size_t kMostColumns = 24;

bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}

bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}

char toUpper(char c)
{
    return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether a word begins at `i`: "D" of "uploadDate", "N" of "IDNumber", nothing within "patchID".
bool beginsWord(std::string_view key, std::size_t i)
{
    if (i == 0 || !isUpper(key[i]))
        return false;
    return !isUpper(key[i - 1]) || (i + 1 < key.size() && isLower(key[i + 1]));
}

} // namespace

std::optional<std::string> textOf(const platform::Record* entry, std::string_view key)
{
    const auto text = entry ? entry->findText(key) : std::nullopt;
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::vector<Column> columnsOf(const std::vector<platform::Record>& entries)
{
    std::vector<Column> columns{{kUserComments, "Comments"}};
    std::set<std::string> seen{kPatchId, kFileLocation, kUserComments};
    for (const platform::Record& entry : entries) {
        for (const std::string& key : entry.keys()) {
            if (columns.size() == kMostColumns)
                return columns;
            if (seen.insert(key).second)
                columns.push_back({key, readableTitle(key)});
        }
    }
    return columns;
}

std::string readableTitle(std::string_view key)
{
    std::string title;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const bool isSeparator = key[i] == '_' || key[i] == '-' || key[i] == ' ';
        if ((isSeparator || beginsWord(key, i)) && !title.empty() && title.back() != ' ')
            title += ' ';
        if (!isSeparator)
            title += title.empty() || title.back() == ' ' ? toUpper(key[i]) : key[i];
    }
    while (title.ends_with(' '))
        title.pop_back();
    return title.empty() ? std::string(key) : title;
}

} // namespace community
