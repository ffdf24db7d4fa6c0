#pragma once
// HTTP as the community library needs it: requests that block until the reply is there, and downloads into a file or
// into memory that run beside everything else. Addresses are sent byte for byte; a blank or control character in one
// fails the request, and what follows a `#` stays here, as in every address.
//
// Both follow redirects as browsers do, ten at most and to http and https only. A blocking request ends after 60
// seconds in all, a download after 60 seconds without progress. Four downloads run at once, the others wait for their
// turn, and their time is not counted. Nothing is sent twice.

#include "platform/controls/Property.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

struct DownloadError {
    std::string description;
    std::string failingAddress; ///< the address that failed, after redirects
};

/// One of the two is called, from the event loop, never before `download` has returned and never while an alert is
/// open or a request blocks.
struct DownloadHandlers {
    std::function<void()> finished;
    std::function<void(const DownloadError&)> failed;
};

/// What a server has sent into memory.
struct Reply {
    long status = 0;
    std::string body;
};

/// As `DownloadHandlers`.
struct FetchHandlers {
    std::function<void(Reply)> finished;
    std::function<void(const DownloadError&)> failed;
};

/// The running downloads taken together.
struct DownloadProgress {
    int running = 0;
    std::int64_t received = 0;
    std::int64_t expected = 0; ///< 0 while it is not known, as while others wait

    bool operator==(const DownloadProgress&) const = default;
};

class Http {
public:
    virtual ~Http() = default;

    /// Sends a POST and blocks: nothing else of the program runs until the reply is there. Without a content type none
    /// is sent. Returns the body, whatever the status; none when the transfer failed or the body exceeds 32 MiB.
    virtual std::optional<std::string> post(const std::string& address, const std::string& contentType,
                                            std::string_view body) = 0;

    /// Starts a GET into a file. The file appears at `destination` whole, replacing what stands there, or not at all;
    /// the status does not matter, more than 64 MiB is a failure.
    virtual void download(const std::string& address, const std::filesystem::path& destination,
                          DownloadHandlers handlers) = 0;

    /// Starts a download into memory, which takes its turn with the others. It can be given up while it has not
    /// completed: then nobody is told.
    virtual std::uint64_t fetch(const std::string& address, FetchHandlers handlers) = 0;
    virtual void giveUp(std::uint64_t fetch) = 0;

    Property<DownloadProgress> downloadProgress;
};

} // namespace platform
