#pragma once
// Answers the alerts that come up while a test runs, and keeps what they said.

#include "tests/support/Noted.h"

#include <QTimer>

#include <functional>
#include <string>
#include <vector>

namespace test {

class AlertAnswers {
public:
    /// Each alert is dismissed with the button of that title, in the order of `presses`; those beyond with their first.
    explicit AlertAnswers(std::vector<std::string> presses = {});

    const std::vector<ShownAlert>& shown() const { return shown_; }
    /// Called while the alert is on screen, before it is answered.
    std::function<void()> whileOpen;
    /// How often the answer is put off, so that a test can see what happens meanwhile.
    int patience = 0;

private:
    void answer();

    QTimer timer_;
    std::vector<std::string> presses_;
    std::vector<ShownAlert> shown_;
};

/// Runs the event loop until `isDone` or, at most, some seconds; what `isDone` says then.
bool waitUntil(const std::function<bool()>& isDone);
/// Runs the event loop for a moment.
void runFor(int milliseconds);

} // namespace test
