// What the program costs: `bench [--check] [--benchmark_filter=REGEX]`. With --check it ends with 1 where a figure is
// over its limit.

#include "bench/Figure.h"
#include "platform/qt/Application.h"

int main(int argc, char* argv[])
{
    for (const char* proxy : {"http_proxy", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        qunsetenv(proxy);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    const platform::qt::Application application(argc, argv);
    bench::addScanFigures();
    bench::addPropertyListFigures();
    bench::addEditingFigures();
    bench::addCommunityFigures();
    bench::addProgramFigures();
    return bench::runAll(argc, argv) ? 0 : 1;
}
