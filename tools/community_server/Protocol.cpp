#include "tools/community_server/Protocol.h"

#include "platform/Utf8.h"

#include <algorithm>
#include <charconv>

namespace community_server {

namespace {

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The place of `word`, which is in lower case, in whichever case it is written.
std::size_t findWord(std::string_view text, std::string_view word)
{
    for (std::size_t at = 0; at + word.size() <= text.size(); ++at) {
        std::size_t same = 0;
        while (same < word.size() && lower(text[at + same]) == word[same])
            ++same;
        if (same == word.size())
            return at;
    }
    return text.npos;
}

/// A parameter of a header field, quoted or not.
std::string_view parameter(std::string_view field, std::string_view name)
{
    const std::string pattern = std::string(name) + "=";
    for (std::size_t at = field.find(';'); at != field.npos; at = field.find(';', at + 1)) {
        std::string_view rest = field.substr(at + 1);
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
        if (findWord(rest.substr(0, pattern.size()), pattern) != 0)
            continue;
        rest.remove_prefix(pattern.size());
        if (rest.starts_with('"'))
            return rest.substr(1, rest.find('"', 1) - 1);
        return rest.substr(0, rest.find_first_of("; \t"));
    }
    return {};
}

/// Whether these header fields are those of the part with the file.
bool isFilePart(std::string_view fields)
{
    const std::size_t at = findWord(fields, "content-disposition:");
    if (at == fields.npos)
        return false;
    const std::string_view line = fields.substr(at, fields.find("\r\n", at) - at);
    return parameter(line, "name") == "userfile";
}

} // namespace

Target targetIn(std::string_view text)
{
    if (text.starts_with("http://")) {
        const std::size_t path = text.find_first_of("/?", 7);
        text = path == text.npos ? "/" : text.substr(path);
    }
    const std::size_t mark = text.find('?');
    return {text.substr(0, mark), mark == text.npos ? std::string_view() : text.substr(mark + 1)};
}

std::string percentDecoded(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16).ptr == text.data() + i + 3) {
            bytes += static_cast<char>(byte);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::string onlyValue(std::string_view query, std::string_view name)
{
    const std::string start = std::string(name) + "=";
    return query.starts_with(start) ? percentDecoded(query.substr(start.size())) : std::string();
}

AccountQuery accountQuery(std::string_view query, std::string_view other)
{
    const std::string mark = "&" + std::string(other) + "=";
    const std::size_t end = query.rfind(mark);
    return {onlyValue(query.substr(0, end), "userName"),
            end == query.npos ? std::string() : percentDecoded(query.substr(end + mark.size()))};
}

UploadQuery uploadQuery(std::string_view query)
{
    const std::size_t plugin = query.find("&plugin=");
    if (plugin == query.npos)
        return {onlyValue(query, "user"), {}, {}};
    const std::size_t comments = query.find("&comments=", plugin);
    return {onlyValue(query.substr(0, plugin), "user"),
            onlyValue(query.substr(plugin + 1, comments == query.npos ? comments : comments - plugin - 1), "plugin"),
            comments == query.npos ? std::string() : onlyValue(query.substr(comments + 1), "comments")};
}

std::optional<std::int64_t> patchIdIn(std::string_view text)
{
    std::int64_t number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = problem == std::errc() && end == text.data() + text.size() && number > 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

std::optional<std::string_view> fileInForm(std::string_view contentType, std::string_view body)
{
    if (findWord(contentType, "multipart/form-data") != 0)
        return std::nullopt;
    const std::string_view boundary = parameter(contentType, "boundary");
    if (boundary.empty() || boundary.size() > 70)
        return std::nullopt;
    const std::string delimiter = "\r\n--" + std::string(boundary);
    const std::string_view atStart = std::string_view(delimiter).substr(2); // where no line ends in front of it
    std::size_t at = atStart.size();
    if (!body.starts_with(atStart)) {
        at = body.find(delimiter);
        at = at == body.npos ? at : at + delimiter.size();
    }
    while (at != body.npos && body.substr(at).starts_with("\r\n")) {
        const std::size_t fields = body.find("\r\n\r\n", at);
        const std::size_t end = fields == body.npos ? body.npos : body.find(delimiter, fields + 4);
        if (end == body.npos)
            return std::nullopt;
        if (isFilePart(body.substr(at + 2, fields - at)))
            return body.substr(fields + 4, end - fields - 4);
        at = end + delimiter.size();
    }
    return std::nullopt;
}

bool isText(std::string_view text, std::size_t shortest, std::size_t longest)
{
    return text.size() >= shortest && text.size() <= longest && platform::isUtf8(text) && text.find('\0') == text.npos;
}

} // namespace community_server
