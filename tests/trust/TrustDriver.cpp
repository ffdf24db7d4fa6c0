// Does one thing to a plug-in's files with the program's own controller, watched by FileFaults when that is preloaded:
//
//   trust_driver ROOT PLUGIN scan | mark | save ROW | spoilt-save ROW | recall-original | recall-prev | chart |
//                            download | download-twice | everything-everywhere
//
// A spoilt save comes upon a file that was a mapping when its plug-in was selected; "everything-everywhere" selects
// every plug-in in turn, saves, recalls and draws a chart.
//
// KV_OBSTACLE puts something real in its way: "vanished", "read-only" or "forbidden" is what becomes of the plug-in's
// folder, "limit:N" lets no file grow beyond N bytes. Afterwards the driver goes on as a user would and writes down
// what was told; a process that reaches its end writes "goes on" last.

#include "platform/TerminationSignals.h"
#include "platform/files/Files.h"
#include "tests/support/Obstacles.h"
#include "tests/support/ScriptedPeer.h"
#include "tests/support/TestBaseUrl.h"
#include "tests/support/WindowlessTest.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>

#include <dlfcn.h>

namespace {

/// What another user shared: of several pieces, so that its writing can end in the middle.
std::string sharedMapping()
{
    std::string text = "<plist><dict><key>ControlSurfaceParameterOrder</key><array>";
    for (int number = 1; number <= 2000; ++number)
        text += "<string>" + std::to_string(number) + " Shared Parameter " + std::to_string(number) + "</string>";
    return text + "</array><key>KorvelCSMode</key><array><string>1</string></array></dict></plist>";
}

long watchFiles(int on)
{
    const auto function = reinterpret_cast<long (*)(int)>(::dlsym(RTLD_DEFAULT, "kvWatchFiles"));
    return function ? function(on) : 0;
}

/// What KV_OBSTACLE names, as long as the object lives.
class Obstacle {
public:
    explicit Obstacle(const std::filesystem::path& folder)
    {
        using std::filesystem::perms;
        const char* setting = std::getenv("KV_OBSTACLE");
        const std::string name = setting ? setting : "";
        if (name == "vanished")
            std::filesystem::rename(folder, folder.native() + " elsewhere");
        if (name == "read-only")
            forbidden_.emplace(folder, perms::owner_read | perms::owner_exec | perms::others_read | perms::others_exec);
        if (name == "forbidden")
            forbidden_.emplace(folder, perms::none);
        if (name.starts_with("limit:"))
            limit(std::stoul(name.substr(6)));
    }
    Obstacle(const Obstacle&) = delete;
    Obstacle& operator=(const Obstacle&) = delete;
    ~Obstacle()
    {
        if (isLimited_)
            limit(RLIM_INFINITY);
    }

private:
    // Unlike FullDisk this leaves the signal to the program.
    void limit(rlim_t bytes)
    {
        rlimit now = {};
        ::getrlimit(RLIMIT_FSIZE, &now);
        now.rlim_cur = std::min(bytes, now.rlim_max);
        isLimited_ = ::setrlimit(RLIMIT_FSIZE, &now) == 0;
    }

    std::optional<test::Forbidden> forbidden_;
    bool isLimited_ = false;
};

class Driver {
public:
    explicit Driver(std::string plugin) : plugin_(std::move(plugin)) { program_.controller.btnRunCheck(); }

