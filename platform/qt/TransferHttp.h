#pragma once
// HTTP, each request in a process of its own. A blocking request runs no event loop: timers, sockets and posted events
// wait, windows are repainted from here, and what the user types or clicks meanwhile stays in the window system's queue
// until it is over.

#include "platform/Http.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/TransferDownloads.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace platform::qt {

class TransferHttp final : public Http {
public:
    struct Limits {
        std::chrono::milliseconds stall = std::chrono::seconds(60);
        std::size_t reply = std::size_t{16} << 20;
        std::size_t file = std::size_t{64} << 20;
    };

    explicit TransferHttp(CompletionGate& gate);
    TransferHttp(CompletionGate& gate, Limits limits);

    /// Starts the process of the next blocking request, so that its libraries are loaded when the request comes.
    void prepare();

    std::optional<std::string> post(const std::string& address, const std::string& contentType,
                                    std::string_view body) override;
    void download(const std::string& address, const std::filesystem::path& destination,
                  DownloadHandlers handlers) override;

private:
    CompletionGate& gate_;
    Limits limits_;
    std::unique_ptr<transfer::TransferProcess> prepared_;
    std::unique_ptr<transfer::TransferProcess> ended_; ///< the last request's
    TransferDownloads downloads_;
};

} // namespace platform::qt
