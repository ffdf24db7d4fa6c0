// The whole program beside an empty Qt window: how long until it is painted, and how much memory it took at most.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "bench/LoadedWindow.h"

#include <fstream>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

struct Report {
    double shownAfterMs;
    double peakMiB;
};

/// Runs a program until its window has been painted and the plug-in, if any, been chosen.
Report probe(const Home& home, const char* program, const std::string& plugin = {})
{
    const std::string report = home.path() / "report.txt";
    Texts environment = {"QT_QPA_PLATFORM=offscreen", std::string("QT_PLUGIN_PATH=") + KV_PROBE_FOLDER,
                         "QT_QPA_GENERIC_PLUGINS=kvprobe", "KV_BENCH_REPORT=" + report};
    if (!plugin.empty())
        environment.push_back("KV_BENCH_SELECT=" + plugin);
    run({std::string(KV_BINARY_FOLDER) + "/" + program}, environment);
    std::ifstream stream(report);
    double shownAfterMs = 0, peakKiB = 0;
    if (!(stream >> shownAfterMs >> peakKiB))
        throw std::runtime_error(std::string("no report of ") + program);
    return {shownAfterMs, peakKiB / 1024};
}

std::pair<Measure, Measure> starts()
{
    const auto home = std::make_shared<Home>();
    return {[home] { return probe(*home, "kvOrvantaLogic_Tool").shownAfterMs; },
            [home] { return probe(*home, "empty_window").shownAfterMs; }};
}

std::pair<Measure, Measure> peaks()
{
    const auto home = std::make_shared<Home>();
    for (int plugin = 0; plugin < 5'000; ++plugin)
        home->writePlugin("Plug-in " + std::to_string(plugin), 8);
    home->writePlugin("Huge Synthesizer", 10'000);
    return {[home] { return probe(*home, "kvOrvantaLogic_Tool", "Huge Synthesizer").peakMiB; },
            [home] { return probe(*home, "empty_window").peakMiB; }};
}

} // namespace

void addProgramFigures()
{
    add(Figure{"start to shown window", "an empty Qt window", 1.5, 15, starts});
    add(Figure{"peak memory, 5,000 plug-ins", "an empty Qt window", 1.5, 5, peaks, "MiB"});
}

} // namespace bench
