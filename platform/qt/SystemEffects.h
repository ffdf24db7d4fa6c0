#pragma once
// The real effects on a desktop: modal message boxes, the desktop's file opener, the user's folders.

#include "platform/Effects.h"

namespace platform::qt {

class CompletionGate;

/// An alert keeps the gate closed while it is open.
class MessageBoxAlerts final : public Alerts {
public:
    explicit MessageBoxAlerts(CompletionGate& gate) : gate_(gate) {}

    int runModal(const Alert& alert) override;

private:
    CompletionGate& gate_;
};

class DesktopWorkspace final : public Workspace {
public:
    void openFile(const std::filesystem::path& path) override;
};

/// Home is `HOME`. The machine-wide library is /Library, or the folder that KV_LOCAL_LIBRARY names.
class UserFolders final : public Folders {
public:
    std::filesystem::path home() const override;
    std::filesystem::path localApplicationSupport() const override;
};

} // namespace platform::qt
