#include "platform/ErrorAlerts.h"

#include "platform/Error.h"

namespace platform {

namespace {

std::string informativeText(const Error& error)
{
    std::string text = error.userInfo.localizedFailureReason;
    if (const auto& underlying = error.userInfo.underlyingError)
        text += "\n\n" + underlying->userInfo.localizedDescription + "\n" + informativeText(*underlying);
    return text;
}

} // namespace

bool ErrorAlerts::presentError(const Error& error)
{
    Alert alert{error.userInfo.localizedDescription, informativeText(error), {"OK"}};
    const auto& recovery = error.userInfo.recovery;
    if (recovery)
        alert.buttons = {recovery->option, "Cancel"};
    const int pressed = alerts_.runModal(alert);
    if (!recovery || pressed != Alerts::kFirstButton)
        return false;
    const auto remaining = recovery->attempt();
    return !remaining || presentError(*remaining);
}

} // namespace platform
