#include "platform/qt/CurlTransfer.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

constexpr int kMostHops = 11;

/// A host that names this machine, however it is written in an address.
bool isLoopback(std::string_view host)
{
    const bool isIpv4 = host.find_first_not_of("0123456789.") == std::string_view::npos;
    return host == "localhost" || host.ends_with(".localhost") || (isIpv4 && host.starts_with("127.")) ||
           host == "[::1]";
}

/// In lower case; empty when the address has none.
std::string hostOf(const std::string& address)
{
    std::string host;
    CURLU* url = curl_url();
    char* part = nullptr;
    if (curl_url_set(url, CURLUPART_URL, address.c_str(), 0) == CURLUE_OK &&
        curl_url_get(url, CURLUPART_HOST, &part, 0) == CURLUE_OK)
        host = part;
    std::transform(host.begin(), host.end(), host.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    curl_free(part);
    curl_url_cleanup(url);
    return host;
}

/// A library that is older than the headers refuses the option that has no number for each scheme.
CURLcode allowHttpOnly(CURL* handle)
{
#if LIBCURL_VERSION_NUM >= 0x075500
    const CURLcode result = curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    if (result != CURLE_UNKNOWN_OPTION)
        return result;
#endif
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return curl_easy_setopt(handle, CURLOPT_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
#pragma GCC diagnostic pop
}

} // namespace

CurlTransfer::CurlTransfer(Request request, std::size_t limit, Sink sink)
    : request_(std::move(request)), limit_(limit), sink_(std::move(sink)), handle_(curl_easy_init())
{}

CURLcode CurlTransfer::setUp()
{
    if (!handle_)
        return CURLE_FAILED_INIT;
    // A NUL would cut the address short, and not every libcurl refuses a blank.
    const auto isForbidden = [](char c) { return (c >= '\0' && c <= ' ') || c == '\x7f'; };
    if (std::any_of(request_.address.begin(), request_.address.end(), isForbidden))
        return CURLE_URL_MALFORMAT;
    CURLcode result = allowHttpOnly(handle());
    const auto set = [&](CURLoption option, auto value) {
        if (result == CURLE_OK)
            result = curl_easy_setopt(handle(), option, value);
    };
    set(CURLOPT_URL, request_.address.c_str());
    set(CURLOPT_PATH_AS_IS, 1L);
    // A redirect must not make us send an authorization that nobody gave.
    set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
    // A null pointer leaves the choice to the environment's variables.
    set(CURLOPT_PROXY, isLoopback(hostOf(request_.address)) ? "" : nullptr);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FRESH_CONNECT, 1L);
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::takeHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::take);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
#if LIBCURL_VERSION_NUM >= 0x075700
    // Giving up should not wait for a name to be looked up; where it has to, it is only late.
    curl_easy_setopt(handle(), CURLOPT_QUICK_EXIT, 1L);
#endif
    if (request_.isPost) {
        // A header without a value is one that is not sent.
        const std::string contentType =
            request_.contentType.empty() ? "Content-Type:" : "Content-Type: " + request_.contentType;
        headers_.reset(curl_slist_append(curl_slist_append(nullptr, contentType.c_str()), "Expect:"));
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
        set(CURLOPT_POSTFIELDS, request_.body.data());
        set(CURLOPT_HTTPHEADER, headers_.get());
    } else {
        set(CURLOPT_HTTPGET, 1L);
        set(CURLOPT_HTTPHEADER, nullptr);
    }
    return result;
}

long CurlTransfer::status() const
{
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    return status;
}

bool CurlTransfer::isRedirect() const
{
    const long code = status();
    return hasLocation_ && (code == 301 || code == 302 || code == 303 || code == 307 || code == 308);
}

bool CurlTransfer::nextHop(CURLcode& result)
{
    if (hops_++ == 0) {
        result = setUp();
        return result == CURLE_OK;
    }
    if (isTooLarge_)
        result = CURLE_FILESIZE_EXCEEDED;
    if (result == CURLE_OK && !isHeadWhole_) // libcurl takes a head that was cut off for a whole one
        result = CURLE_PARTIAL_FILE;
    char* target = nullptr;
    curl_easy_getinfo(handle(), CURLINFO_REDIRECT_URL, &target);
    if (result != CURLE_OK || !isRedirect() || !target)
        return false;
    if (hops_ > kMostHops) {
        result = CURLE_TOO_MANY_REDIRECTS;
        return false;
    }
    request_.address = target;
    if (status() <= 303) { // browsers turn a POST into a GET here; the others mean the same request elsewhere
        request_.isPost = false;
        request_.body.clear();
    }
    received_ = 0;
    result = setUp();
    return result == CURLE_OK;
}

bool CurlTransfer::hasMoved()
{
    curl_off_t down = 0;
    curl_off_t up = 0;
    long head = 0;
    curl_easy_getinfo(handle(), CURLINFO_SIZE_DOWNLOAD_T, &down);
    curl_easy_getinfo(handle(), CURLINFO_SIZE_UPLOAD_T, &up);
    curl_easy_getinfo(handle(), CURLINFO_HEADER_SIZE, &head);
    const std::int64_t moved = down + up + head;
    return std::exchange(moved_, moved) != moved;
}

std::int64_t CurlTransfer::expected() const
{
    curl_off_t size = 0;
    curl_easy_getinfo(handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    const bool isBelievable = size > 0 && static_cast<std::uint64_t>(size) <= limit_;
    return isBelievable ? static_cast<std::int64_t>(size) : 0;
}

std::size_t CurlTransfer::takeHeader(char* bytes, std::size_t, std::size_t count, void* self)
{
    static constexpr std::string_view kLocation = "location:";
    const std::string_view line(bytes, count);
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (line.starts_with("HTTP/")) {
        transfer.isHeadWhole_ = false;
        transfer.hasLocation_ = false;
    }
    if (transfer.isHeadWhole_)
        return count; // a trailer
    transfer.isHeadWhole_ = line == "\r\n" || line == "\n";
    if (count > kLocation.size() && curl_strnequal(bytes, kLocation.data(), kLocation.size()))
        transfer.hasLocation_ = line.find_first_not_of(" \t\r\n", kLocation.size()) != std::string_view::npos;
    return count;
}

std::size_t CurlTransfer::take(char* bytes, std::size_t, std::size_t count, void* self)
{
    auto& transfer = *static_cast<CurlTransfer*>(self);
    transfer.received_ += count;
    transfer.isTooLarge_ = transfer.received_ > transfer.limit_;
    if (transfer.isTooLarge_)
        return 0;
    if (transfer.isRedirect()) // nobody sees the page that says so
        return count;
    return transfer.sink_({bytes, count}) ? count : 0;
}

} // namespace platform::qt
