#pragma once
// The real effects, composed: what the program runs on, and the tests with some of them replaced.

#include "platform/ErrorAlerts.h"
#include "platform/SystemLog.h"
#include "platform/TerminationSignals.h"
#include "platform/UserPreferences.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/DesktopPrinting.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/UndoStack.h"

#include <memory>

namespace platform::qt {

/// Effects in place of the real ones, which live as long as the platform.
struct Instead {
    Alerts* alerts = nullptr;
    Workspace* workspace = nullptr;
    Folders* folders = nullptr;
    Log* log = nullptr;
    ErrorPresentation* errors = nullptr;
    Printing* printing = nullptr;
};

struct SystemPlatform {
    /// `name` is that of the preferences, and on macOS what the log is found by.
    explicit SystemPlatform(const char* name, const Instead& others = {}, const HttpLimits& limits = {})
        : log(systemLog(name)),
          http(
              gate, [] { return terminationSignal() != 0; }, limits),
          preferences(name),
          instead(others)
    {}
    SystemPlatform(const SystemPlatform&) = delete;
    SystemPlatform& operator=(const SystemPlatform&) = delete;

    CompletionGate gate;
    MessageBoxAlerts alerts{gate};
    DesktopWorkspace workspace;
    DesktopPrinting printing{gate};
    UserFolders folders;
    const std::unique_ptr<Log> log;
    CurlHttp http;
    UserPreferences preferences;
    QtJson json;
    TranslatedTexts localization;
    UndoStacks undoManagers;
    SystemClipboard clipboard;
    SystemSurroundings surroundings;
    const Instead instead;
    ErrorAlerts errors{either(instead.alerts, alerts)};
    Platform platform{either(instead.alerts, alerts),
                      either(instead.workspace, workspace),
                      either(instead.printing, printing),
                      either(instead.folders, folders),
                      either(instead.log, *log),
                      http,
                      preferences,
                      json,
                      either(instead.errors, errors),
                      localization,
                      undoManagers,
                      clipboard,
                      surroundings};

private:
    template <typename Effect, typename Real>
    static Effect& either(Effect* other, Real& real)
    {
        return other ? *other : real;
    }
};

} // namespace platform::qt
