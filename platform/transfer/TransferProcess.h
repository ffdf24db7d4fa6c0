#pragma once
// An HTTP request carried out by a process of its own. The network's libraries are large and are needed for moments
// only: so their memory is there for these moments only, and they load beside everything else. What goes wrong in them
// ends the request and not the program.

#include "platform/transfer/Protocol.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include <sys/types.h>

namespace platform::transfer {

class TransferProcess {
public:
    /// Told where a listener did not take what had come.
    static constexpr char kNotWritten[] = "The file could not be written";

    /// Who is told of the reply as it comes.
    struct Listener {
        /// The size of the body as announced, 0 when it was not.
        std::function<void(std::int64_t)> expected;
        /// Takes a piece of the body; false ends the transfer.
        std::function<bool(std::string_view)> body;
    };

    /// Starts the process, which waits for its request. From then on a pipe that nobody reads is a write that fails, as
    /// for every descriptor of the program, and not the program's end.
    explicit TransferProcess(const std::filesystem::path& program);
    TransferProcess(const TransferProcess&) = delete;
    TransferProcess& operator=(const TransferProcess&) = delete;
    /// Ends the process, wherever it is.
    ~TransferProcess();

    /// To be called once.
    void send(const Request& request);
    /// Becomes readable when there is something to receive; negative when the process could not be started.
    int descriptor() const { return replies_; }
    /// Whether there is something to receive, an end without a word included; waits for it so long.
    bool isReadable(std::chrono::milliseconds wait) const;
    /// Takes what has arrived; waits while nothing has.
    void receive(const Listener& listener);
    /// Ends a transfer of which nothing has come for longer than its process lets happen: a process that was stopped,
    /// or hangs. To be called now and then.
    void failIfSilent();
    /// None while the transfer runs.
    const std::optional<Outcome>& outcome() const { return outcome_; }

private:
    using Clock = std::chrono::steady_clock;

    void take(const MessageReader::Message& message, const Listener& listener);
    void fail(const char* description);

    pid_t process_ = -1;
    int requests_ = -1;
    int replies_ = -1;
    std::string address_;
    std::chrono::milliseconds patience_{};
    Clock::time_point heardAt_ = Clock::now();
    MessageReader reader_;
    std::optional<Outcome> outcome_;
};

} // namespace platform::transfer
