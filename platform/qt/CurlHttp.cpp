#include "platform/qt/CurlHttp.h"

#include <QApplication>
#include <QWidget>

#include <csignal>
#include <memory>
#include <utility>

namespace platform::qt {

namespace {

using Clock = CurlTransfer::Clock;
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

struct FreeMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};

/// Carries the request out on a multi handle of its own, so that nothing but this transfer runs.
CURLcode perform(CurlTransfer& transfer, milliseconds stallLimit)
{
    const std::unique_ptr<CURLM, FreeMulti> multi(curl_multi_init());
    CURLcode result = CURLE_OK;
    Repaint repaint;
    do {
        curl_multi_add_handle(multi.get(), transfer.handle());
        int running = 1;
        while (curl_multi_perform(multi.get(), &running) == CURLM_OK && running > 0 &&
               !transfer.isStalled(stallLimit)) {
            curl_multi_poll(multi.get(), nullptr, 0, static_cast<int>(kRepaintAfter.count()), nullptr);
            repaint.whenDue();
        }
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi.get(), &left);
        result = message ? message->data.result : CURLE_OPERATION_TIMEDOUT;
        curl_multi_remove_handle(multi.get(), transfer.handle());
    } while (transfer.followRedirect(result));
    return result;
}

} // namespace

CurlHttp::CurlHttp(CompletionGate& gate) : CurlHttp(gate, Limits()) {}

CurlHttp::CurlHttp(CompletionGate& gate, Limits limits)
    : gate_(gate), limits_(limits), downloads_(gate, limits.stall, limits.file)
{
    std::signal(SIGPIPE, SIG_IGN); // a server that hangs up is a failed transfer, not the end of the program
    QObject::connect(&downloads_, &CurlDownloads::progressed, &downloads_,
                     [this] { downloadProgress.set(downloads_.progress()); });
}

std::optional<std::string> CurlHttp::post(const std::string& address, const std::string& contentType,
                                          std::string_view body)
{
    const CompletionGate::Hold hold(gate_);
    const BusyPointer busy;
    std::string reply;
    CurlTransfer transfer({address, true, contentType, std::string(body)}, limits_.reply,
                          [&reply](std::string_view bytes) {
                              reply.append(bytes);
                              return true;
                          });
    const CURLcode result = perform(transfer, limits_.stall);
    downloads_.restartWatches();
    return result == CURLE_OK ? std::optional(std::move(reply)) : std::nullopt;
}

void CurlHttp::download(const std::string& address, const std::filesystem::path& destination, DownloadHandlers handlers)
{
    downloads_.start(address, destination, std::move(handlers));
}

} // namespace platform::qt
