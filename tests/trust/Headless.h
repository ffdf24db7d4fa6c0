#pragma once
// The real controller without windows, for the programs that the trust tests run: files, downloads and JSON are real,
// alerts and what is to be opened are noted down.

#include "app/ViewController.h"
#include "platform/ErrorAlerts.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/UndoStack.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace trust {

using Path = std::filesystem::path;

struct NotedAlerts final : platform::Alerts {
    int runModal(const platform::Alert& alert) override
    {
        shown.emplace_back(alert.messageText, alert.informativeText);
        return kFirstButton;
    }
    std::vector<std::pair<std::string, std::string>> shown;
};

struct NotedFiles final : platform::Workspace {
    void openFile(const Path& path) override { opened.push_back(path); }
    std::vector<Path> opened;
};

struct NotedLog final : platform::Log {
    void write(std::string_view line) override { lines.emplace_back(line); }
    void flush() override {}
    std::vector<std::string> lines;
};

struct FoldersBelow final : platform::Folders {
    explicit FoldersBelow(Path folder) : root(std::move(folder)) {}
    Path home() const override { return root / "home"; }
    Path localApplicationSupport() const override { return root / "Application Support"; }
    Path userApplicationSupport() const override { return root / "home/Library/Application Support"; }
    Path resources() const override { return root / "resources"; }
    Path root;
};

struct NoPreferences final : platform::Preferences {
    std::optional<std::string> text(std::string_view) const override { return std::nullopt; }
    void setTexts(const std::vector<Entry>&) override {}
};

struct EnglishTexts final : platform::Localization {
    std::string localizedString(const std::string& english) const override { return english; }
};

class Headless {
public:
    /// `root` holds what the program takes for the home folder and the machine's Application Support folder.
    explicit Headless(Path root) : folders_(std::move(root)) {}

    /// Selects a plug-in as a click on its row does; false when the list has none of that name.
    bool select(const std::string& plugin)
    {
        const auto list = controller.myArrayController();
        for (std::int32_t row = 0; row < list->arrangedCount(); ++row) {
            if (list->arrangedObject(row)->text("Plugin") != plugin)
                continue;
            list->setSelectionIndex(row);
            controller.tablePluginSelected();
            return true;
        }
        return false;
    }

    NotedAlerts alerts;
    NotedFiles files;
    NotedLog log;

private:
    FoldersBelow folders_;
    platform::qt::CompletionGate gate_;
    platform::qt::CurlHttp http_{gate_};
    NoPreferences preferences_;
    platform::qt::QtJson json_;
    platform::ErrorAlerts errors_{alerts};
    EnglishTexts localization_;
    platform::qt::UndoStacks undoManagers_;
    platform::Platform platform_{alerts,       files, folders_, log,           http_,
                                 preferences_, json_, errors_,  localization_, undoManagers_};

public:
    ViewController controller{platform_};
};

} // namespace trust