    bool scan()
    {
        begin();
        program_.controller.btnRunCheck();
        std::cout << "found " << program_.controller.myArrayController()->arrangedCount() << '\n';
        return true;
    }
    bool mark()
    {
        begin();
        return program_.select(plugin_);
    }
    bool save(std::int32_t row)
    {
        return edit([&] {
            program_.controller.arrayControllerPlistSelected()->setSelectionIndex(row);
            program_.controller.clickControl(0);
            begin();
            program_.controller.kvExportToPlist();
        });
    }
    bool spoiltSave(std::int32_t row)
    {
        const Path file = fileOfPlugin();
        const std::string spoilt = test::read(file);
        test::write(file, test::orderBytes(test::numbered(40)));
        return edit([&] {
            program_.controller.arrayControllerPlistSelected()->setSelectionIndex(row);
            program_.controller.clickControl(0);
            test::write(file, spoilt);
            begin();
            program_.controller.kvExportToPlist();
        });
    }
    bool everythingEverywhere()
    {
        const auto list = program_.controller.myArrayController();
        for (std::int32_t row = 0; row < list->arrangedCount(); ++row) {
            list->setSelectionIndex(row);
            program_.controller.tablePluginSelected();
            program_.controller.arrayControllerPlistSelected()->setSelectionIndex(2);
            program_.controller.clickControl(0);
            program_.controller.kvExportToPlist();
            program_.controller.kvRecallPreviousMapping();
            program_.controller.kvCreateChart();
        }
        return list->arrangedCount() > 0;
    }
    bool recall(const std::string& suffix)
    {
        return edit([&] {
            begin();
            program_.controller.recallOriginalMapping(suffix);
        });
    }
    bool chart()
    {
        return edit([&] {
            begin();
            program_.controller.kvCreateChart();
        });
    }
    bool download(int times)
    {
        return edit([&] {
            // One download may run already while the next one is registered.
            peer_.always("POST /kv_downloadreg.php", test::reply("\nregistered\n"));
            peer_.always("GET ", test::reply(sharedMapping()));
            listShared();
            begin();
            for (int i = 0; i < times; ++i)
                program_.controller.kvCommunityLoadSelectedDownload();
            waitForDownloads(times);
        });
    }

    /// Whatever happened, the program must still do these.
    void goOn()
    {
        watchFiles(0);
        if (program_.controller.hasUnsavedChanges())
            std::cout << "unsaved\n";
        obstacle_.reset();
        program_.controller.addControlsPage();
        program_.controller.nextPageButtonPressed();
        program_.controller.btnRunCheck();
        for (const auto& alert : program_.alerts.shown)
            std::cout << "told " << alert.text << '\n';
        for (const Path& file : program_.files.opened)
            std::cout << "opened " << file.filename().native() << '\n';
        if (!failures().empty())
            std::cout << "logged Download failed!\n";
        if (platform::terminationSignal() != 0)
            std::cout << "signal " << platform::terminationSignal() << '\n';
        std::cout << program_.controller.lab_PageCurrentlyDisplayed()->stringValue.get() << "\ngoes on" << std::endl;
    }

private:
    using Path = std::filesystem::path;

    /// From here on the operation itself runs.
    void begin()
    {
        if (const Path file = fileOfPlugin(); !file.empty())
            obstacle_.emplace(file.parent_path());
        watchFiles(1);
    }
    Path fileOfPlugin() const
    {
        for (const platform::Record& row : program_.controller.myArrayController()->content()) {
            if (row.text("Plugin") == plugin_)
                return row.text("fileLocation");
        }
        return {};
    }
    template <typename Action>
    bool edit(Action action)
    {
        if (!program_.select(plugin_))
            return false;
        action();
        return true;
    }
    std::vector<std::string> failures() const { return program_.log.linesWith("Download failed! Error - "); }
    void listShared()
    {
        test::setBaseUrl(peer_.url());
        peer_.play(test::reply(R"([{"patchID": 7, "fileLocation": "shared/7.plist", "userComments": "mine"}])"));
        program_.controller.kvCommunityLibraryDownload();
    }
    void waitForDownloads(int times)
    {
        QElapsedTimer timer;
        timer.start();
        const auto ended = [this] { return program_.alerts.shown.size() + failures().size(); };
        while (ended() < static_cast<std::size_t>(times) && timer.elapsed() < 20000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }

    std::string plugin_;
    test::ScriptedPeer peer_;
    test::Windowless program_;
    std::optional<Obstacle> obstacle_;
};

bool run(Driver& driver, const std::string& operation, const char* row)
{
    if (operation == "scan")
        return driver.scan();
    if (operation == "mark")
        return driver.mark();
    if (operation == "save")
        return driver.save(row ? std::atoi(row) : 1);
    if (operation == "spoilt-save")
        return driver.spoiltSave(row ? std::atoi(row) : 1);
    if (operation == "everything-everywhere")
        return driver.everythingEverywhere();
    if (operation == "recall-original")
        return driver.recall("original");
    if (operation == "recall-prev")
        return driver.recall("prev");
    if (operation == "chart")
        return driver.chart();
    return driver.download(operation == "download-twice" ? 2 : 1);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv); // a request shows the busy pointer
    platform::files::failBeyondSizeLimits();
    platform::catchTerminationSignals();
    if (argc < 4)
        return 2;
    test::liveBelow(argv[1]);
    Driver driver(argv[2]);
    if (!run(driver, argv[3], argc > 4 ? argv[4] : nullptr))
        return 3; // no such plug-in
    driver.goOn();
    return 0;
}
