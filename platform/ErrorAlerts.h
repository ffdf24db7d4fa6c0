#pragma once
// Errors as modal alerts: the description, and below it the failure reason and each underlying error.

#include "platform/Effects.h"

namespace platform {

class ErrorAlerts final : public ErrorPresentation {
public:
    explicit ErrorAlerts(Alerts& alerts) : alerts_(alerts) {}

    /// When the user takes the recovery it offers and that fails, shows what it failed with.
    bool presentError(const Error& error) override;

private:
    Alerts& alerts_;
};

} // namespace platform
