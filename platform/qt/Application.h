#pragma once
// The Qt application as this program runs it: its names, plain tool tips, colours that can be read, and a log that
// holds nothing back while the program waits.

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

protected:
    bool event(QEvent* event) override;

private:
    PlainToolTips plainToolTips_;
};

} // namespace platform::qt
