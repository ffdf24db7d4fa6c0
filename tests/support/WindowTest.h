#pragma once
// The real windows with the real controller on the offscreen platform, in a home folder of the test's own. Objects are
// found by name, clicked and typed into as a user would; alerts are answered as they come up.

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "platform/ErrorAlerts.h"
#include "platform/StreamLog.h"
#include "platform/UserPreferences.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/UndoStack.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QMessageBox>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// What an alert showed.
struct SeenAlert {
    std::string message;
    std::string informative;
    std::vector<std::string> buttons;

    bool operator==(const SeenAlert&) const = default;
};
void PrintTo(const SeenAlert& alert, std::ostream* stream);

/// Files the program asked the desktop to open, instead of opening them.
class RecordingWorkspace final : public platform::Workspace {
public:
    void openFile(const std::filesystem::path& path) override { opened.push_back(path); }

    std::vector<Path> opened;
};

class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    /// Where a built-in plug-in's file lies, and one of a maker.
    Path builtIn(const std::string& plugin) const;
    Path thirdParty(const std::string& maker, const std::string& plugin) const;

    /// Loads the interface, scans and shows the main window. Again: as a new run of the program.
    void launch();

    template <typename T = QWidget>
    T* find(const char* name) const
    {
        T* found = interface_->find<T>(name);
        if (!found)
            throw std::runtime_error(std::string("there is no ") + name);
        return found;
    }
    std::string text(const char* name) const;
    std::string toolTip(const char* name) const;
    bool isEnabled(const char* name) const;
    /// Clicks a button with the mouse; fails the test when it is disabled.
    void click(const char* button);
    void pressPot(int number);
    std::string potLabel(int number) const;
    std::vector<std::string> potLabels() const;
    /// The texts of a list's column, top to bottom.
    std::vector<std::string> columnOf(const char* list, int column) const;
    /// Clicks the first row whose column holds the text.
    void clickRow(const char* list, const std::string& text, int column = 0);
    void select(const std::string& plugin) { clickRow("pluginTableView", plugin); }
    void chooseParameter(const std::string& name) { clickRow("tablePlistOfSelectedPlugin", name, 1); }
    std::int32_t selectedRow(const char* list) const;
    void typeInto(const char* field, const std::string& text);

    /// Runs an action and tells what the alerts showed that came up meanwhile. Each is dismissed with the button of
    /// that title, in the order of `presses`; those beyond with their first button.
    std::vector<SeenAlert> alertsOf(const std::function<void()>& action, const std::vector<std::string>& presses = {});

    ViewController& controller() { return *controller_; }
    platform::Platform& platform() { return *platform_; }
    const interface::Interface& loaded() const { return *interface_; }
    std::string logText();

    TemporaryFolder home_;
    Path logFile_ = home_ / "log.txt";
    RecordingWorkspace workspace_;

private:
    void tearDown();

    int logDescriptor_ = -1;
    platform::qt::CompletionGate gate_;
    platform::qt::MessageBoxAlerts alerts_{gate_};
    platform::qt::UserFolders folders_;
    platform::qt::CurlHttp http_{gate_};
    platform::UserPreferences preferences_{"org.example.kv-test"};
    platform::qt::QtJson json_;
    platform::ErrorAlerts errors_{alerts_};
    platform::qt::TranslatedTexts localization_;
    platform::qt::UndoStacks undoManagers_;
    std::unique_ptr<platform::StreamLog> log_;
    std::unique_ptr<platform::Platform> platform_;
    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<interface::Interface> interface_;
};

} // namespace test
