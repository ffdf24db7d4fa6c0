#pragma once
// The real controller without windows: its outlets refer to objects that nothing shows. Everything is real, in a home
// of the test's own, but alerts, files to open and log lines are noted down.

#include "app/ViewController.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/SystemPlatform.h"
#include "tests/support/FreshState.h"
#include "tests/support/Noted.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace test {

/// One run of the program, wherever the environment says that it lives.
struct Windowless {
    Windowless() { startAnew(); }
    ~Windowless() { startAnew(); }

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
    std::vector<std::shared_ptr<platform::TextField>> potLabels() const
    {
        return {controller.kvControl1(), controller.kvControl2(), controller.kvControl3(), controller.kvControl4(),
                controller.kvControl5(), controller.kvControl6(), controller.kvControl7(), controller.kvControl8()};
    }

    NotedAlerts alerts;
    NotedFiles files;
    NotedLog log;
    platform::qt::SystemPlatform system{kPreferences, {&alerts, &files, nullptr, &log, nullptr}};
    ViewController controller{system.platform};
};

class WindowlessTest : public testing::Test {
protected:
    Path builtIn(const std::string& plugin) const { return home_.builtIn(plugin); }
    Path thirdParty(const std::string& maker, const std::string& plugin) const
    {
        return home_.thirdParty(maker, plugin);
    }
    /// Writes a built-in plug-in's file, scans for it and selects it.
    Path edit(const Texts& order, const std::string& plugin = "EQ One")
    {
        writeDictionary(builtIn(plugin), orderFile(order));
        controller_.btnRunCheck();
        select(plugin);
        return builtIn(plugin);
    }
    void select(const std::string& plugin) { EXPECT_TRUE(program_.select(plugin)) << plugin; }

    /// Texts under the pots, left to right.
    Texts pots() const
    {
        Texts texts;
        for (const auto& label : program_.potLabels())
            texts.push_back(label->stringValue.get());
        return texts;
    }
    /// What is read out of the page shown and of the number of pages.
    Texts readOuts() const
    {
        return {controller_.lab_PageCurrentlyDisplayed()->stringValue.get(),
                controller_.labTotalPagesIndicator()->stringValue.get()};
    }
    /// The mapping as it would be saved.
    Texts order() const { return mapping::orderOf(mapping::plistBuild); }
    std::int32_t selectedParameter() const { return controller_.arrayControllerPlistSelected()->selectionIndex(); }
    void selectParameter(std::int32_t row) { controller_.arrayControllerPlistSelected()->setSelectionIndex(row); }

    TemporaryHome home_;

private:
    Windowless program_;

protected:
    ViewController& controller_ = program_.controller;
    std::vector<ShownAlert>& alerts_ = program_.alerts.shown;
    std::vector<Path>& opened_ = program_.files.opened;
    std::vector<std::string>& logLines_ = program_.log.lines;
};

} // namespace test
