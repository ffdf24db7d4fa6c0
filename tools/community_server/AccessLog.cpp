#include "tools/community_server/AccessLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace community_server {

namespace {

constexpr std::size_t kLongestPath = 80;

/// The beginning of a text that consists of letters, digits and `others`, with dots in place of the rest.
std::string plainStartOf(std::string_view text, std::string_view others, std::size_t longest)
{
    const auto isPlain = [&](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || others.find(letter) != std::string_view::npos;
    };
    const auto end = std::ranges::find_if_not(text, isPlain);
    const std::string start(text.substr(0, std::min(longest, static_cast<std::size_t>(end - text.begin()))));
    return start.size() == text.size() ? start : start + "...";
}

} // namespace

std::string accessLine(const Access& access)
{
    std::tm parts{};
    char when[sizeof "22/Nov/2026:12:30:00 +0000"] = "-";
    if (::gmtime_r(&access.time, &parts))
        std::strftime(when, sizeof when, "%d/%b/%Y:%H:%M:%S +0000", &parts);
    const std::string_view target = access.target;
    return plainStartOf(access.address, ".:/", 45) + " - - [" + when + "] \"" + plainStartOf(access.method, "", 10) +
           " " + plainStartOf(target.substr(0, target.find('?')), "/._-", kLongestPath) + " HTTP/1.1\" " +
           std::to_string(access.status) + " " + std::to_string(access.bytes) + "\n";
}

AccessLog::AccessLog(std::filesystem::path file) : file_(std::move(file))
{
    if (file_ == "-")
        descriptor_ = STDOUT_FILENO;
    else if (!file_.empty() && !open())
        throw std::runtime_error("cannot write the access log " + file_.native());
}

AccessLog::~AccessLog()
{
    close();
}

bool AccessLog::open()
{
    descriptor_ = ::open(file_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
    return descriptor_ >= 0;
}

bool AccessLog::isMovedAway() const
{
    struct stat there {
    }, ours{};
    return ::stat(file_.c_str(), &there) != 0 || ::fstat(descriptor_, &ours) != 0 || there.st_ino != ours.st_ino ||
           there.st_dev != ours.st_dev;
}

void AccessLog::close()
{
    if (descriptor_ >= 0 && descriptor_ != STDOUT_FILENO)
        ::close(descriptor_);
    descriptor_ = -1;
}

void AccessLog::write(const Access& access)
{
    if (file_.empty())
        return;
    const std::string line = accessLine(access);
    const std::lock_guard lock(mutex_);
    if (file_ != "-" && (descriptor_ < 0 || isMovedAway())) {
        close();
        open();
    }
    // A line that cannot be written is lost: requests are answered all the same.
    if (descriptor_ >= 0)
        static_cast<void>(!::write(descriptor_, line.data(), line.size()));
}

} // namespace community_server
