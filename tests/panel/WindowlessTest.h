#pragma once
// The real controller without windows: its outlets refer to objects that nothing shows. Folders, files and the log are
// real, below a temporary folder; alerts and files to open are noted down.

#include "app/ViewController.h"
#include "chart/ChartState.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/ErrorAlerts.h"
#include "platform/Http.h"
#include "platform/qt/UndoStack.h"
#include "tests/support/FreshState.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace test {

/// Message and informative text.
using AlertTexts = std::pair<std::string, std::string>;

class WindowlessTest : public testing::Test {
protected:
    WindowlessTest() { startAnew(); }
    ~WindowlessTest() override { startAnew(); }

    Path builtIn(const std::string& plugin) const
    {
        return home_ / "Application Support/Logic/Plug-In Settings" / plugin / "CSParameterOrder.plist";
    }
    Path thirdParty(const std::string& maker, const std::string& plugin) const
    {
        return home_ / "home/Library/Audio/Presets" / maker / plugin / "CSParameterOrder.plist";
    }

    /// Writes a built-in plug-in's file, scans for it and selects it.
    Path edit(const Texts& order, const std::string& plugin = "EQ One")
    {
        writeDictionary(builtIn(plugin), orderFile(order));
        controller_.btnRunCheck();
        select(plugin);
        return builtIn(plugin);
    }
    void select(const std::string& plugin)
    {
        const auto list = controller_.myArrayController();
        for (std::int32_t row = 0; row < list->arrangedCount(); ++row)
            if (list->arrangedObject(row)->text("Plugin") == plugin)
                list->setSelectionIndex(row);
        controller_.tablePluginSelected();
    }

    /// Texts under the pots, left to right.
    Texts pots() const
    {
        Texts texts;
        for (const auto& label :
             {controller_.kvControl1(), controller_.kvControl2(), controller_.kvControl3(), controller_.kvControl4(),
              controller_.kvControl5(), controller_.kvControl6(), controller_.kvControl7(), controller_.kvControl8()})
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

    TemporaryFolder home_;
    std::vector<AlertTexts> alerts_;
    std::vector<Path> opened_;
    std::vector<std::string> logLines_;

private:
    struct NotedAlerts final : platform::Alerts {
        explicit NotedAlerts(std::vector<AlertTexts>& noted) : alerts(noted) {}
        int runModal(const platform::Alert& alert) override
        {
            EXPECT_EQ(alert.buttons, Texts{"OK"});
            alerts.emplace_back(alert.messageText, alert.informativeText);
            return kFirstButton;
        }
        std::vector<AlertTexts>& alerts;
    };
    struct NotedFiles final : platform::Workspace {
        explicit NotedFiles(std::vector<Path>& noted) : opened(noted) {}
        void openFile(const Path& path) override { opened.push_back(path); }
        std::vector<Path>& opened;
    };
    struct TemporaryFolders final : platform::Folders {
        explicit TemporaryFolders(const Path& root) : root_(root) {}
        Path home() const override { return root_ / "home"; }
        Path localApplicationSupport() const override { return root_ / "Application Support"; }
        Path userApplicationSupport() const override { return root_ / "home/Library/Application Support"; }
        Path resources() const override { return root_ / "resources"; }
        Path root_;
    };
    struct NotedLog final : platform::Log {
        explicit NotedLog(std::vector<std::string>& noted) : lines(noted) {}
        void write(std::string_view line) override { lines.emplace_back(line); }
        void flush() override {}
        std::vector<std::string>& lines;
    };

    // Nothing in these tests may ask a server or the preferences.
    struct NoHttp final : platform::Http {
        std::optional<std::string> post(const std::string& address, const std::string&, std::string_view) override
        {
            ADD_FAILURE() << address;
            return std::nullopt;
        }
        void download(const std::string& address, const std::filesystem::path&, platform::DownloadHandlers) override
        {
            ADD_FAILURE() << address;
        }
    };
    struct NoPreferences final : platform::Preferences {
        std::optional<std::string> text(std::string_view) const override { return std::nullopt; }
        void setTexts(const std::vector<Entry>&) override { ADD_FAILURE(); }
    };
    struct NoJson final : platform::Json {
        std::vector<platform::Record> objectsOf(std::string_view) const override { return {}; }
    };

    struct EnglishTexts final : platform::Localization {
        std::string localizedString(const std::string& english) const override { return english; }
    };

    NotedAlerts notedAlerts_{alerts_};
    NotedFiles notedFiles_{opened_};
    TemporaryFolders folders_{home_.path()};
    NotedLog log_{logLines_};
    NoHttp http_;
    NoPreferences preferences_;
    NoJson json_;
    platform::ErrorAlerts errors_{notedAlerts_};
    EnglishTexts localization_;
    platform::qt::UndoStacks undoManagers_;
    platform::Platform platform_{notedAlerts_, notedFiles_, folders_, log_,          http_,
                                 preferences_, json_,       errors_,  localization_, undoManagers_};

protected:
    ViewController controller_{platform_};
};

} // namespace test
