#include "platform/StreamLog.h"
#include "platform/SystemLog.h"

#include <os/log.h>

#include <unistd.h>

namespace platform {

namespace {

class UnifiedLog final : public Log {
public:
    explicit UnifiedLog(const char* subsystem)
        : log_(os_log_create(subsystem, "program")), terminal_(::isatty(STDERR_FILENO) ? STDERR_FILENO : -1)
    {}

    /// Public, or a path would be shown as <private>.
    void write(std::string_view line) override
    {
        os_log(log_, "%{public}s", asOneLine(line).c_str());
        terminal_.write(line);
    }

    void flush() override { terminal_.flush(); }

private:
    os_log_t log_;
    StreamLog terminal_;
};

} // namespace

std::unique_ptr<Log> systemLog(const char* bundleIdentifier)
{
    return std::make_unique<UnifiedLog>(bundleIdentifier);
}

} // namespace platform
