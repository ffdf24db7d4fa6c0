#pragma once
// Downloads into files, each in a process of its own that the event loop listens to. No thread. A completion is handed
// out when the gate is open, one after the other.

#include "platform/Http.h"
#include "platform/files/Files.h"
#include "platform/qt/CompletionGate.h"
#include "platform/transfer/TransferProcess.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <memory>
#include <vector>

namespace platform::qt {

/// The process of one request, from the program that lies beside this one.
std::unique_ptr<transfer::TransferProcess> startTransfer();

class TransferDownloads final : public QObject {
    Q_OBJECT

public:
    TransferDownloads(CompletionGate& gate, std::chrono::milliseconds stallLimit, std::size_t sizeLimit);
    /// Ends what runs; nobody is told and nothing is left behind.
    ~TransferDownloads() override;

    void start(const std::string& address, const std::filesystem::path& destination, DownloadHandlers handlers);
    DownloadProgress progress() const;

Q_SIGNALS:
    void progressed();

private:
    struct Download;

    void receive(Download& download);
    void endSilent();
    void end(Download& download, transfer::Outcome outcome);
    void complete(std::function<void()> tell);
    void scheduleDelivery();
    void deliver();
    bool isUsed(const std::filesystem::path& part) const;
    std::filesystem::path unusedPart(const std::filesystem::path& destination) const;
    void clearLeftParts(const std::filesystem::path& destination) const;

    CompletionGate& gate_;
    std::chrono::milliseconds stallLimit_;
    std::size_t sizeLimit_;
    QTimer watch_;
    std::vector<std::unique_ptr<Download>> running_;
    std::deque<std::function<void()>> completed_;
};

} // namespace platform::qt
