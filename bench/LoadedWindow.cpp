#include "bench/LoadedWindow.h"

#include "plugins/PluginScan.h"
#include "tests/support/FreshState.h"

#include <QApplication>

#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

Home::Home()
{
    std::filesystem::create_directories(builtIn());
    std::filesystem::create_directories(path() / "home/Library/Audio/Presets");
}

std::filesystem::path Home::builtIn() const
{
    return path() / "Library/Application Support/Logic/Plug-In Settings";
}

std::filesystem::path Home::writePlugin(const std::string& name, int parameters) const
{
    const auto file = test::TemporaryHome::builtIn(name);
    test::writeDictionary(file, test::orderFile(test::numbered(parameters)));
    return file;
}

LoadedWindow::LoadedWindow(const Home& home)
    : logDescriptor_(::open((home.path() / "log.txt").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)),
      log_(logDescriptor_),
      system_(test::kPreferences, {nullptr, nullptr, nullptr, &log_, nullptr})
{
    test::startAnew();
    controller_ = std::make_unique<ViewController>(system_.platform);
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
