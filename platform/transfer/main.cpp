// A transfer's process: one HTTP request over libcurl, which the program sends on standard input and gets the reply of
// on standard output. Ends when the program does.

#include "platform/transfer/CurlTransfer.h"
#include "platform/transfer/Protocol.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace {

using platform::transfer::CurlTransfer;
using std::chrono::milliseconds;

/// Without waiting for libcurl's threads, which may still look for a name.
[[noreturn]] void end()
{
    std::_Exit(EXIT_SUCCESS);
}

CURLcode perform(CurlTransfer& transfer, milliseconds stallLimit)
{
    CURLM* const multi = curl_multi_init();
    const auto mostWait = static_cast<int>(std::min<milliseconds>(std::chrono::seconds(1), stallLimit / 4).count());
    auto saidAt = CurlTransfer::Clock::now();
    CURLcode result = CURLE_OK;
    do {
        curl_multi_add_handle(multi, transfer.handle());
        int running = 1;
        while (curl_multi_perform(multi, &running) == CURLM_OK && running > 0 && !transfer.isStalled(stallLimit)) {
            curl_multi_poll(multi, nullptr, 0, mostWait, nullptr);
            if (CurlTransfer::Clock::now() - saidAt < std::chrono::seconds(1))
                continue;
            if (!platform::transfer::sendSignOfLife(STDOUT_FILENO))
                end(); // so has the program
            saidAt = CurlTransfer::Clock::now();
        }
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi, &left);
        result = message ? message->data.result : CURLE_OPERATION_TIMEDOUT;
        curl_multi_remove_handle(multi, transfer.handle());
    } while (transfer.followRedirect(result));
    return result;
}

} // namespace

int main()
{
    using namespace platform::transfer;
    std::signal(SIGPIPE, SIG_IGN); // who hangs up ends the transfer, and the server may be told so
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const auto request = receiveRequest(STDIN_FILENO);
    if (!request)
        end();
    bool isAnnounced = false;
    CurlTransfer transfer(*request, [&](std::string_view piece) {
        if (!isAnnounced && !sendHead(STDOUT_FILENO, {transfer.expected(), transfer.address()}))
            end();
        isAnnounced = true;
        if (!sendBody(STDOUT_FILENO, piece)) // waits while the program does not read
            end();
        return true;
    });
    const CURLcode result = perform(transfer, request->stallLimit);
    sendOutcome(STDOUT_FILENO, {result == CURLE_OK, curl_easy_strerror(result), transfer.address()});
    end();
}
