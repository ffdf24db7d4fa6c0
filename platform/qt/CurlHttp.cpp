#include "platform/qt/CurlHttp.h"

#include "platform/qt/CurlDownloads.h"
#include "platform/qt/CurlTransfer.h"

#include <QApplication>
#include <QWidget>

#include <csignal>
#include <utility>

namespace platform::qt {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kLookUpEvery{50};
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
    Clock::time_point due_ = Clock::now() + kLookUpEvery;
};

/// Whether the reply came whole. curl_easy_perform() would look up once a second only, which is too seldom for windows
/// that have been uncovered and for someone who wants to end the program.
bool perform(CurlTransfer& transfer, milliseconds total, const std::function<bool()>& isCancelled)
{
    const MultiHandle multi(curl_multi_init());
    curl_waitfd nothing = {CURL_SOCKET_BAD, 0, 0}; // without any, libcurl does not wait while it looks for a name
    const auto deadline = Clock::now() + total;
    const auto isOver = [&] { return Clock::now() >= deadline || (isCancelled && isCancelled()); };
    Repaint repaint;
    CURLcode result = CURLE_OK;
    while (transfer.nextHop(result)) {
        curl_multi_add_handle(multi.get(), transfer.handle());
        int running = 1;
        while (running > 0 && !isOver()) {
            curl_multi_wait(multi.get(), &nothing, 1, static_cast<int>(kLookUpEvery.count()), nullptr);
            if (curl_multi_perform(multi.get(), &running) != CURLM_OK)
                break;
            repaint.whenDue();
        }
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi.get(), &left);
        result = message ? message->data.result : CURLE_OPERATION_TIMEDOUT;
        curl_multi_remove_handle(multi.get(), transfer.handle());
    }
    return result == CURLE_OK;
}

std::unique_ptr<CurlDownloads> makeDownloads(CompletionGate& gate, const HttpLimits& limits)
{
    static const CURLcode initialized =
        curl_global_init(CURL_GLOBAL_DEFAULT); // where it failed, so does every transfer
    static_cast<void>(initialized);
    return std::make_unique<CurlDownloads>(gate, limits.stall, limits.file);
}

} // namespace

CurlHttp::CurlHttp(CompletionGate& gate, std::function<bool()> isCancelled, HttpLimits limits)
    : gate_(gate), isCancelled_(std::move(isCancelled)), limits_(limits), downloads_(makeDownloads(gate, limits))
{
    std::signal(SIGPIPE, SIG_IGN); // a server that hangs up is a failed transfer, not the end of the program
    QObject::connect(downloads_.get(), &CurlDownloads::progressed, downloads_.get(),
                     [this] { downloadProgress.set(downloads_->progress()); });
}

CurlHttp::~CurlHttp() = default;

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
    return perform(transfer, limits_.total, isCancelled_) ? std::optional(std::move(reply)) : std::nullopt;
}

void CurlHttp::download(const std::string& address, const std::filesystem::path& destination, DownloadHandlers handlers)
{
    downloads_->start(address, destination, std::move(handlers));
}

} // namespace platform::qt
