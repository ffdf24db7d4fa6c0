#pragma once
// Turns the application's events into the delegate's questions: the last window closed, the Quit command.

#include <QObject>

class AppDelegate;

namespace interface {

class Lifecycle final : public QObject {
    Q_OBJECT

public:
    explicit Lifecycle(AppDelegate& delegate);

    /// Asks the delegate and quits if it answers that now is fine.
    void terminate();

private:
    AppDelegate& delegate_;
};

} // namespace interface
