#include "platform/StreamLog.h"

#include <csignal>

#include <fcntl.h>

namespace platform {

namespace {

bool isControl(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return (byte < 0x20) | (byte == 0x7f);
}

/// Looks at every byte, so that the compiler can look at many at once.
bool hasControls(std::string_view line)
{
    unsigned any = 0;
    for (const char character : line)
        any |= isControl(character);
    return any != 0;
}

} // namespace

std::string asOneLine(std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string line;
    line.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (isControl(character))
            line.append("\\x") += {kDigits[byte / 16U], kDigits[byte % 16U]};
        else
            line += character;
    }
    return line;
}

StreamLog::StreamLog(int descriptor)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that is gone must not end the program
    const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    stream_ = own < 0 ? nullptr : ::fdopen(own, "w");
    if (stream_)
        std::setvbuf(stream_, buffer_.data(), _IOFBF, buffer_.size());
}

StreamLog::~StreamLog()
{
    if (stream_)
        std::fclose(stream_);
}

void StreamLog::write(std::string_view line)
{
    if (!stream_)
        return;
    const std::string escaped = hasControls(line) ? asOneLine(line) : std::string();
    const std::string_view written = escaped.empty() ? line : escaped;
    std::fwrite(written.data(), 1, written.size(), stream_);
    std::fputc('\n', stream_);
}

void StreamLog::flush()
{
    if (stream_)
        std::fflush(stream_);
}

} // namespace platform
