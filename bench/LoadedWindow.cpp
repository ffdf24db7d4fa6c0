#include "bench/LoadedWindow.h"

#include "plugins/PluginScan.h"
#include "tests/support/FreshState.h"
#include "tests/support/OrderFiles.h"

#include <QApplication>

#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

Home::Home()
{
    ::setenv("HOME", (folder_ / "home").c_str(), 1);
    ::setenv("KV_LOCAL_LIBRARY", (folder_ / "Library").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    std::filesystem::create_directories(builtIn());
    std::filesystem::create_directories(folder_ / "home/Library/Audio/Presets");
}

std::filesystem::path Home::builtIn() const
{
    return folder_ / "Library/Application Support/Logic/Plug-In Settings";
}

std::filesystem::path Home::writePlugin(const std::string& name, int parameters) const
{
    const auto file = builtIn() / name / "CSParameterOrder.plist";
    test::writeDictionary(file, test::orderFile(test::numbered(parameters)));
    return file;
}

LoadedWindow::LoadedWindow(const Home& home)
    : logDescriptor_(::open((home.path() / "log.txt").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)),
      log_(logDescriptor_),
      platform_{alerts_, workspace_, folders_, log_, http_, preferences_, json_, errors_, localization_, undoManagers_}
{
    test::startAnew();
    controller_ = std::make_unique<ViewController>(platform_);
    interface_ = std::make_unique<interface::Interface>(*controller_);
    controller_->viewDidLoad();
    interface_->mainWindow()->show();
    settle();
}

LoadedWindow::~LoadedWindow()
{
    interface_.reset();
    controller_.reset();
    log_.flush();
    ::close(logDescriptor_);
}

void LoadedWindow::choose(const std::string& plugin)
{
    const auto list = controller_->myArrayController();
    for (std::int32_t row = 0; row < list->arrangedCount(); ++row) {
        if (list->arrangedObject(row)->text(plugins::kPlugin) != plugin)
            continue;
        list->setSelectionIndex(row);
        controller_->tablePluginSelected();
        settle();
        return;
    }
    throw std::runtime_error("no plug-in " + plugin);
}

void LoadedWindow::settle()
{
    QApplication::sendPostedEvents();
    QApplication::processEvents();
}

} // namespace bench
