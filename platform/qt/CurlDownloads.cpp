#include "platform/qt/CurlDownloads.h"

#include <QSocketNotifier>

#include <algorithm>
#include <string_view>
#include <utility>

namespace platform::qt {

namespace {

/// A download has stalled when nothing has moved for more looks at it. None is taken while the event loop does not run,
/// as during a blocking request, which is no fault of the server's.
constexpr int kLooks = 30;
/// More at once share the same line, and each holds a socket and a file.
constexpr std::size_t kMostRunning = 4;

} // namespace

struct CurlDownloads::Download {
    Download(Waiting begun, std::size_t limit, std::function<void()> progressed)
        : number(begun.number),
          handlers(std::move(begun.handlers)),
          transfer({std::move(begun.address), false, {}, {}}, limit, [this, progressed](std::string_view bytes) {
              progressed();
              if (file)
                  return file->append(bytes);
              body += bytes;
              return true;
          })
    {
        if (begun.destination)
            file.emplace(*begun.destination);
    }

    std::uint64_t number;
    std::optional<files::PartialFile> file; ///< none: into `body`
    std::string body;
    FetchHandlers handlers;
    CurlTransfer transfer;
    int looksInVain = 0;
};

CurlDownloads::CurlDownloads(CompletionGate& gate, std::chrono::milliseconds stallLimit, std::size_t sizeLimit)
    : gate_(gate), sizeLimit_(sizeLimit), multi_(curl_multi_init())
{
    curl_multi_setopt(multi_.get(), CURLMOPT_SOCKETFUNCTION, &CurlDownloads::watchSocket);
    curl_multi_setopt(multi_.get(), CURLMOPT_SOCKETDATA, static_cast<void*>(this));
    curl_multi_setopt(multi_.get(), CURLMOPT_TIMERFUNCTION, &CurlDownloads::setTimer);
    curl_multi_setopt(multi_.get(), CURLMOPT_TIMERDATA, static_cast<void*>(this));
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] { drive(CURL_SOCKET_TIMEOUT, 0); });
    watch_.setInterval(stallLimit / kLooks);
    connect(&watch_, &QTimer::timeout, this, &CurlDownloads::endStalled);
    connect(&gate_, &CompletionGate::opened, this, &CurlDownloads::scheduleDelivery);
}

CurlDownloads::~CurlDownloads()
{
    for (const auto& download : running_)
        curl_multi_remove_handle(multi_.get(), download->transfer.handle());
}

void CurlDownloads::start(const std::string& address, const std::filesystem::path& destination,
                          DownloadHandlers handlers)
{
    waiting_.push_back(
        {++lastNumber_,
         address,
         destination,
         {[finished = std::move(handlers.finished)](const Reply&) { finished(); }, std::move(handlers.failed)}});
    fillPlaces();
}

std::uint64_t CurlDownloads::fetch(const std::string& address, FetchHandlers handlers)
{
    waiting_.push_back({++lastNumber_, address, std::nullopt, std::move(handlers)});
    fillPlaces();
    return lastNumber_;
}

void CurlDownloads::giveUp(std::uint64_t fetch)
{
    const auto isIt = [fetch](const auto& each) { return each.number == fetch; };
    std::erase_if(waiting_, isIt);
    std::erase_if(completed_, isIt);
    std::erase_if(running_, [&](const auto& download) {
        if (!isIt(*download))
            return false;
        curl_multi_remove_handle(multi_.get(), download->transfer.handle());
        return true;
    });
    fillPlaces();
}

void CurlDownloads::fillPlaces()
{
    while (!waiting_.empty() && running_.size() < kMostRunning) {
        Waiting next = std::move(waiting_.front());
        waiting_.pop_front();
        begin(std::move(next));
    }
    if (running_.empty())
        watch_.stop();
    else if (!watch_.isActive())
        watch_.start();
    Q_EMIT progressed();
}

void CurlDownloads::begin(Waiting next)
{
    running_.push_back(std::make_unique<Download>(std::move(next), sizeLimit_, [this] { Q_EMIT progressed(); }));
    Download& download = *running_.back();
    if (download.file && !download.file->isOpen())
        end(download, CURLE_WRITE_ERROR);
    else
        goOn(download, CURLE_OK);
}

