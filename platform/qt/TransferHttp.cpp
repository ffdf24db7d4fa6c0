#include "platform/qt/TransferHttp.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <utility>

namespace platform::qt {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kRepaintAfter{50};
constexpr milliseconds kRepaintEvery{200};
/// The end of a process takes the system a while, for which nobody need wait: least of all the start.
constexpr milliseconds kClearAwayAfter{1000};

class BusyPointer {
public:
    BusyPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
    ~BusyPointer() { QGuiApplication::restoreOverrideCursor(); }
};

/// Draws the windows as they are while no event loop runs: nobody tells us what another window has uncovered.
class Repaint {
public:
    void whenDue()
    {
        if (Clock::now() < due_)
            return;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                window->repaint();
        }
        due_ = Clock::now() + kRepaintEvery;
    }

private:
    Clock::time_point due_ = Clock::now() + kRepaintAfter;
};

} // namespace

TransferHttp::TransferHttp(CompletionGate& gate) : TransferHttp(gate, Limits()) {}

TransferHttp::TransferHttp(CompletionGate& gate, Limits limits)
    : gate_(gate), limits_(limits), downloads_(gate, limits.stall, limits.file)
{
    QObject::connect(&downloads_, &TransferDownloads::progressed, &downloads_,
                     [this] { downloadProgress.set(downloads_.progress()); });
}

void TransferHttp::prepare()
{
    prepared_ = startTransfer();
}

std::optional<std::string> TransferHttp::post(const std::string& address, const std::string& contentType,
                                              std::string_view body)
{
    const CompletionGate::Hold hold(gate_);
    const BusyPointer busy;
    if (prepared_ && prepared_->isReadable(milliseconds(0)))
        prepared_.reset(); // without a request it has nothing to say but that it has ended
    auto process = prepared_ ? std::move(prepared_) : startTransfer();
    process->send({address, true, contentType, std::string(body), limits_.stall, limits_.reply});
    std::string reply;
    const transfer::TransferProcess::Listener listener = {[](std::int64_t) {},
                                                          [&reply](std::string_view piece) {
                                                              reply.append(piece);
                                                              return true;
                                                          }};
    Repaint repaint;
    while (!process->outcome()) {
        if (process->isReadable(kRepaintAfter))
            process->receive(listener);
        else
            process->failIfSilent();
        repaint.whenDue();
    }
    const bool isWhole = process->outcome()->isWhole;
    ended_ = std::move(process);
    QTimer::singleShot(kClearAwayAfter, &downloads_, [this] { ended_.reset(); });
    return isWhole ? std::optional(std::move(reply)) : std::nullopt;
}

void TransferHttp::download(const std::string& address, const std::filesystem::path& destination,
                            DownloadHandlers handlers)
{
    downloads_.start(address, destination, std::move(handlers));
}

} // namespace platform::qt
