#pragma once
// Downloads into files and into memory, driven by the event loop: libcurl says which sockets and which time it waits
// for, notifiers and a timer report them. No thread. Four run at once, the others wait in the order in which they came.
// A completion is handed out when the gate is open, one after the other.

#include "platform/Http.h"
#include "platform/files/Files.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlTransfer.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QSocketNotifier;

namespace platform::qt {

class CurlDownloads final : public QObject {
    Q_OBJECT

public:
    CurlDownloads(CompletionGate& gate, std::chrono::milliseconds stallLimit, std::size_t sizeLimit);
    /// Ends what runs and forgets what waits; nobody is told and nothing is left behind.
    ~CurlDownloads() override;

    void start(const std::string& address, const std::filesystem::path& destination, DownloadHandlers handlers);
    std::uint64_t fetch(const std::string& address, FetchHandlers handlers);
    /// Ends a fetch, wherever it is; nobody is told.
    void giveUp(std::uint64_t fetch);
    DownloadProgress progress() const;

Q_SIGNALS:
    void progressed();

private:
    struct Download;
    struct Waiting {
        std::uint64_t number;
        std::string address;
        std::optional<std::filesystem::path> destination; ///< none: into memory
        FetchHandlers handlers;
    };
    struct Completion {
        std::uint64_t number;
        std::function<void()> tell;
    };
    struct Notifiers {
        QSocketNotifier* readable;
        QSocketNotifier* writable;
    };

    static int watchSocket(CURL* handle, curl_socket_t socket, int what, void* self, void* ours);
    static int setTimer(CURLM* multi, long milliseconds, void* self);
    void drive(curl_socket_t socket, int events);
    /// Lets those that wait take the places that are free. After anything that may have ended a download.
    void fillPlaces();
    void begin(Waiting next);
    void goOn(Download& download, CURLcode result);
    void endStalled();
    void end(Download& download, CURLcode result);
    void complete(std::uint64_t number, std::function<void()> tell);
    void scheduleDelivery();
    void deliver();

    CompletionGate& gate_;
    std::size_t sizeLimit_;
    std::map<curl_socket_t, Notifiers> notifiers_;
    QTimer timer_; ///< libcurl's
    QTimer watch_; ///< for stalled ones
    std::vector<std::unique_ptr<Download>> running_;
    std::deque<Waiting> waiting_;
    std::deque<Completion> completed_;
    std::uint64_t lastNumber_ = 0;
    MultiHandle multi_;
};

} // namespace platform::qt
