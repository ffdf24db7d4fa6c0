// What the library answers to people with a browser, and to what watches the server.

#include "tools/community_server/Browsing.h"
#include "tools/community_server/Pages.h"
#include "tools/community_server/Service.h"

#include <optional>
#include <string_view>

namespace community_server {

namespace {

Reply page(std::string html, int status = 200)
{
    Reply reply{status, std::move(html), "text/html; charset=utf-8", {{"Cache-Control", "no-cache"}}};
    reply.headers.insert(reply.headers.end(), std::begin(pages::kHeaders), std::end(pages::kHeaders));
    return reply;
}

Reply pageOr404(std::optional<std::string> html, std::string_view otherwise)
{
    return html ? page(std::move(*html)) : page(pages::message("Nothing here", otherwise), 404);
}

/// What is the same until the server is another one.
Reply constant(std::string_view text, std::string contentType)
{
    return {200, std::string(text), std::move(contentType), {{"Cache-Control", "max-age=3600"}}};
}

} // namespace

Reply Service::showPlugins(Database& database, const Request& request)
{
    return page(pluginsPage(database, request.query));
}

Reply Service::showPlugin(Database& database, const Request& request)
{
    return pageOr404(pluginPage(database, request.query), "No mapping is shared for this plug-in.");
}

Reply Service::showMapping(Database& database, const Request& request)
{
    return pageOr404(mappingPage(database, request.query), "There is no such mapping, or it has been removed.");
}

Reply Service::giveStyleSheet(Database&, const Request&)
{
    return constant(pages::styleSheet(), "text/css; charset=utf-8");
}

Reply Service::giveIcon(Database&, const Request&)
{
    return constant(pages::icon(), "image/svg+xml");
}

Reply Service::tellHealth(Database& database, const Request&)
{
    // Reads from the file; when that fails, whoever asked is told that the library is not well.
    Statement(database, "SELECT 1 FROM mapping").step();
    return {200, "ok", "text/plain; charset=utf-8", {{"Cache-Control", "no-store"}}};
}

} // namespace community_server
