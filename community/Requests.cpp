#include "community/Requests.h"

#include <cstdint>
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

/// The length in bytes of the character that begins here; 0 when it is none that UTF-8 has.
std::size_t characterLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length)
        return 0;
    std::uint32_t character = first & (0xffu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
        character = character << 6 | (byte(i) & 0x3fu);
    }
    static constexpr std::uint32_t kShortest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xd800 && character <= 0xdfff;
    return character < kShortest[length] || character > 0x10ffff || isSurrogate ? 0 : length;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
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
    return reply && isUtf8(*reply) ? std::move(*reply) : std::string();
}

bool isLoginAccepted(std::string_view reply)
{
    return reply == "\nOK\n";
}

} // namespace community
