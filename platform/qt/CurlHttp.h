#pragma once
// HTTP over libcurl. A blocking request runs no event loop: timers, sockets and posted events wait, windows are
// repainted from here, and what the user types or clicks meanwhile stays in the window system's queue until it is over.

#include "platform/Http.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlDownloads.h"

#include <chrono>
#include <cstddef>

namespace platform::qt {

class CurlHttp final : public Http {
public:
    struct Limits {
        std::chrono::milliseconds stall = std::chrono::seconds(60);
        std::size_t reply = std::size_t{16} << 20;
        std::size_t file = std::size_t{64} << 20;
    };

    explicit CurlHttp(CompletionGate& gate);
    CurlHttp(CompletionGate& gate, Limits limits);

    std::optional<std::string> post(const std::string& address, const std::string& contentType,
                                    std::string_view body) override;
    void download(const std::string& address, const std::filesystem::path& destination,
                  DownloadHandlers handlers) override;

private:
    CompletionGate& gate_;
    Limits limits_;
    CurlDownloads downloads_;
};

} // namespace platform::qt
