// The scan that the program starts with: both folders walked, every item logged, the rows sorted and shown.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "bench/LoadedWindow.h"

#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

namespace {

using std::filesystem::path;

constexpr int kItems = 200'000;

void touch(const path& file)
{
    ::close(::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}

/// A tenth of the items are folders, a quarter of those hold a plug-in, as a large library of makers does.
void makeLibrary(const path& root, int items)
{
    const int folders = items / 10;
    for (int folder = 0; folder < folders; ++folder) {
        const path maker = root / ("Maker " + std::to_string(folder / 50));
        const path plugin = folder % 50 == 0 ? maker : maker / ("Plug-in " + std::to_string(folder));
        std::filesystem::create_directory(plugin);
        for (int file = folder % 4 == 1 ? 1 : 0; file < 9; ++file)
            touch(plugin / ("Setting number " + std::to_string(file) + ".pst"));
        if (folder % 4 == 1)
            touch(plugin / "CSParameterOrder.plist");
    }
}

struct Scan {
    explicit Scan(int items) { makeLibrary(root(), items); }

    path root() const { return home.builtIn(); }
    double milliseconds()
    {
        if (!window)
            window = std::make_unique<LoadedWindow>(home);
        return millisecondsOf([&] {
            window->controller().btnRunCheck();
            LoadedWindow::settle();
            window->flushLog();
        });
    }

    Home home;
    std::unique_ptr<LoadedWindow> window;
};

} // namespace

void addScanFigures()
{
    const auto prepare = [] {
        const auto scan = std::make_shared<Scan>(kItems);
        const Texts find = {"find", scan->root(), "-name", "CSParameterOrder.plist"};
        return std::pair<Measure, Measure>([scan] { return scan->milliseconds(); },
                                           [scan, find] { return run(find, {}, scan->home.path() / "found.txt"); });
    };
    add(Figure{"scan of 200,000 items", "find -name", 0.75, 9, prepare});
    add(Growth{"growth: scan, 200,000 items", kItems / 10, 5, [](int items) {
                   const auto scan = std::make_shared<Scan>(items);
                   return [scan] { return scan->milliseconds(); };
               }});
}

} // namespace bench
