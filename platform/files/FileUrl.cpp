#include "platform/files/FileUrl.h"

#include <string_view>

namespace platform {

std::string fileUrl(const std::filesystem::path& path)
{
    static constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char character : path.native()) {
        if (kPlain.find(character) != std::string_view::npos) {
            url += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        url += '%';
        url += kDigits[byte >> 4];
        url += kDigits[byte & 0xf];
    }
    return url;
}

} // namespace platform
