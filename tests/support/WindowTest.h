#pragma once
// The real windows with the real controller on the offscreen platform, in a home folder of the test's own. Objects are
// found by name, clicked and typed into as a user would; alerts are answered as they come up.

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "platform/qt/SystemPlatform.h"
#include "tests/support/Alerts.h"
#include "tests/support/Noted.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

class WindowTest : public testing::Test {
protected:
    explicit WindowTest(const platform::qt::HttpLimits& limits = {});
    ~WindowTest() override;

    Path builtIn(const std::string& plugin) const { return home_.builtIn(plugin); }
    Path thirdParty(const std::string& maker, const std::string& plugin) const
    {
        return home_.thirdParty(maker, plugin);
    }

    /// Loads the interface; again: as a new run of the program.
    void loadInterface();
    /// Loads it, scans and shows the main window.
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
    /// Waits until the keys have rested on a plug-in's row, so that it is loaded.
    void letKeysRest();
    void chooseParameter(const std::string& name) { clickRow("tablePlistOfSelectedPlugin", name, 1); }
    std::int32_t selectedRow(const char* list) const;
    void typeInto(const char* field, const std::string& text);
    /// Puts a text in place of a field's.
    void fill(const char* field, const std::string& text);

    /// Runs an action and tells what the alerts showed that came up meanwhile; AlertAnswers presses.
    std::vector<ShownAlert> alertsOf(const std::function<void()>& action, const std::vector<std::string>& presses = {});

    ViewController& controller() { return *controller_; }
    platform::Platform& platform() { return system_.platform; }
    const interface::Interface& loaded() const { return *interface_; }
    std::string logText() const;

    TemporaryHome home_;
    NotedFiles workspace_;
    NotedLog log_;
    platform::qt::SystemPlatform system_;

private:
    void tearDown();

    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<interface::Interface> interface_;
};

} // namespace test
