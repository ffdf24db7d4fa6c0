#include "platform/qt/TransferDownloads.h"

#include "platform/qt/SystemEffects.h"

#include <QSocketNotifier>

#include <algorithm>
#include <utility>

namespace platform::qt {

using transfer::TransferProcess;

namespace {

/// How often is looked for a process that does not answer.
constexpr std::chrono::seconds kWatch{1};

} // namespace

std::unique_ptr<TransferProcess> startTransfer()
{
    return std::make_unique<TransferProcess>(besideProgram(KV_TRANSFER_PROGRAM));
}

struct TransferDownloads::Download {
    Download(const files::Path& destination, files::Path part, DownloadHandlers toTell)
        : file(destination, std::move(part)), handlers(std::move(toTell))
    {}

    files::PartialFile file;
    DownloadHandlers handlers;
    std::unique_ptr<TransferProcess> process;
    std::unique_ptr<QSocketNotifier> notifier;
    std::int64_t received = 0;
    std::int64_t expected = 0;
};

TransferDownloads::TransferDownloads(CompletionGate& gate, std::chrono::milliseconds stallLimit, std::size_t sizeLimit)
    : gate_(gate), stallLimit_(stallLimit), sizeLimit_(sizeLimit)
{
    watch_.setInterval(kWatch);
    connect(&watch_, &QTimer::timeout, this, &TransferDownloads::endSilent);
    connect(&gate_, &CompletionGate::opened, this, &TransferDownloads::scheduleDelivery);
}

TransferDownloads::~TransferDownloads() = default;

void TransferDownloads::start(const std::string& address, const std::filesystem::path& destination,
                              DownloadHandlers handlers)
{
    clearLeftParts(destination);
    running_.push_back(std::make_unique<Download>(destination, unusedPart(destination), std::move(handlers)));
    Download& download = *running_.back();
    if (!download.file.isOpen())
        return end(download, {false, TransferProcess::kNotWritten, address});
    download.process = startTransfer();
    download.process->send({address, false, {}, {}, stallLimit_, sizeLimit_});
    if (download.process->outcome())
        return end(download, *download.process->outcome());
    download.notifier = std::make_unique<QSocketNotifier>(download.process->descriptor(), QSocketNotifier::Read);
    if (!watch_.isActive())
        watch_.start();
    connect(download.notifier.get(), &QSocketNotifier::activated, this, [this, &download] { receive(download); });
    Q_EMIT progressed();
}

bool TransferDownloads::isUsed(const std::filesystem::path& part) const
{
    return std::any_of(running_.begin(), running_.end(),
                       [&](const auto& download) { return download->file.isOpen() && download->file.part() == part; });
}

std::filesystem::path TransferDownloads::unusedPart(const std::filesystem::path& destination) const
{
    // Two downloads to one destination must not write into one part.
    std::filesystem::path part = files::partialName(destination);
    while (isUsed(part))
        part += "2";
    return part;
}

void TransferDownloads::clearLeftParts(const std::filesystem::path& destination) const
{
    // Only the part with the plain name is cleared by whoever writes it next.
    const std::string plain = files::partialName(destination).filename().native();
    std::error_code failure;
    std::filesystem::directory_iterator entry(destination.parent_path(), failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename().native();
        const bool isPart = name.starts_with(plain) && name.find_first_not_of('2', plain.size()) == name.npos;
        if (isPart && !isUsed(entry->path()))
            files::remove(entry->path());
    }
}

DownloadProgress TransferDownloads::progress() const
{
    DownloadProgress sum{static_cast<int>(running_.size()), 0, 0};
    bool areAllKnown = true;
    for (const auto& download : running_) {
        sum.received += download->received;
        sum.expected += download->expected;
        areAllKnown = areAllKnown && download->expected > 0;
    }
    return areAllKnown ? sum : DownloadProgress{sum.running, sum.received, 0};
}

void TransferDownloads::receive(Download& download)
{
    download.process->receive({[&](std::int64_t size) { download.expected = size; },
                               [&](std::string_view piece) {
                                   download.received += static_cast<std::int64_t>(piece.size());
                                   return download.file.append(piece);
                               }});
    Q_EMIT progressed();
    if (download.process->outcome())
        end(download, *download.process->outcome());
}

void TransferDownloads::endSilent()
{
    for (std::size_t i = running_.size(); i-- > 0;) {
        running_[i]->process->failIfSilent();
        if (const auto outcome = running_[i]->process->outcome())
            end(*running_[i], *outcome);
    }
}

void TransferDownloads::end(Download& download, transfer::Outcome outcome)
{
    if (outcome.isWhole && !download.file.finish())
        outcome = {false, TransferProcess::kNotWritten, std::move(outcome.address)};
    if (outcome.isWhole)
        complete(std::move(download.handlers.finished));
    else
        complete(
            [failed = std::move(download.handlers.failed),
             error = DownloadError{std::move(outcome.description), std::move(outcome.address)}] { failed(error); });
    if (download.notifier) {
        download.notifier->setEnabled(false);
        download.notifier.release()->deleteLater(); // it may be the one that called
    }
    std::erase_if(running_, [&](const auto& each) { return each.get() == &download; });
    if (running_.empty())
        watch_.stop();
    Q_EMIT progressed();
}

void TransferDownloads::complete(std::function<void()> tell)
{
    completed_.push_back(std::move(tell));
    scheduleDelivery();
}

void TransferDownloads::scheduleDelivery()
{
    if (!completed_.empty())
        QMetaObject::invokeMethod(this, &TransferDownloads::deliver, Qt::QueuedConnection);
}

void TransferDownloads::deliver()
{
    if (!gate_.isOpen() || completed_.empty())
        return; // the gate calls back
    const CompletionGate::Hold hold(gate_);
    const auto tell = std::move(completed_.front());
    completed_.pop_front();
    tell();
}

} // namespace platform::qt
