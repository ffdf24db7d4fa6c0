#pragma once
// Downloads into files, driven by the event loop: libcurl says which sockets and which time it waits for, notifiers and
// a timer report them. No thread. A completion is handed out when the gate is open, one after the other.

#include "platform/Files.h"
#include "platform/Http.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlTransfer.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <map>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace platform::qt {

class CurlDownloads final : public QObject {
    Q_OBJECT

public:
    CurlDownloads(CompletionGate& gate, std::chrono::milliseconds stallLimit, std::size_t sizeLimit);
    /// Ends what runs; nobody is told and nothing is left behind.
    ~CurlDownloads() override;

    void start(const std::string& address, const std::filesystem::path& destination, DownloadHandlers handlers);
    /// Nothing was looked at for a while, which is no fault of the servers.
    void restartWatches();
    DownloadProgress progress() const;

Q_SIGNALS:
    void progressed();

private:
    struct Download;
    struct Notifiers {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };
    struct FreeMulti {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    static int watchSocket(CURL*, curl_socket_t socket, int what, void* self, void*);
    static int setTimer(CURLM*, long milliseconds, void* self);
    void notify(curl_socket_t socket, int what);
    void drive(curl_socket_t socket, int events);
    void takeFinished();
    void endStalled();
    void end(Download& download, CURLcode result);
    void complete(std::function<void()> tell);
    void scheduleDelivery();
    void deliver();
    bool isUsed(const std::filesystem::path& part) const;
    std::filesystem::path unusedPart(const std::filesystem::path& destination) const;
    void clearLeftParts(const std::filesystem::path& destination) const;

    CompletionGate& gate_;
    std::chrono::milliseconds stallLimit_;
    std::size_t sizeLimit_;
    std::map<curl_socket_t, Notifiers> notifiers_;
    QTimer timer_;
    QTimer watch_;
    std::vector<std::unique_ptr<Download>> running_;
    std::deque<std::function<void()>> completed_;
    std::unique_ptr<CURLM, FreeMulti> multi_;
};

} // namespace platform::qt
