#pragma once
// Closed while an alert is open, a request blocks or another completion is handled. What completes by itself waits
// until the gate opens, so that it never comes in the middle of another operation.

#include <QObject>

namespace platform::qt {

class CompletionGate final : public QObject {
    Q_OBJECT

public:
    /// Keeps the gate closed as long as it lives.
    class Hold {
    public:
        explicit Hold(CompletionGate& gate) : gate_(gate) { ++gate_.holds_; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        ~Hold()
        {
            if (--gate_.holds_ == 0)
                Q_EMIT gate_.opened();
        }

    private:
        CompletionGate& gate_;
    };

    bool isOpen() const { return holds_ == 0; }

Q_SIGNALS:
    /// Sent in the middle of the operation that held the gate: whoever waits comes back from the event loop.
    void opened();

private:
    int holds_ = 0;
};

} // namespace platform::qt
