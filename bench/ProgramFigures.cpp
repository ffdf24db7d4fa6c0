// The whole program beside an empty Qt window: how long until it is painted, as a clock on the wall shows it, and how
// much memory it took at most. Once on a screen with two pixels to a point, as those of the Macs are that it is used
// on, and once on a coarse one. The process that carries out the log-in check before the window is shown counts, too.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "bench/LoadedWindow.h"
#include "platform/transfer/TransferProcess.h"
#include "tests/support/ScriptedPeer.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <time.h>

namespace bench {

namespace {

struct Report {
    double shownAfterMs;
    double peakMiB;
    double unshownMiB; ///< the peak until the window was about to be shown
};

/// The mappings of a process: the file of each, empty where there is none, and how much of it is in memory.
std::vector<std::pair<std::string, double>> mappingsMiB(const std::string& process)
{
    std::vector<std::pair<std::string, double>> mappings;
    std::ifstream stream("/proc/" + process + "/smaps");
    for (std::string line; std::getline(stream, line);) {
        const std::size_t file = line.find('/');
        if (line.starts_with("Rss:"))
            mappings.back().second = std::atof(line.c_str() + 4) / 1024;
        else if (line.find('-') < line.find(' '))
            mappings.emplace_back(file == line.npos ? "" : line.substr(file), 0);
    }
    return mappings;
}

/// What the process that this one has started adds to the memory: of the libraries that both have, which are this
/// program's, too, one is in memory.
double childMiB()
{
    std::set<std::string> shared;
    for (const auto& [file, size] : mappingsMiB("self"))
        shared.insert(file);
    shared.erase("");
    std::ifstream children("/proc/thread-self/children");
    std::string child;
    children >> child;
    double sum = 0;
    for (const auto& [file, size] : mappingsMiB(child))
        sum += shared.count(file) ? 0 : size;
    if (sum == 0)
        throw std::runtime_error("no transfer runs");
    return sum;
}

/// What the process of a request like the log-in check adds while it waits for the end of the reply.
double transferMiB()
{
    support::ScriptedPeer server;
    server.play([](support::ScriptedPeer::Connection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n\nOK\n");
        connection.wait(std::chrono::minutes(1)); // for the last byte
    });
    platform::transfer::TransferProcess process(KV_TRANSFER_PROGRAM);
    process.send({server.url() + "checkuser.php", true, {}, {}, std::chrono::minutes(1), 1000});
    bool isAnswered = false;
    while (!isAnswered && !process.outcome())
        process.receive({[](std::int64_t) {}, [&](std::string_view) { return isAnswered = true; }});
    return childMiB();
}

/// Runs a program until its window has been painted and the plug-in, if any, been chosen: on the X server where there
/// is one, with so many pixels to a point.
Report probe(const Home& home, const char* program, int scale, const std::string& plugin = {})
{
    const std::string report = home.path() / "report.txt";
    Texts environment = {std::string("QT_QPA_PLATFORM=") + (std::getenv("DISPLAY") ? "xcb" : "offscreen"),
                         "QT_SCALE_FACTOR=" + std::to_string(scale), std::string("QT_PLUGIN_PATH=") + KV_PROBE_FOLDER,
                         "QT_QPA_GENERIC_PLUGINS=kvprobe", "KV_BENCH_REPORT=" + report,
                         // What the network takes is not ours: the log-in check is refused at once.
                         "http_proxy=http://127.0.0.1:9",
                         "KV_BENCH_STARTED=" + std::to_string(millisecondsOn(CLOCK_MONOTONIC))};
    if (!plugin.empty())
        environment.push_back("KV_BENCH_SELECT=" + plugin);
    run({std::string(KV_BINARY_FOLDER) + "/" + program}, environment);
    std::ifstream stream(report);
    double shownAfterMs = 0, peakKiB = 0, unshownKiB = 0;
    if (!(stream >> shownAfterMs >> peakKiB >> unshownKiB))
        throw std::runtime_error(std::string("no report of ") + program);
    return {shownAfterMs, peakKiB / 1024, unshownKiB / 1024};
}

std::pair<Measure, Measure> starts(int scale)
{
    const auto home = std::make_shared<Home>();
    return {[home, scale] { return probe(*home, "kvOrvantaLogic_Tool", scale).shownAfterMs; },
            [home, scale] { return probe(*home, "empty_window", scale).shownAfterMs; }};
}

std::pair<Measure, Measure> peaks(int scale)
{
    const auto home = std::make_shared<Home>();
    for (int plugin = 0; plugin < 5'000; ++plugin)
        home->writePlugin("Plug-in " + std::to_string(plugin), 8);
    home->writePlugin("Huge Synthesizer", 10'000);
    const double transfer = transferMiB();
    const auto ours = [home, scale, transfer] {
        const Report report = probe(*home, "kvOrvantaLogic_Tool", scale, "Huge Synthesizer");
        return std::max(report.peakMiB, report.unshownMiB + transfer);
    };
    return {ours, [home, scale] { return probe(*home, "empty_window", scale).peakMiB; }};
}

} // namespace

void addProgramFigures()
{
    for (const int scale : {2, 1}) {
        const std::string screen = scale == 2 ? "" : ", coarse screen";
        add(Figure{"start to shown window" + screen, "an empty Qt window", 1.5, 41, [scale] { return starts(scale); },
                   "ms on the wall", true});
        add(Figure{"peak memory, 5,000 plug-ins" + screen, "an empty Qt window", 1.5, 5,
                   [scale] { return peaks(scale); }, "MiB"});
    }
}

} // namespace bench
