#include "community/Requests.h"

#include "platform/Utf8.h"

#include <utility>

namespace community {

namespace {

constexpr std::string_view kBoundary = "---------------------------14737809831466499882746641449";

bool mayStandInAddress(unsigned char byte)
{
    return byte > 0x20 && byte < 0x7f &&
           std::string_view("\"#%<>[\\]^`{|}").find(static_cast<char>(byte)) == std::string_view::npos;
}

std::string query(const Value& value)
{
    return value ? escaped(*value) : textOrNull(value);
}

} // namespace

std::string escaped(std::string_view text)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (mayStandInAddress(byte))
            result += character;
        else
            result += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
    return result;
}

std::string textOrNull(const Value& value)
{
    return value.value_or("(null)");
}

std::string loginCheckAddress(const std::string& base, const Value& userName, const Value& pin)
{
    return base + "checkuser.php?userName=" + query(userName) + "&pinCode=" + query(pin);
}

std::string newUserAddress(const std::string& base, const Value& userName, const Value& emailAddress)
{
    return base + "checkuserexists.php?userName=" + query(userName) + "&emailAddr=" + query(emailAddress);
}

std::string uploadAddress(const std::string& base, const Value& user, const Value& plugin, const Value& comments)
{
    return base + "kv_upload.php?user=" + query(user) + "&plugin=" + query(plugin) + "&comments=" + query(comments);
}

std::string listingAddress(const std::string& base, const Value& plugin)
{
    return base + "kv_listplists.php?plugin=" + query(plugin);
}

std::string downloadRegistrationAddress(const std::string& base, const Value& patchId)
{
    return base + "kv_downloadreg.php?patchID=" + textOrNull(patchId);
}

std::string sharedFileAddress(const std::string& base, const Value& fileLocation)
{
    return escaped(base + textOrNull(fileLocation));
}

std::string uploadContentType()
{
    return "multipart/form-data; boundary=" + std::string(kBoundary);
}

std::string uploadBody(std::string_view file)
{
    std::string body;
    body.append("\r\n--").append(kBoundary).append("\r\n");
    body += "Content-Disposition: form-data; name=\"userfile\"; filename=\"CSParameterOrder.plist\"\r\n";
    body += "Content-Type: application/octet-stream\r\n\r\n";
    body += file;
    body.append("\r\n--").append(kBoundary).append("--\r\n");
    return body;
}

std::string replyText(std::optional<std::string> reply)
{
    return reply && platform::isUtf8(*reply) ? std::move(*reply) : std::string();
}

bool isLoginAccepted(std::string_view reply)
{
    return reply == "\nOK\n";
}

} // namespace community
