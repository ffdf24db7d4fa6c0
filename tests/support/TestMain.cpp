// main of tests with real windows: one application for all tests of the executable.

#include "platform/qt/Application.h"

#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    for (const char* proxy :
         {"http_proxy", "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        qunsetenv(proxy);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) // whoever wants to watch the windows sets another
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const platform::qt::Application application(argc, argv);
    return RUN_ALL_TESTS();
}
