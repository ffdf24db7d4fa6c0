#include "tools/community_server/Browsing.h"

#include "tools/community_server/Pages.h"
#include "tools/community_server/Protocol.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

namespace community_server {

namespace {

/// The same for texts that differ in case or form alone.
std::string folded(std::string_view text)
{
    UErrorCode status = U_ZERO_ERROR;
    const auto* form = icu::Normalizer2::getNFKCCasefoldInstance(status);
    icu::UnicodeString result = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
    if (form)
        result = form->normalize(result, status);
    std::string bytes;
    return result.toUTF8String(bytes);
}

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(std::move(word));
    return words;
}

bool hasAll(const std::string& text, const std::vector<std::string>& words)
{
    return std::ranges::all_of(words, [&](const std::string& word) { return text.find(word) != std::string::npos; });
}

using Found = std::pair<std::string, pages::Plugin>; // under its folded name, by which the list is sorted

/// All that have the words in their names, without their downloads.
std::vector<Found> pluginsWith(Database& database, const std::vector<std::string>& words)
{
    std::vector<Found> found;
    // Answered from the index of what is listed alone.
    Statement select(database, "SELECT plugin, count(*), date(max(uploaded) / 1000, 'unixepoch') FROM mapping "
                               "WHERE deleted = 0 AND hash IS NOT NULL GROUP BY plugin");
    while (select.step())
        if (std::string name = folded(select.text(0)); hasAll(name, words))
            found.emplace_back(std::move(name), pages::Plugin{std::string(select.text(0)), select.integer(1), 0,
                                                              std::string(select.text(2))});
    std::ranges::sort(found, {}, [](const Found& each) { return std::tie(each.first, each.second.name); });
    return found;
}

std::int64_t downloadsFor(Database& database, const std::string& plugin)
{
    Statement select(
        database, "SELECT sum(downloads) FROM mapping WHERE plugin = ? AND deleted = 0 AND hash IS NOT NULL", plugin);
    return select.step() ? select.integer(0) : 0;
}

constexpr char kMappings[] = "SELECT patchID, plugin, name, date(uploaded / 1000, 'unixepoch'), downloads, comments, "
                             "'files/' || fileName, length(bytes), bytes FROM mapping "
                             "JOIN account ON account.id = mapping.account JOIN file USING (hash) "
                             "WHERE deleted = 0 AND ";

/// The mapping of a row of kMappings; its chart only when the file is no larger.
pages::Mapping mappingIn(const Statement& row, std::int32_t mostPages, std::int64_t largest)
{
    pages::Mapping mapping;
    mapping.id = row.integer(0);
    mapping.plugin = row.text(1);
    mapping.uploader = row.text(2);
    mapping.date = row.text(3);
    mapping.downloads = row.integer(4);
    mapping.comments = row.text(5);
    mapping.location = row.text(6);
    if (row.integer(7) <= largest)
        mapping.chart = pages::chartOf(row.text(8), mostPages);
    return mapping;
}

} // namespace

std::string pluginsPage(Database& database, std::string_view query)
{
    const std::string search = pages::formValue(query, "search");
    const std::vector<Found> found = pluginsWith(database, wordsOf(folded(search)));
    const auto count = static_cast<std::int64_t>(found.size());
    const auto place = pages::placeOf(pages::formValue(query, "page"), count, pages::kPluginsPerPage);
    std::vector<pages::Plugin> shown;
    const std::int64_t first = (place.page - 1) * pages::kPluginsPerPage;
    for (std::int64_t row = first; row < std::min(count, first + pages::kPluginsPerPage); ++row) {
        shown.push_back(found[static_cast<std::size_t>(row)].second);
        shown.back().downloads = downloadsFor(database, shown.back().name);
    }
    return pages::pluginList(shown, count, search, place);
}

std::optional<std::string> pluginPage(Database& database, std::string_view query)
{
    const std::string name = pages::formValue(query, "name");
    Statement select(database, "SELECT count(*) FROM mapping WHERE plugin = ? AND deleted = 0 AND hash IS NOT NULL",
                     name);
    const std::int64_t count = select.step() ? select.integer(0) : 0;
    if (count == 0)
        return std::nullopt;
    const auto place = pages::placeOf(pages::formValue(query, "page"), count, pages::kMappingsPerPage);
    // Counted off in the index; only what is shown is joined with its file.
    Statement rows(database,
                   (std::string(kMappings) +
                    "patchID IN (SELECT patchID FROM mapping WHERE plugin = ? AND deleted = 0 AND hash IS NOT NULL "
                    "ORDER BY uploaded DESC, patchID DESC LIMIT ? OFFSET ?) ORDER BY uploaded DESC, patchID DESC")
                       .c_str(),
                   name, pages::kMappingsPerPage, (place.page - 1) * pages::kMappingsPerPage);
    std::vector<pages::Mapping> mappings;
    while (rows.step())
        mappings.push_back(mappingIn(rows, pages::kPagesInList, pages::kLargestInList));
    return pages::plugin(name, mappings, count, place);
}

std::optional<std::string> mappingPage(Database& database, std::string_view query)
{
    const auto id = patchIdIn(pages::formValue(query, "id"));
    if (!id)
        return std::nullopt;
    Statement row(database, (std::string(kMappings) + "patchID = ?").c_str(), *id);
    if (!row.step())
        return std::nullopt;
    return pages::mapping(mappingIn(row, pages::kPagesAlone, row.integer(7)));
}

} // namespace community_server
