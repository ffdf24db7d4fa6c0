#include "platform/qt/Application.h"

#include "platform/Effects.h"

#include <QAbstractEventDispatcher>

namespace platform::qt {

Application::Application(int& argc, char** argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("kvOrvantaLogic_Tool"));
    setApplicationDisplayName(QStringLiteral("kvOrvantaLogic Tool"));
    setApplicationVersion(QStringLiteral(KV_VERSION));
    setDesktopFileName(QStringLiteral(KV_BUNDLE_IDENTIFIER));
    installEventFilter(&plainToolTips_);
}

void Application::flushWhenIdle(Log& log)
{
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [&log] { log.flush(); });
}

} // namespace platform::qt
