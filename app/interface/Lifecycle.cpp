#include "app/interface/Lifecycle.h"

#include "app/AppDelegate.h"
#include "app/interface/Interface.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QSessionManager>

#include <utility>

namespace interface {

Lifecycle::Lifecycle(AppDelegate& delegate, const Interface& loaded)
    : delegate_(delegate), mainWindow_(loaded.mainWindow())
{
    // The delegate decides, not Qt.
    QApplication::setQuitOnLastWindowClosed(false);
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::lastWindowClosed, this, &Lifecycle::lastWindowClosed);
    connect(
        qApp, &QApplication::commitDataRequest, this,
        [this](QSessionManager& session) {
            // Asked for, not waited for: changes that cannot be saved are worth a question even if it is refused.
            session.allowsInteraction();
            sessionMayEnd_ = mayTerminate();
            if (!sessionMayEnd_)
                session.cancel();
        },
        Qt::DirectConnection);
    connect(loaded.find<QAction>("terminate"), &QAction::triggered, this, &Lifecycle::terminate);
    connect(loaded.find<QAction>("saveAction"), &QAction::triggered, this, [this] { delegate_.saveAction(); });
}

bool Lifecycle::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Quit || watched != qApp)
        return false;
    // Qt would close one window after another before anybody is asked.
    if (std::exchange(sessionMayEnd_, false)) {
        quit();
        return true;
    }
    event->setAccepted(terminate());
    return true;
}

bool Lifecycle::mayTerminate()
{
    if (asking_)
        return false;
    const QScopedValueRollback guard(asking_, true);
    return delegate_.applicationShouldTerminate() == AppDelegate::TerminateReply::now;
}

bool Lifecycle::terminate()
{
    if (!mayTerminate())
        return false;
    quit();
    return true;
}

void Lifecycle::quit()
{
    delegate_.applicationWillTerminate();
    QApplication::exit(0);
}

void Lifecycle::lastWindowClosed()
{
    // An alert of the question itself counts as a window that closes.
    if (asking_ || !delegate_.applicationShouldTerminateAfterLastWindowClosed())
        return;
    if (terminate())
        return;
    // Nothing else would bring it back.
    mainWindow_->setWindowState(mainWindow_->windowState() & ~Qt::WindowMinimized);
    mainWindow_->show();
    mainWindow_->raise();
    mainWindow_->activateWindow();
}

} // namespace interface
