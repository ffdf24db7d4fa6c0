#pragma once
// One HTTP request with its redirects on a libcurl handle; whoever drives the handle asks this class what comes next.
// Every hop has a connection of its own, so that libcurl has no reason to send anything twice.

#include "platform/transfer/Protocol.h"

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace platform::transfer {

class CurlTransfer {
public:
    /// Takes a piece of the body; false ends the transfer.
    using Sink = std::function<bool(std::string_view)>;
    using Clock = std::chrono::steady_clock;

    CurlTransfer(Request request, Sink sink);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    CURL* handle() const { return handle_.get(); }

    /// After libcurl was done with `result`: whether the reply led elsewhere and the handle is ready for that.
    /// Otherwise `result` is the outcome of the whole transfer.
    bool followRedirect(CURLcode& result);

    /// Whether nothing at all has moved for as long as `limit`.
    bool isStalled(std::chrono::milliseconds limit);
    /// Size of the body as announced, 0 when it was not.
    std::int64_t expected() const;
    /// The address of the hop that came last.
    const std::string& address() const { return request_.address; }

private:
    struct FreeList {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    struct FreeHandle {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    /// Forgets how long nothing has moved.
    void restartWatch() { movedAt_ = Clock::now(); }
    void setUp();
    void setUpHop();
    /// Whether the reply whose headers have arrived leads elsewhere.
    bool isRedirect() const;
    static std::size_t takeHeader(char* bytes, std::size_t one, std::size_t count, void* self);
    static std::size_t take(char* bytes, std::size_t one, std::size_t count, void* self);

    Request request_;
    Sink sink_;
    std::unique_ptr<curl_slist, FreeList> headers_;
    std::unique_ptr<CURL, FreeHandle> handle_;
    std::size_t received_ = 0;
    bool isTooLarge_ = false;
    bool isHeadWhole_ = false;
    bool hasLocation_ = false;
    int redirects_ = 0;
    std::int64_t moved_ = 0;
    Clock::time_point movedAt_ = Clock::now();
};

} // namespace platform::transfer
