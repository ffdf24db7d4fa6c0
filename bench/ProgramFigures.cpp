// The whole program beside an empty Qt window: how long until it is painted, as a clock on the wall shows it, and how
// much memory it alone has written to. Once on a screen with two pixels to a point, as those of the Macs are that it is
// used on, and once on a coarse one.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "bench/LoadedWindow.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <time.h>

namespace bench {

namespace {

struct Report {
    double shownAfterMs;
    double ownMiB;
};

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
    double shownAfterMs = 0, ownKiB = 0;
    if (!(stream >> shownAfterMs >> ownKiB))
        throw std::runtime_error(std::string("no report of ") + program);
    return {shownAfterMs, ownKiB / 1024};
}

std::pair<Measure, Measure> starts(int scale)
{
    const auto home = std::make_shared<Home>();
    return {[home, scale] { return probe(*home, "kvOrvantaLogic_Tool", scale).shownAfterMs; },
            [home, scale] { return probe(*home, "empty_window", scale).shownAfterMs; }};
}

std::pair<Measure, Measure> memory(int scale)
{
    const auto home = std::make_shared<Home>();
    for (int plugin = 0; plugin < 5'000; ++plugin)
        home->writePlugin("Plug-in " + std::to_string(plugin), 8);
    home->writePlugin("Huge Synthesizer", 10'000);
    return {[home, scale] { return probe(*home, "kvOrvantaLogic_Tool", scale, "Huge Synthesizer").ownMiB; },
            [home, scale] { return probe(*home, "empty_window", scale).ownMiB; }};
}

} // namespace

void addProgramFigures()
{
    for (const int scale : {2, 1}) {
        const std::string screen = scale == 2 ? "" : ", coarse screen";
        add(Figure{"start to shown window" + screen, "an empty Qt window", 1.7, 41, [scale] { return starts(scale); },
                   "ms on the wall", Figure::Clock::wall});
        add(Figure{"own memory, 5,000 plug-ins" + screen, "an empty Qt window", 12, 5,
                   [scale] { return memory(scale); }, "MiB", Figure::Clock::processor, Figure::Limit::difference});
    }
}

} // namespace bench
