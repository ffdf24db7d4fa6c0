#pragma once
// What the program and a transfer's process say to each other over a pipe each way: the request there, and back
// messages, of which the outcome is the last. Both run on one machine, so numbers go as they lie in memory.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform::transfer {

/// One HTTP request with its redirects.
struct Request {
    std::string address;
    bool isPost = false;
    std::string contentType; ///< empty sends none
    std::string body;
    std::chrono::milliseconds stallLimit{}; ///< how long nothing may move
    std::size_t sizeLimit = 0;              ///< bytes that the reply's body may have
};

struct Outcome {
    bool isWhole = false;    ///< whether the whole reply has come
    std::string description; ///< otherwise, what went wrong
    std::string address;     ///< of the hop that came last
};

/// What comes before the first piece of the body.
struct Head {
    std::int64_t size = 0; ///< of the body, as the server announced it; 0 when it did not
    std::string address;   ///< of the hop that the body comes from
};

/// Waits no longer than the request may stand still.
bool sendRequest(int descriptor, const Request& request);
/// Waits for the whole of it. None when the other side ended before, or when it is another version, whose messages are
/// others.
std::optional<Request> receiveRequest(int descriptor);

bool sendHead(int descriptor, const Head& head);
bool sendBody(int descriptor, std::string_view piece);
/// Nothing has come, and the process still waits for it.
bool sendSignOfLife(int descriptor);
bool sendOutcome(int descriptor, const Outcome& outcome);

/// Puts messages together from pieces as they arrive.
class MessageReader {
public:
    enum class Kind : std::uint64_t { head = 1, body, signOfLife, outcome };
    struct Message {
        Kind kind;
        std::string_view content; ///< until the next call
    };

    void append(std::string_view bytes);
    /// The next whole message.
    std::optional<Message> next();
    /// Whether what arrived was no message.
    bool isBroken() const { return isBroken_; }

private:
    std::string bytes_;
    std::size_t taken_ = 0;
    bool isBroken_ = false;
};

/// None when the content is not one.
std::optional<Head> headIn(std::string_view content);
std::optional<Outcome> outcomeIn(std::string_view content);

} // namespace platform::transfer
