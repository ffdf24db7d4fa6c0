#pragma once
// The whole program as `main` composes it, on whichever platform Qt runs on, with a log that the test can read.

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "platform/ErrorAlerts.h"
#include "platform/UserPreferences.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/UndoStack.h"

#include <string>
#include <vector>

namespace support {

class RecordedLog final : public platform::Log {
public:
    void write(std::string_view line) override { lines.emplace_back(line); }
    void flush() override {}
    /// Lines that begin so.
    std::vector<std::string> linesWith(std::string_view beginning) const;

    std::vector<std::string> lines;
};

class Program {
public:
    static constexpr char kBundleIdentifier[] = "org.example.kv-test";

    /// Forgets what an earlier one in this process has left in the editing state.
    explicit Program(platform::qt::HttpLimits limits = {});

    /// Start-up as in `main`.
    void start();
    void click(const char* button);
    void choosePlugin(int row);
    std::string text(const char* label) const;
    void type(const char* field, const char* text);

    platform::qt::CompletionGate gate;
    platform::qt::MessageBoxAlerts alerts{gate};
    platform::qt::DesktopWorkspace workspace;
    platform::qt::UserFolders folders;
    RecordedLog log;
    platform::qt::CurlHttp http;
    platform::UserPreferences preferences{kBundleIdentifier};
    platform::qt::QtJson json;
    platform::ErrorAlerts errors{alerts};
    platform::qt::TranslatedTexts localization;
    platform::qt::UndoStacks undoManagers;
    platform::Platform effects{alerts,      workspace, folders, log,          http,
                               preferences, json,      errors,  localization, undoManagers};
    ViewController controller{effects};
    interface::Interface windows {
        controller
    };
};

} // namespace support
