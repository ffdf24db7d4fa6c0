#include "platform/qt/Application.h"

#include "platform/Effects.h"
#include "platform/TerminationSignals.h"
#include "platform/qt/ReadableColours.h"
#include "platform/qt/ReadableStyle.h"

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QIcon>
#include <QSocketNotifier>

namespace platform::qt {

Application::Application(int& argc, char** argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("kvOrvantaLogic_Tool"));
    setApplicationDisplayName(QStringLiteral("kvOrvantaLogic Tool"));
    setApplicationVersion(QStringLiteral(KV_VERSION));
#ifndef Q_OS_MACOS // it would stand in the Dock in place of the bundle's
    setWindowIcon(QIcon(QStringLiteral(":/icon/kvOrvantaLogic_Tool-small.svg")));
#endif
    setDesktopFileName(QStringLiteral(KV_BUNDLE_IDENTIFIER));
    installEventFilter(&plainToolTips_);
    if (style()->name() == QLatin1String("fusion"))
        setStyle(new ReadableStyle);
    setPalette(withReadableTexts(palette()));
}

void Application::flushWhenIdle(Log& log)
{
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [&log] { log.flush(); });
}

void Application::endOnTerminationSignals()
{
    const auto* notifier = new QSocketNotifier(catchTerminationSignals(), QSocketNotifier::Read, this);
    // Every time, since what an alert's loop is ended by does not end the loops that begin afterwards.
    connect(notifier, &QSocketNotifier::activated, this, [] { exit(); });
}

int Application::run()
{
    const int status = exec();
    const int signal = terminationSignal();
    return signal == 0 ? status : 128 + signal;
}

bool Application::event(QEvent* event)
{
    const bool handled = QApplication::event(event);
    // The desktop has other colours now. Those that were made readable once are not made so again.
    if (event->type() == QEvent::ApplicationPaletteChange) {
        const QPalette readable = withReadableTexts(palette());
        if (readable != palette())
            setPalette(readable);
    }
    return handled;
}

} // namespace platform::qt
