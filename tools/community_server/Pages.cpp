#include "tools/community_server/Pages.h"

#include "chart/PrintedChart.h"
#include "mapping/ParameterOrder.h"
#include "platform/Utf8.h"
#include "tools/community_server/PlainText.h"
#include "tools/community_server/SharedFile.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace community_server::pages {

namespace {

std::string escaped(std::string_view text, Lines lines = Lines::one)
{
    std::string html;
    for (const char letter : plainText(text, lines)) {
        switch (letter) {
        case '&': html += "&amp;"; break;
        case '<': html += "&lt;"; break;
        case '>': html += "&gt;"; break;
        case '"': html += "&quot;"; break;
        case '\'': html += "&#39;"; break;
        default: html += letter;
        }
    }
    return html;
}

/// Text whose direction does not reach beyond it.
std::string isolated(std::string_view text)
{
    return "<bdi>" + escaped(text) + "</bdi>";
}

std::string forTitle(std::string_view text)
{
    return escaped(withoutDirections(text));
}

std::string percentEncoded(std::string_view text)
{
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~";
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char byte : text)
        if (kPlain.find(byte) != std::string_view::npos) {
            encoded += byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            encoded += {'%', kDigits[value >> 4], kDigits[value & 15]};
        }
    return encoded;
}

/// "1 mapping", "12 mappings"
std::string counted(std::int64_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string page(const std::string& title, const std::string& content)
{
    return "<!DOCTYPE html>\n"
           "<html lang=\"en\">\n<head>\n"
           "<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta name=\"color-scheme\" content=\"light dark\">\n"
           "<title>" +
           title +
           "</title>\n"
           "<link rel=\"stylesheet\" href=\"style.css\">\n"
           "<link rel=\"icon\" href=\"icon.svg\" type=\"image/svg+xml\">\n"
           "</head>\n<body>\n" +
           content +
           "<footer><p>To load or share a mapping, choose the plug-in in kvOrvantaLogic_Tool, then Browse or "
           "Share.</p></footer>\n"
           "</body>\n</html>\n";
}

std::string header(std::string_view search)
{
    return "<header>\n"
           "<p class=\"library\"><a href=\"./\">Community library</a></p>\n"
           "<form action=\"./\" method=\"get\" role=\"search\">\n"
           "<label for=\"search\">Search plug-ins</label>\n"
           "<input type=\"search\" id=\"search\" name=\"search\" maxlength=\"100\" autocomplete=\"off\" dir=\"auto\" "
           "value=\"" +
           escaped(search) +
           "\">\n"
           "<button type=\"submit\">Search</button>\n"
           "</form>\n"
           "</header>\n";
}

/// Ways to the pages beside this one; nothing where there is but one. `address` ends in a query to go on.
std::string ways(const std::string& address, Place place)
{
    if (place.pages <= 1)
        return {};
    const auto way = [&](std::int64_t page, const char* relation, const char* text) {
        return "<a rel=\"" + std::string(relation) + "\" href=\"" + address + "page=" + std::to_string(page) + "\">" +
               text + "</a>\n";
    };
    std::string html = "<nav class=\"ways\" aria-label=\"Pages\">\n";
    if (place.page > 1)
        html += way(place.page - 1, "prev", "Previous");
    html += "<span>Page " + std::to_string(place.page) + " of " + std::to_string(place.pages) + "</span>\n";
    if (place.page < place.pages)
        html += way(place.page + 1, "next", "Next");
    return html + "</nav>\n";
}

std::string pluginAddress(std::string_view name)
{
    return "plugin?name=" + percentEncoded(name);
}

std::string time(std::string_view date)
{
    return "<time datetime=\"" + escaped(date) + "\">" + escaped(date) + "</time>";
}

std::string chartTable(const Chart& chart, const std::string& name)
{
    // It has the keyboard's focus, so that whoever has no mouse can scroll it on a narrow screen.
    std::string html =
        "<div class=\"chart\" role=\"group\" tabindex=\"0\" aria-label=\"" + name + "\">\n<table>\n<thead><tr>";
    for (const std::string& title : chart.table.header)
        html += "<th scope=\"col\">" + escaped(title) + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (const auto& row : chart.table.rows) {
        html += "<tr><th scope=\"row\">" + escaped(row.front()) + "</th>";
        for (auto pot = row.begin() + 1; pot != row.end(); ++pot)
            html += *pot == ::mapping::kEmptyName ? "<td class=\"empty\">–</td>" : "<td>" + isolated(*pot) + "</td>";
        html += "</tr>\n";
    }
    return html + "</tbody>\n</table>\n</div>\n";
}

enum class Within { list, itself };

std::string mappingArticle(const Mapping& mapping, Within within)
{
    const std::string id = std::to_string(mapping.id);
    const std::string address = "mapping?id=" + id;
    const std::string level = within == Within::list ? "h2" : "h1";
    std::string html =
        "<article class=\"mapping\" aria-labelledby=\"m" + id + "\">\n<" + level + " id=\"m" + id + "\">";
    if (within == Within::list)
        html += "<a href=\"" + address + "\">By " + isolated(mapping.uploader) + "</a>";
    else
        html += isolated(mapping.plugin) + " by " + isolated(mapping.uploader);
    html +=
        "</" + level + ">\n<p class=\"facts\">" + time(mapping.date) + " · " + counted(mapping.downloads, "download");
    if (mapping.chart)
        html += " · " + counted(mapping.chart->pages, "page");
    html += "</p>\n";
    if (!mapping.comments.empty())
        html += "<p class=\"comments\" dir=\"auto\">" + escaped(mapping.comments, Lines::several) + "</p>\n";
    if (!mapping.chart) {
        html += within == Within::list ? "<p><a href=\"" + address + "\">Show the chart</a></p>\n"
                                       : std::string("<p>There is no chart of this mapping.</p>\n");
        return html + "</article>\n";
    }
    html += chartTable(*mapping.chart, "Chart of mapping " + id);
    const auto shown = static_cast<std::int32_t>(mapping.chart->table.rows.size());
    if (shown < mapping.chart->pages) {
        const std::string all = counted(mapping.chart->pages, "page");
        html += within == Within::list ? "<p><a href=\"" + address + "\">Show all " + all + "</a></p>\n"
                                       : "<p>These are the first " + std::to_string(shown) + " of " + all + ".</p>\n";
    }
    if (within == Within::itself)
        html +=
            "<p><a download=\"CSParameterOrder.plist\" href=\"" + escaped(mapping.location) + "\">The file</a></p>\n";
    return html + "</article>\n";
}

} // namespace

