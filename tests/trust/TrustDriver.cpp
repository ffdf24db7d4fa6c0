// Does one thing to a plug-in's files with the program's own controller, watched by FileFaults when that is preloaded:
//
//   ROOT PLUGIN scan | mark | save ROW | spoilt-save ROW | recall-original | recall-prev | chart |
//               download | download-twice | everything-everywhere | draft WHAT
//
// A spoilt save comes upon a file that was a mapping when its plug-in was selected; "everything-everywhere" selects
// every plug-in in turn, saves, recalls and draws a chart. "draft" edits the mapping twice, keeps the first edit as a
// draft and then does one thing: "keep" once more, "leave" for another plug-in, "bring-back" or "discard" the draft
// left before, "save"; "keep-first" keeps both edits at once.
//
// Started once, it runs any number of times, each in a process of its own that becomes a child of whoever started it:
// to start the program is most of what a run costs. Of a run it reads settings of the environment ("NAME=VALUE"), a
// line each, an empty line, the file for the output and the arguments above, a line each, and an empty line; it answers
// with the number of the process.
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

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

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

constexpr char kOtherPlugin[] = "EQ Two";

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
            press(0, row);
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
            press(0, row);
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
            press(0, 2);
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

    bool draft(const std::string& what)
    {
        return edit([&] {
            ViewController& controller = program_.controller;
            press(0, 2);
            if (what != "keep-first")
                controller.keepDraft();
            press(1, 3);
            begin();
            if (what == "leave")
                program_.select(kOtherPlugin);
            else if (what == "bring-back")
                controller.bringBackDraft();
            else if (what == "discard")
                controller.discardDraft();
            else if (what == "save")
                controller.kvExportToPlist();
            else
                controller.keepDraft();
            watchFiles(0);
            obstacle_.reset();
            std::cout << "goes on" << std::endl;
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
    /// Puts a row's parameter on a pot of the first page.
    void press(std::int32_t pot, std::int32_t row)
    {
        program_.controller.arrayControllerPlistSelected()->setSelectionIndex(row);
        program_.controller.clickControl(pot);
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

bool run(Driver& driver, const std::string& operation, const char* argument)
{
    if (operation == "scan")
        return driver.scan();
    if (operation == "mark")
        return driver.mark();
    if (operation == "save")
        return driver.save(argument ? std::atoi(argument) : 1);
    if (operation == "spoilt-save")
        return driver.spoiltSave(argument ? std::atoi(argument) : 1);
    if (operation == "everything-everywhere")
        return driver.everythingEverywhere();
    if (operation == "recall-original")
        return driver.recall("original");
    if (operation == "recall-prev")
        return driver.recall("prev");
    if (operation == "chart")
        return driver.chart();
    if (operation == "draft")
        return driver.draft(argument ? argument : "");
    return driver.download(operation == "download-twice" ? 2 : 1);
}

} // namespace

namespace {

using Lines = std::vector<std::string>;

/// The lines up to an empty one; none at the end.
std::optional<Lines> readLines()
{
    Lines lines;
    for (std::string line; std::getline(std::cin, line);) {
        if (line.empty())
            return lines;
        lines.push_back(line);
    }
    return std::nullopt;
}

int carryOut(const Lines& settings, const Lines& arguments)
{
    for (const std::string& setting : settings) {
        const auto end = setting.find('=');
        ::setenv(setting.substr(0, end).c_str(), setting.substr(end + 1).c_str(), 1);
    }
    ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(::open(arguments.at(0).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), STDOUT_FILENO);
    const std::string& operation = arguments.at(3);
    std::string name = "trust_driver";
    char* names[] = {name.data(), nullptr};
    int count = 1;
    std::unique_ptr<QCoreApplication> application;
    if (operation.starts_with("download")) // a request shows the busy pointer; the others do without
        application = std::make_unique<QGuiApplication>(count, names);
    else
        application = std::make_unique<QCoreApplication>(count, names);
    platform::files::failBeyondSizeLimits();
    platform::catchTerminationSignals();
    test::liveBelow(arguments.at(1));
    Driver driver(arguments.at(2));
    if (!run(driver, operation, arguments.size() > 4 ? arguments[4].c_str() : nullptr))
        return 3; // no such plug-in
    if (operation != "draft")
        driver.goOn();
    return 0;
}

} // namespace

int main()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (;;) {
        const auto settings = readLines();
        const auto arguments = settings ? readLines() : std::nullopt;
        if (!arguments)
            return 0;
        // As fork() does it, but for the parent.
        const long process = ::syscall(SYS_clone, CLONE_PARENT | SIGCHLD, nullptr, nullptr, nullptr, nullptr);
        if (process == 0)
            return carryOut(*settings, *arguments);
        std::cout << process << std::endl;
    }
}
