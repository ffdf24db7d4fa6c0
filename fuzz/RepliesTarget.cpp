#include "fuzz/Targets.h"

#include "community/Requests.h"
#include "fuzz/Require.h"
#include "platform/StreamLog.h"
#include "platform/Utf8.h"

#include <algorithm>
#include <string>

#include <fcntl.h>

namespace fuzz {

namespace {

/// The text that an escaped one stands for.
std::string unescaped(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            result += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// Where the lines of the log go.
platform::StreamLog& nowhere()
{
    static platform::StreamLog log(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    return log;
}

} // namespace

void replies(std::string_view bytes)
{
    const std::string raw(bytes);
    const std::string text = community::replyText(raw);
    require(text == raw || (text.empty() && !platform::isUtf8(raw)), "a reply is the text as it stands or none");
    require(community::isLoginAccepted(text) == (raw == "\nOK\n"), "only one reply logs in");

    const std::string escaped = community::escaped(raw);
    require(std::all_of(escaped.begin(), escaped.end(), [](char c) { return c > 0x20 && c < 0x7f; }),
            "what is escaped can be sent");
    require(unescaped(escaped) == raw, "nothing is lost by escaping");
    const std::string address = community::uploadAddress("http://127.0.0.1/", raw, raw, raw);
    require(address.find(' ') == address.npos, "an address has no blank");
    require(community::uploadBody(raw).size() == raw.size() + 252, "a form is 252 bytes more than its file");
    nowhere().write("Download failed! Error - " + raw);
}

} // namespace fuzz
