#pragma once
// An HTTP request carried out by a process of its own. The network's libraries are large and are needed for moments
// only: so their memory is there for these moments only, and they load beside everything else. What goes wrong in them
// ends the request and not the program.

#include "platform/transfer/Protocol.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace platform::transfer {

class TransferProcess {
public:
    /// Who is told of the reply as it comes.
    struct Listener {
        std::function<void(std::int64_t)> expected;
        /// Takes a piece of the body; false ends the transfer.
        std::function<bool(std::string_view)> body;
    };

    /// Starts the process, which waits for its request.
    explicit TransferProcess(const std::filesystem::path& program);
    TransferProcess(const TransferProcess&) = delete;
    TransferProcess& operator=(const TransferProcess&) = delete;
    /// Ends the process, wherever it is.
    ~TransferProcess();

    /// To be called once.
    void send(const Request& request);
    /// Becomes readable when there is something to receive; negative when the process could not be started.
    int descriptor() const { return replies_; }
    /// Takes what has arrived; waits while nothing has.
    void receive(const Listener& listener);
    /// None while the transfer runs.
    const std::optional<Outcome>& outcome() const { return outcome_; }

private:
    void take(const MessageReader::Message& message, const Listener& listener);
    void fail(const char* description);

    pid_t process_ = -1;
    int requests_ = -1;
    int replies_ = -1;
    std::string address_;
    MessageReader reader_;
    std::optional<Outcome> outcome_;
};

} // namespace platform::transfer
