#pragma once
// Turns what happens to the application into the delegate's questions and operations: the last window closed, Quit from
// the menu, from the system or from the session manager, and the menu item that saves the application's data.

#include <QObject>

class AppDelegate;

namespace interface {

class Interface;

class Lifecycle final : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it.
    Lifecycle(AppDelegate& delegate, const Interface& loaded);

    /// Takes the system's request to quit before Qt does.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Asks the delegate; false also while it is being asked.
    bool mayTerminate();
    /// Asks, and ends the event loop if the answer is that now is fine.
    bool terminate();
    void quit();
    void lastWindowClosed();

    AppDelegate& delegate_;
    QWidget* mainWindow_;
    bool asking_ = false;
    /// What the session manager was answered; the quit it sends then is not asked again.
    bool sessionMayEnd_ = false;
};

} // namespace interface