Place placeOf(std::string_view page, std::int64_t rows, std::int64_t rowsPerPage)
{
    Place place;
    place.pages = std::max<std::int64_t>(1, (rows + rowsPerPage - 1) / rowsPerPage);
    std::from_chars(page.data(), page.data() + page.size(), place.page);
    place.page = std::clamp<std::int64_t>(place.page, 1, place.pages);
    return place;
}

std::string formValue(std::string_view query, std::string_view name)
{
    while (!query.empty()) {
        const std::size_t end = std::min(query.find('&'), query.size());
        const std::string_view field = query.substr(0, end);
        query.remove_prefix(std::min(end + 1, query.size()));
        if (!field.starts_with(name) || field.substr(name.size(), 1) != "=")
            continue;
        const std::string_view value = field.substr(name.size() + 1);
        std::string decoded;
        for (std::size_t at = 0; at < value.size(); ++at) {
            unsigned char byte = 0;
            const char* digits = value.data() + at + 1;
            if (value[at] == '%' && at + 2 < value.size() &&
                std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
                decoded += static_cast<char>(byte);
                at += 2;
            } else {
                decoded += value[at] == '+' ? ' ' : value[at];
            }
        }
        return platform::isUtf8(decoded) ? decoded : std::string();
    }
    return {};
}

