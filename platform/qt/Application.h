#pragma once
// The Qt application as this program runs it: its names, plain tool tips, colours that can be read, a log that holds
// nothing back while the program waits, and an orderly end when a signal asks for it.

#include "platform/qt/PlainToolTips.h"

#include <QApplication>

namespace platform {
class Log;
}

namespace platform::qt {

class Application final : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);

    /// Flushes the log every time the event loop is about to wait. `log` must outlive the application's event loop.
    void flushWhenIdle(Log& log);

    /// From now on SIGHUP, SIGINT and SIGTERM end the event loop, and with it an alert that is open, as soon as it
    /// comes to them. Nobody is asked.
    void endOnTerminationSignals();

    /// Runs the event loop. The exit status: 128 and the signal's number where one came.
    int run();

protected:
    bool event(QEvent* event) override;

private:
    PlainToolTips plainToolTips_;
};

} // namespace platform::qt
