#include "platform/qt/Application.h"

#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", qEnvironmentVariable("QT_QPA_PLATFORM", QStringLiteral("offscreen")).toUtf8());
    const platform::qt::Application application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
