#include "platform/transfer/Protocol.h"

#include "platform/files/Descriptors.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <unistd.h>

namespace platform::transfer {

namespace {

using Number = std::uint64_t;

/// Counts up with every change of what is sent: a program that was replaced while it runs starts its successor's.
constexpr Number kLayout = 1;
constexpr std::size_t kFrameSize = 2 * sizeof(Number);
/// Pieces of a body are small; an address may have whatever length.
constexpr Number kLargestMessage = Number{16} << 20;

class Packer {
public:
    Packer& number(Number value)
    {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        packed_.append(bytes, sizeof value);
        return *this;
    }
    Packer& text(std::string_view value)
    {
        number(value.size());
        packed_.append(value);
        return *this;
    }
    const std::string& packed() const { return packed_; }

private:
    std::string packed_;
};

/// Takes values off the front; what does not fit is none, then and from then on.
class Unpacker {
public:
    explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

    std::optional<Number> number()
    {
        const auto bytes = take(sizeof(Number));
        Number value = 0;
        if (bytes)
            std::memcpy(&value, bytes->data(), sizeof value);
        return bytes ? std::optional(value) : std::nullopt;
    }
    std::optional<std::string> text()
    {
        const auto size = number();
        const auto bytes = size ? take(*size) : std::nullopt;
        return bytes ? std::optional<std::string>(*bytes) : std::nullopt;
    }
    bool isAtEnd() const { return bytes_ && bytes_->empty(); }

private:
    std::optional<std::string_view> take(Number size)
    {
        if (!bytes_ || size > bytes_->size()) {
            bytes_.reset();
            return std::nullopt;
        }
        const std::string_view taken = bytes_->substr(0, size);
        bytes_->remove_prefix(size);
        return taken;
    }

    std::optional<std::string_view> bytes_;
};

std::optional<std::string> readAll(int descriptor, Number size)
{
    std::string bytes;
    char buffer[65536];
    while (bytes.size() < size) {
        const ssize_t got = ::read(descriptor, buffer, std::min<Number>(sizeof buffer, size - bytes.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return std::nullopt;
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    return bytes;
}

bool sendMessage(int descriptor, MessageReader::Kind kind, std::string_view content)
{
    return writeWhole(descriptor, Packer().number(static_cast<Number>(kind)).text(content).packed());
}

} // namespace

bool sendRequest(int descriptor, const Request& request)
{
    Packer packer;
    packer.text(request.address).number(request.isPost).text(request.contentType).text(request.body);
    packer.number(static_cast<Number>(request.stallLimit.count())).number(request.sizeLimit);
    const auto patience = static_cast<int>(request.stallLimit.count());
    return writeWhole(descriptor, Packer().number(kLayout).number(packer.packed().size()).packed(), patience) &&
           writeWhole(descriptor, packer.packed(), patience);
}

std::optional<Request> receiveRequest(int descriptor)
{
    const auto frame = readAll(descriptor, kFrameSize);
    Unpacker sizes(frame ? std::string_view(*frame) : std::string_view());
    if (sizes.number() != kLayout)
        return std::nullopt;
    const auto bytes = readAll(descriptor, *sizes.number());
    if (!bytes)
        return std::nullopt;
    Unpacker unpacker(*bytes);
    auto address = unpacker.text();
    const auto isPost = unpacker.number();
    auto contentType = unpacker.text();
    auto body = unpacker.text();
    const auto stallLimit = unpacker.number();
    const auto sizeLimit = unpacker.number();
    if (!unpacker.isAtEnd())
        return std::nullopt;
    return Request{std::move(*address),
                   *isPost != 0,
                   std::move(*contentType),
                   std::move(*body),
                   std::chrono::milliseconds(*stallLimit),
                   *sizeLimit};
}

bool sendHead(int descriptor, const Head& head)
{
    return sendMessage(descriptor, MessageReader::Kind::head,
                       Packer().number(static_cast<Number>(head.size)).text(head.address).packed());
}

bool sendBody(int descriptor, std::string_view piece)
{
    return sendMessage(descriptor, MessageReader::Kind::body, piece);
}

bool sendSignOfLife(int descriptor)
{
    return sendMessage(descriptor, MessageReader::Kind::signOfLife, {});
}

bool sendOutcome(int descriptor, const Outcome& outcome)
{
    return sendMessage(descriptor, MessageReader::Kind::outcome,
                       Packer().number(outcome.isWhole).text(outcome.description).text(outcome.address).packed());
}

void MessageReader::append(std::string_view bytes)
{
    bytes_.erase(0, taken_);
    taken_ = 0;
    bytes_.append(bytes);
}

std::optional<MessageReader::Message> MessageReader::next()
{
    const std::string_view left = std::string_view(bytes_).substr(taken_);
    if (isBroken_ || left.size() < kFrameSize)
        return std::nullopt;
    Unpacker frame(left);
    const auto kind = static_cast<Kind>(*frame.number());
    const Number size = *frame.number();
    isBroken_ = kind < Kind::head || kind > Kind::outcome || size > kLargestMessage;
    if (isBroken_ || left.size() - kFrameSize < size)
        return std::nullopt;
    taken_ += kFrameSize + size;
    return Message{kind, left.substr(kFrameSize, size)};
}

std::optional<Head> headIn(std::string_view content)
{
    Unpacker unpacker(content);
    const auto size = unpacker.number();
    auto address = unpacker.text();
    if (!unpacker.isAtEnd())
        return std::nullopt;
    return Head{static_cast<std::int64_t>(*size), std::move(*address)};
}

std::optional<Outcome> outcomeIn(std::string_view content)
{
    Unpacker unpacker(content);
    const auto isWhole = unpacker.number();
    auto description = unpacker.text();
    auto address = unpacker.text();
    if (!unpacker.isAtEnd())
        return std::nullopt;
    return Outcome{*isWhole != 0, std::move(*description), std::move(*address)};
}

} // namespace platform::transfer