std::optional<Chart> chartOf(std::string_view file, std::int32_t most)
{
    const auto document = readShared(file);
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* value = root ? root->find("ControlSurfaceParameterOrder") : nullptr;
    const auto* order = value ? value->asArray() : nullptr;
    if (!order)
        return std::nullopt;
    ::mapping::Elements first; // no more than is shown, since a record takes many times what its element does
    for (const auto& element : *order) {
        if (first.size() == static_cast<std::size_t>(most) * ::mapping::kPotsPerPage)
            break;
        const std::string* text = element.asString();
        first.push_back(text ? std::string_view(*text) : ::mapping::kEmptyElement);
    }
    const auto entries = ::mapping::mappingOf(first);
    const auto shown = static_cast<std::int32_t>(entries.size()) / ::mapping::kPotsPerPage;
    const std::int32_t all = std::max(shown, ::mapping::pagesFilledBy(order->size()));
    return Chart{chart::printedChart({}, {}, ::mapping::kModeInstrument, entries, shown), all};
}

std::string pluginList(const std::vector<Plugin>& plugins, std::int64_t count, std::string_view search, Place place)
{
    std::string html = header(search) + "<main>\n<h1>";
    if (search.empty())
        html += "Plug-ins";
    else
        html += "Plug-ins with “" + isolated(search) + "”";
    html += "</h1>\n";
    if (plugins.empty()) {
        html += search.empty() ? "<p>Nothing has been shared yet.</p>\n"
                               : "<p>No plug-in's name has that in it. <a href=\"./\">Show all plug-ins</a></p>\n";
    } else {
        html +=
            "<p class=\"facts\">" + counted(count, "plug-in") +
            "</p>\n<table class=\"plugins\">\n<thead><tr>"
            "<th scope=\"col\">Plug-in</th><th scope=\"col\" class=\"number\">Mappings</th>"
            "<th scope=\"col\" class=\"number\">Downloads</th><th scope=\"col\">Newest</th></tr></thead>\n<tbody>\n";
        for (const Plugin& each : plugins)
            html += "<tr><th scope=\"row\"><a href=\"" + pluginAddress(each.name) + "\">" + isolated(each.name) +
                    "</a></th><td class=\"number\">" + std::to_string(each.mappings) + "</td><td class=\"number\">" +
                    std::to_string(each.downloads) + "</td><td>" + time(each.newest) + "</td></tr>\n";
        html += "</tbody>\n</table>\n";
    }
    const std::string query = search.empty() ? "" : "search=" + percentEncoded(search) + "&amp;";
    return page("Community library", html + ways("./?" + query, place) + "</main>\n");
}

std::string plugin(std::string_view name, const std::vector<Mapping>& mappings, std::int64_t count, Place place)
{
    std::string html = header({}) + "<main>\n<h1>" + isolated(name) + "</h1>\n<p class=\"facts\">" +
                       counted(count, "mapping") + ", newest first</p>\n";
    for (const Mapping& each : mappings)
        html += mappingArticle(each, Within::list);
    return page(forTitle(name) + " – Community library",
                html + ways(pluginAddress(name) + "&amp;", place) + "</main>\n");
}

std::string mapping(const Mapping& mapping)
{
    return page(forTitle(mapping.plugin) + " – Community library",
                header({}) + "<main>\n<nav aria-label=\"Plug-in\"><a href=\"" + pluginAddress(mapping.plugin) +
                    "\">All mappings for " + isolated(mapping.plugin) + "</a></nav>\n" +
                    mappingArticle(mapping, Within::itself) + "</main>\n");
}

std::string message(std::string_view title, std::string_view text)
{
    return page(escaped(title) + " – Community library",
                header({}) + "<main>\n<h1>" + escaped(title) + "</h1>\n<p>" + escaped(text) + "</p>\n</main>\n");
}

