#include "app/interface/Lifecycle.h"

#include "app/AppDelegate.h"

#include <QApplication>

namespace interface {

Lifecycle::Lifecycle(AppDelegate& delegate) : delegate_(delegate)
{
    // The delegate decides, not Qt.
    QApplication::setQuitOnLastWindowClosed(false);
    connect(qApp, &QApplication::lastWindowClosed, this, [this] {
        if (delegate_.applicationShouldTerminateAfterLastWindowClosed())
            terminate();
    });
}

void Lifecycle::terminate()
{
    if (delegate_.applicationShouldTerminate() != AppDelegate::TerminateReply::now)
        return;
    delegate_.applicationWillTerminate();
    QApplication::exit(0);
}

} // namespace interface
