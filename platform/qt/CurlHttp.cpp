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

constexpr milliseconds kRepaintEvery{200};

class BusyPointer {
public:
    BusyPointer() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
    ~BusyPointer() { QGuiApplication::restoreOverrideCursor(); }
};

/// What goes on while a request is waited for; libcurl asks whenever something moves, and once a second.
class Waiting {
public:
    Waiting(milliseconds total, const std::function<bool()>& isCancelled)
        : deadline_(Clock::now() + total), isCancelled_(isCancelled)
    {}

    long millisecondsLeft() const
    {
        return static_cast<long>(std::chrono::ceil<milliseconds>(deadline_ - Clock::now()).count());
    }

    static int goOn(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
    {
        auto& waiting = *static_cast<Waiting*>(self);
        waiting.repaintWhenDue();
        return waiting.isCancelled_ && waiting.isCancelled_() ? 1 : 0;
    }

private:
    /// Draws the windows as they are while no event loop runs: nobody tells us what another window has uncovered.
    void repaintWhenDue()
    {
        if (Clock::now() < repaintDue_)
            return;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible())
                window->repaint();
        }
        repaintDue_ = Clock::now() + kRepaintEvery;
    }

    Clock::time_point deadline_;
    const std::function<bool()>& isCancelled_;
    Clock::time_point repaintDue_ = Clock::now(); // what was set just before shows at once
};

/// Whether the reply came whole.
bool perform(CurlTransfer& transfer, milliseconds total, const std::function<bool()>& isCancelled)
{
    Waiting waiting(total, isCancelled);
    CURLcode result = CURLE_OK;
    while (transfer.nextHop(result)) {
        CURL* handle = transfer.handle();
        const long left = waiting.millisecondsLeft();
        const bool isReady = left > 0 && curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, left) == CURLE_OK &&
                             curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &Waiting::goOn) == CURLE_OK &&
                             curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &waiting) == CURLE_OK &&
                             curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L) == CURLE_OK;
        if (!isReady)
            return false;
        result = curl_easy_perform(handle);
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

std::uint64_t CurlHttp::fetch(const std::string& address, FetchHandlers handlers)
{
    return downloads_->fetch(address, std::move(handlers));
}

void CurlHttp::giveUp(std::uint64_t fetch)
{
    downloads_->giveUp(fetch);
}

} // namespace platform::qt