DownloadProgress CurlDownloads::progress() const
{
    DownloadProgress sum{static_cast<int>(running_.size()), 0, 0};
    bool areAllKnown = waiting_.empty();
    for (const auto& download : running_) {
        sum.received += download->transfer.received();
        sum.expected += download->transfer.expected();
        areAllKnown = areAllKnown && download->transfer.expected() > 0;
    }
    return areAllKnown ? sum : DownloadProgress{sum.running, sum.received, 0};
}

int CurlDownloads::watchSocket(CURL*, curl_socket_t socket, int what, void* self, void*)
{
    auto& downloads = *static_cast<CurlDownloads*>(self);
    const auto add = [&](QSocketNotifier::Type type, int event) {
        auto* notifier = new QSocketNotifier(socket, type, &downloads);
        connect(notifier, &QSocketNotifier::activated, &downloads,
                [&downloads, socket, event] { downloads.drive(socket, event); });
        return notifier;
    };
    auto known = downloads.notifiers_.find(socket);
    if (known == downloads.notifiers_.end())
        known = downloads.notifiers_
                    .emplace(socket, Notifiers{add(QSocketNotifier::Read, CURL_CSELECT_IN),
                                               add(QSocketNotifier::Write, CURL_CSELECT_OUT)})
                    .first;
    const Notifiers notifiers = known->second;
    notifiers.readable->setEnabled((what & CURL_POLL_IN) != 0);
    notifiers.writable->setEnabled((what & CURL_POLL_OUT) != 0);
    if (what == CURL_POLL_REMOVE) {
        notifiers.readable->deleteLater(); // it may be the one that called
        notifiers.writable->deleteLater();
        downloads.notifiers_.erase(known);
    }
    return 0;
}

int CurlDownloads::setTimer(CURLM*, long milliseconds, void* self)
{
    QTimer& timer = static_cast<CurlDownloads*>(self)->timer_;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

void CurlDownloads::drive(curl_socket_t socket, int events)
{
    int running = 0;
    curl_multi_socket_action(multi_.get(), socket, events, &running);
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
        CURL* const handle = message->easy_handle;
        const CURLcode result = message->data.result;
        const auto download = std::find_if(running_.begin(), running_.end(),
                                           [&](const auto& each) { return each->transfer.handle() == handle; });
        curl_multi_remove_handle(multi_.get(), handle);
        goOn(**download, result);
    }
    fillPlaces();
}

void CurlDownloads::goOn(Download& download, CURLcode result)
{
    if (!download.transfer.nextHop(result))
        end(download, result);
    else if (curl_multi_add_handle(multi_.get(), download.transfer.handle()) != CURLM_OK)
        end(download, CURLE_FAILED_INIT);
}

void CurlDownloads::endStalled()
{
    for (std::size_t i = running_.size(); i-- > 0;) {
        Download& download = *running_[i];
        download.looksInVain = download.transfer.hasMoved() ? 0 : download.looksInVain + 1;
        if (download.looksInVain <= kLooks)
            continue;
        curl_multi_remove_handle(multi_.get(), download.transfer.handle());
        end(download, CURLE_OPERATION_TIMEDOUT);
    }
    fillPlaces();
}

void CurlDownloads::end(Download& download, CURLcode result)
{
    if (result == CURLE_OK && download.file && !download.file->finish())
        result = CURLE_WRITE_ERROR;
    if (result == CURLE_OK)
        complete(download.number, [finished = std::move(download.handlers.finished),
                                   reply = Reply{download.transfer.status(), std::move(download.body)}]() mutable {
            finished(std::move(reply));
        });
    else
        complete(download.number,
                 [failed = std::move(download.handlers.failed),
                  error = DownloadError{curl_easy_strerror(result), download.transfer.address()}] { failed(error); });
    std::erase_if(running_, [&](const auto& each) { return each.get() == &download; });
}

void CurlDownloads::complete(std::uint64_t number, std::function<void()> tell)
{
    completed_.push_back({number, std::move(tell)});
    scheduleDelivery();
}

void CurlDownloads::scheduleDelivery()
{
    if (!completed_.empty())
        QMetaObject::invokeMethod(this, &CurlDownloads::deliver, Qt::QueuedConnection);
}

void CurlDownloads::deliver()
{
    if (!gate_.isOpen() || completed_.empty())
        return; // the gate calls back
    const CompletionGate::Hold hold(gate_);
    const Completion completed = std::move(completed_.front());
    completed_.pop_front();
    completed.tell();
}

} // namespace platform::qt
