#include "platform/qt/TransferHttp.h"

#include <QApplication>
#include <QWidget>

#include <csignal>
#include <utility>

#include <poll.h>

namespace platform::qt {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kRepaintAfter{50};
constexpr milliseconds kRepaintEvery{200};

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

bool isReadable(int descriptor, milliseconds wait)
{
    pollfd awaited = {descriptor, POLLIN, 0};
    return ::poll(&awaited, 1, static_cast<int>(wait.count())) > 0;
}

} // namespace

TransferHttp::TransferHttp(CompletionGate& gate) : TransferHttp(gate, Limits()) {}

TransferHttp::TransferHttp(CompletionGate& gate, Limits limits)
    : gate_(gate), limits_(limits), downloads_(gate, limits.stall, limits.file)
{
    std::signal(SIGPIPE, SIG_IGN); // a process that has ended is a failed transfer, not the end of the program
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
    const auto process = prepared_ ? std::move(prepared_) : startTransfer();
    process->send({address, true, contentType, std::string(body), limits_.stall, limits_.reply});
    std::string reply;
    const transfer::TransferProcess::Listener listener = {[](std::int64_t) {},
                                                          [&reply](std::string_view piece) {
                                                              reply.append(piece);
                                                              return true;
                                                          }};
    Repaint repaint;
    while (!process->outcome()) {
        if (isReadable(process->descriptor(), kRepaintAfter))
            process->receive(listener);
        repaint.whenDue();
    }
    return process->outcome()->isWhole ? std::optional(std::move(reply)) : std::nullopt;
}

void TransferHttp::download(const std::string& address, const std::filesystem::path& destination,
                            DownloadHandlers handlers)
{
    downloads_.start(address, destination, std::move(handlers));
}

} // namespace platform::qt
