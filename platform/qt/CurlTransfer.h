#pragma once
// One HTTP request with its redirects on a libcurl handle; whoever drives the handle asks this class what comes next.
// Every hop has a connection of its own, so that libcurl has no reason to send anything twice.

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace platform::qt {

struct FreeMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using MultiHandle = std::unique_ptr<CURLM, FreeMulti>;

class CurlTransfer {
public:
    struct Request {
        std::string address;
        bool isPost = false;
        std::string contentType;
        std::string body;
    };
    /// Takes a piece of the body; false ends the transfer.
    using Sink = std::function<bool(std::string_view)>;

    /// A reply body of more than `limit` bytes ends the transfer.
    CurlTransfer(Request request, std::size_t limit, Sink sink);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    CURL* handle() const { return handle_.get(); }

    /// Makes the handle ready for the first hop and, after libcurl was done with one with `result`, for where its reply
    /// led. False when nothing is to be sent (any more): `result` is the outcome of the whole transfer then.
    bool nextHop(CURLcode& result);

    /// Whether anything at all has moved since this was last asked.
    bool hasMoved();
    std::int64_t received() const { return static_cast<std::int64_t>(received_); }
    /// Size of the body as announced, 0 when it was not.
    std::int64_t expected() const;
    /// The status of the reply that came last.
    long status() const;
    /// The address of the hop that came last.
    const std::string& address() const { return request_.address; }

private:
    struct FreeList {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    struct FreeHandle {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    CURLcode setUp();
    /// Whether the reply whose headers have arrived leads elsewhere.
    bool isRedirect() const;
    static std::size_t takeHeader(char* bytes, std::size_t one, std::size_t count, void* self);
    static std::size_t take(char* bytes, std::size_t one, std::size_t count, void* self);

    Request request_;
    std::size_t limit_;
    Sink sink_;
    std::unique_ptr<curl_slist, FreeList> headers_;
    std::unique_ptr<CURL, FreeHandle> handle_;
    std::size_t received_ = 0;
    bool isTooLarge_ = false;
    bool isHeadWhole_ = false;
    bool hasLocation_ = false;
    int hops_ = 0;
    std::int64_t moved_ = 0;
};

} // namespace platform::qt
