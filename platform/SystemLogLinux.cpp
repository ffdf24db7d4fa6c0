#include "platform/StreamLog.h"
#include "platform/SystemLog.h"

#include <unistd.h>

namespace platform {

std::unique_ptr<Log> systemLog(const char*)
{
    return std::make_unique<StreamLog>(STDERR_FILENO);
}

} // namespace platform
