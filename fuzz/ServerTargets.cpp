#include "fuzz/Targets.h"

#include "community/Requests.h"
#include "fuzz/Require.h"
#include "platform/Utf8.h"
#include "tools/community_server/Protocol.h"
#include "tools/community_server/SharedFile.h"
#include "tools/community_server/UserName.h"

#include <string>

namespace fuzz {

namespace server = community_server;

namespace {

/// What a client makes of texts, the server takes apart again.
void requireRoundTrip(std::string_view bytes)
{
    const std::string user(bytes.substr(0, bytes.size() / 3));
    const std::string plugin(bytes.substr(user.size(), bytes.size() / 3));
    const std::string comments(bytes.substr(user.size() + plugin.size()));
    const std::string address = community::uploadAddress("/", user, plugin, comments);
    const auto upload = server::uploadQuery(server::targetIn(address).query);
    if (user.find("&plugin=") != user.npos)
        return;
    require(upload.user == user, "the user comes through");
    if (plugin.find("&comments=") != plugin.npos)
        return;
    require(upload.plugin == plugin, "the plug-in comes through");
    require(upload.comments == comments, "the comments come through");
}

void requireName(std::string_view bytes)
{
    const auto name = server::userNameIn(bytes);
    if (!name)
        return;
    require(platform::isUtf8(name->shown) && platform::isUtf8(name->key) && platform::isUtf8(name->skeleton),
            "a name is text");
    require(name->shown.size() >= 3 && name->shown.find_first_of(std::string("\n\r\t\0", 4)) == std::string::npos,
            "a name is seen");
    const auto again = server::userNameIn(name->shown);
    require(again && again->shown == name->shown && again->key == name->key && again->skeleton == name->skeleton,
            "a name is its own normal form");
}

} // namespace

void request(std::string_view bytes)
{
    const server::Target target = server::targetIn(bytes);
    require(target.path.size() + target.query.size() <= bytes.size() + 1, "nothing is made up");
    require(target.path.find('?') == target.path.npos, "a path has no query");
    const std::string decoded = server::percentDecoded(target.query);
    require(decoded.size() <= target.query.size(), "escapes become shorter");
    require(server::percentDecoded(community::escaped(bytes)) == bytes, "an escaped text comes through");
    const auto upload = server::uploadQuery(target.query);
    require(upload.user.size() + upload.plugin.size() + upload.comments.size() <= target.query.size(),
            "no byte comes twice");
    const auto account = server::accountQuery(target.query, "pinCode");
    require(account.userName.size() + account.other.size() <= target.query.size(), "no byte comes twice");
    if (const auto number = server::patchIdIn(bytes))
        require(*number > 0, "a mapping's number is positive");
    if (server::isText(bytes, 0, bytes.size()))
        require(platform::isUtf8(bytes) && bytes.find('\0') == bytes.npos, "a text can be stored");
    requireRoundTrip(bytes);
    requireName(decoded);
}

void upload(std::string_view bytes)
{
    const std::size_t line = bytes.find('\n');
    const std::string_view contentType = bytes.substr(0, line);
    const std::string_view body = line == bytes.npos ? std::string_view() : bytes.substr(line + 1);
    if (const auto file = server::fileInForm(contentType, body)) {
        require(file->empty() ||
                    (file->data() >= body.data() && file->data() + file->size() <= body.data() + body.size()),
                "the file is a part of the body");
        static_cast<void>(server::isMapping(*file));
    }
    const std::string form = community::uploadBody(body);
    const auto sent = server::fileInForm(community::uploadContentType(), form);
    require(sent && body.starts_with(*sent), "the client's form has a file");
    // What holds the form's own delimiter is cut off there, and is no mapping that anybody has.
    const std::string boundary = community::uploadContentType().substr(30);
    require(*sent == body || body.find("\r\n--" + boundary) != body.npos, "which comes through");
}

} // namespace fuzz