std::string_view styleSheet()
{
    return R"(:root {
  color-scheme: light dark;
  --page: #f4f5f7; --card: #ffffff; --text: #1d2129; --faint: #5b6472; --line: #d9dde3; --accent: #a23c10;
  --pot: #f0f2f5;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #16191f; --card: #20252e; --text: #e8eaee; --faint: #a4adbb; --line: #39414f; --accent: #ffb066;
    --pot: #2a303b;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1rem clamp(0.75rem, 4vw, 2rem) 2rem; max-width: 70rem; background: var(--page);
  color: var(--text); font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere; -webkit-text-size-adjust: 100%;
}
a { color: var(--accent); text-underline-offset: 0.15em; }
a:focus-visible, input:focus-visible, button:focus-visible, .chart:focus-visible {
  outline: 3px solid var(--accent); outline-offset: 2px;
}
header {
  display: flex; flex-wrap: wrap; gap: 0.75rem 2rem; align-items: center; justify-content: space-between;
  padding-bottom: 1rem; border-bottom: 1px solid var(--line);
}
.library { margin: 0; font-size: 1.25rem; font-weight: 650; }
.library a { color: inherit; text-decoration: none; }
form { display: flex; flex-wrap: wrap; gap: 0.5rem; align-items: center; flex: 0 1 30rem; }
form label { color: var(--faint); }
input, button {
  min-height: 2.75rem; padding: 0 0.9rem; border: 1px solid var(--faint); border-radius: 0.6rem; font: inherit;
  background: var(--card); color: inherit;
}
input { flex: 1 1 10rem; min-width: 0; }
button { font-weight: 600; cursor: pointer; }
h1 { margin: 1.5rem 0 0.25rem; font-size: 1.75rem; line-height: 1.25; }
h2 { margin: 0; font-size: 1.15rem; }
.facts { margin: 0 0 1rem; color: var(--faint); }
.plugins, .mapping { background: var(--card); border: 1px solid var(--line); border-radius: 0.9rem; overflow: hidden; }
.plugins { width: 100%; border-collapse: separate; border-spacing: 0; }
.plugins th, .plugins td { padding: 0.6rem 1rem; text-align: start; border-top: 1px solid var(--line); }
.plugins thead th { border-top: 0; color: var(--faint); font-size: 0.875rem; }
.plugins time { white-space: nowrap; }
.plugins .number { text-align: end; font-variant-numeric: tabular-nums; }
.plugins tbody th { font-weight: 600; width: 60%; }
.plugins tbody a { display: block; }
.mapping { margin: 0 0 1rem; padding: 1rem 1.25rem 1.25rem; }
main > nav { margin-top: 1.25rem; }
main > nav + .mapping { margin-top: 0.75rem; }
.mapping h1 { margin-top: 0; }
.mapping .facts { margin-bottom: 0.75rem; font-size: 0.9375rem; }
.mapping > p:last-child { margin-bottom: 0; }
.comments { margin: 0 0 1rem; white-space: pre-wrap; unicode-bidi: plaintext; max-width: 45rem; }
.chart { overflow-x: auto; border-radius: 0.5rem; }
.chart table { width: 100%; min-width: 52rem; table-layout: fixed; border-collapse: separate; border-spacing: 3px; }
.chart th, .chart td { padding: 0.4rem 0.35rem; font-size: 0.8125rem; line-height: 1.3; text-align: center; }
.chart td { background: var(--pot); border-radius: 0.4rem; overflow: hidden; }
.chart th { color: var(--faint); font-weight: 600; }
.chart tr > :first-child { width: 3.25rem; }
.chart .empty { color: var(--faint); background: none; }
.ways { display: flex; flex-wrap: wrap; gap: 1rem; align-items: center; }
.ways a { padding: 0.6rem 1rem; border: 1px solid var(--faint); border-radius: 0.6rem; text-decoration: none; }
footer { margin-top: 2rem; color: var(--faint); font-size: 0.9375rem; }
@media (max-width: 36rem) {
  h1 { font-size: 1.4rem; }
  .plugins th, .plugins td { padding: 0.6rem; }
  .plugins :is(th, td):nth-child(3) { display: none; }
  .mapping { padding: 0.9rem; }
}
@media print {
  header form, footer, .ways { display: none; }
}
)";
}

std::string_view icon()
{
    return R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 32 32">
<rect width="32" height="32" rx="7" fill="#262c38"/>
<path d="M9 23a9.5 9.5 0 1 1 14 0" fill="none" stroke="#ffab45" stroke-width="3" stroke-linecap="round"/>
<circle cx="16" cy="17" r="5.5" fill="#6d788b"/>
<path d="M16 17l3.5-4" stroke="#ffffff" stroke-width="2" stroke-linecap="round"/>
</svg>
)";
}

} // namespace community_server::pages
