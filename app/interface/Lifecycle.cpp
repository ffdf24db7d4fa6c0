#include "app/interface/Lifecycle.h"

#include "app/AppDelegate.h"
#include "app/interface/Interface.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QSessionManager>

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
            session.allowsInteraction(); // the delegate may have to ask the user
            if (!mayTerminate())
                session.cancel();
            session.release();
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
    delegate_.applicationWillTerminate();
    QApplication::exit(0);
    return true;
}

void Lifecycle::lastWindowClosed()
{
    // An alert of the question itself counts as a window that closes.
    if (asking_ || !delegate_.applicationShouldTerminateAfterLastWindowClosed())
        return;
    if (!terminate())
        mainWindow_->show(); // nothing else would bring it back
}

} // namespace interface
