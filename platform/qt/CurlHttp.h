#pragma once
// HTTP over libcurl. A blocking request runs no event loop: timers, sockets and posted events wait, windows are
// repainted from here, and what the user types or clicks meanwhile stays in the window system's queue until it is over.

#include "platform/Http.h"
#include "platform/qt/CompletionGate.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace platform::qt {

class CurlDownloads;

struct HttpLimits {
    std::chrono::milliseconds total = std::chrono::seconds(60); ///< of a blocking request
    std::chrono::milliseconds stall = std::chrono::seconds(60); ///< of a download
    std::size_t reply = std::size_t{32} << 20;
    std::size_t file = std::size_t{64} << 20;
};

class CurlHttp final : public Http {
public:
    /// A blocking request ends, as a failed one, soon after `isCancelled` answers true; it is asked many times a
    /// second.
    explicit CurlHttp(CompletionGate& gate, std::function<bool()> isCancelled = {}, HttpLimits limits = {});
    ~CurlHttp() override;

    std::optional<std::string> post(const std::string& address, const std::string& contentType,
                                    std::string_view body) override;
    void download(const std::string& address, const std::filesystem::path& destination,
                  DownloadHandlers handlers) override;
    std::uint64_t fetch(const std::string& address, FetchHandlers handlers) override;
    void giveUp(std::uint64_t fetch) override;

private:
    CompletionGate& gate_;
    std::function<bool()> isCancelled_;
    HttpLimits limits_;
    std::unique_ptr<CurlDownloads> downloads_;
};

} // namespace platform::qt
