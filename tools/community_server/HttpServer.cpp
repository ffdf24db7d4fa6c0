#include "tools/community_server/HttpServer.h"

#include "tools/community_server/Connections.h"
#include "tools/community_server/Protocol.h"
#include "tools/community_server/SharedFile.h"

#include <microhttpd.h>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace community_server {

namespace {

using Phase = Connections::Phase;

constexpr std::size_t kLongestTarget = 8192;
/// The file, and the form around it.
constexpr std::size_t kLongestBody = kLargestFile + 4096;
/// What is too large is read on up to here, and thrown away: a client that is still sending would not see the reply.
constexpr std::size_t kMostThrownAway = std::size_t{8} << 20;
/// Of a connection: its request's head among others.
constexpr std::size_t kConnectionMemory = std::size_t{64} << 10;
constexpr unsigned int kMostSockets = 512;
/// How long the server waits at its end for replies to be fetched.
constexpr int kPatienceAtEndMs = 5000;

std::string presentation(int family, const void* bytes)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    return ::inet_ntop(family, bytes, text.data(), text.size()) ? text.data() : std::string();
}

/// Of an IPv6 address its network, of which a client has all addresses.
std::string addressOf(const in6_addr& address)
{
    if (IN6_IS_ADDR_V4MAPPED(&address))
        return presentation(AF_INET, address.s6_addr + 12);
    in6_addr network = address;
    std::memset(network.s6_addr + 8, 0, 8);
    return presentation(AF_INET6, &network) + "/64";
}

std::string addressOf(const sockaddr* address)
{
    if (address && address->sa_family == AF_INET)
        return presentation(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr);
    if (address && address->sa_family == AF_INET6)
        return addressOf(reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr);
    return {};
}

/// The last address of a field; empty when that is none.
std::string lastForwarded(std::string_view field)
{
    const std::size_t comma = field.rfind(',');
    std::string last(comma == field.npos ? field : field.substr(comma + 1));
    last.erase(0, last.find_first_not_of(' '));
    in_addr v4{};
    in6_addr v6{};
    if (::inet_pton(AF_INET, last.c_str(), &v4) == 1)
        return presentation(AF_INET, &v4);
    return ::inet_pton(AF_INET6, last.c_str(), &v6) == 1 ? addressOf(v6) : std::string();
}

/// A socket that listens, and the port it got.
std::pair<int, int> listenOn(const std::string& host, int port)
{
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string asked = std::to_string(port);
    int listening = -1;
    if (::getaddrinfo(host.c_str(), asked.c_str(), &hints, &found) == 0) {
        for (const addrinfo* each = found; each && listening < 0; each = each->ai_next) {
            listening = ::socket(each->ai_family, each->ai_socktype, each->ai_protocol);
            const int yes = 1;
            if (listening >= 0 &&
                (::setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
                 ::bind(listening, each->ai_addr, each->ai_addrlen) != 0 || ::listen(listening, SOMAXCONN) != 0)) {
                ::close(listening);
                listening = -1;
            }
        }
        ::freeaddrinfo(found);
    }
    sockaddr_storage bound{};
    socklen_t size = sizeof bound;
    if (listening < 0 || ::getsockname(listening, reinterpret_cast<sockaddr*>(&bound), &size) != 0)
        throw std::runtime_error("cannot listen on " + host + ", port " + asked);
    return {listening, ntohs(bound.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(bound).sin6_port
                                                         : reinterpret_cast<sockaddr_in&>(bound).sin_port)};
}

/// A request on its way, from its first line to the last byte of its reply.
struct Exchange {
    std::string target;
    Request request;
    Connections::Connection* connection = nullptr;
    std::size_t thrownAway = 0;
    std::size_t heldBytes = 0;
    bool isUpload = false;
    std::optional<Reply> reply; ///< once it is known
};

std::string header(MHD_Connection* connection, const char* name)
{
    const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value ? value : std::string();
}

/// The address that the nearest proxy saw. Proxies may add a field of their own to what a client sent, so the last
/// counts.
std::string forwardedAddress(MHD_Connection* connection)
{
    std::string last;
    const auto look = [](void* found, MHD_ValueKind, const char* name, const char* value) {
        if (value && ::strcasecmp(name, "X-Forwarded-For") == 0)
            *static_cast<std::string*>(found) = value;
        return MHD_YES;
    };
    MHD_get_connection_values(connection, MHD_HEADER_KIND, look, &last);
    return lastForwarded(last);
}

} // namespace

class HttpServer::Daemon {
public:
    Daemon(const HttpSettings& settings, Answer answer)
        : settings_(settings), answer_(std::move(answer)), connections_(!settings.isBehindProxy)
    {
        const auto [listening, port] = listenOn(settings.host, settings.port);
        port_ = port;
        daemon_ =
            MHD_start_daemon(MHD_USE_AUTO_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, takeRequest,
                             this, MHD_OPTION_LISTEN_SOCKET, listening, MHD_OPTION_CONNECTION_LIMIT, kMostSockets,
                             MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_CONNECTION_TIMEOUT,
                             static_cast<unsigned int>(Connections::kWholeTime.count()), MHD_OPTION_NOTIFY_CONNECTION,
                             noteConnection, this, MHD_OPTION_URI_LOG_CALLBACK, beginExchange, nullptr,
                             MHD_OPTION_NOTIFY_COMPLETED, endExchange, this, MHD_OPTION_END);
        if (!daemon_) {
            ::close(listening);
            throw std::runtime_error("cannot serve on " + settings.host + ", port " + std::to_string(port));
        }
        watch_ = std::thread([this] { watch(); });
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    ~Daemon()
    {
        // What the library is still at has to be taken up before the end.
        while (connections_.countIn(Phase::working) > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        MHD_stop_daemon(daemon_);
        {
            const std::lock_guard lock(mutex_);
            isEnding_ = true;
        }
        ended_.notify_all();
        watch_.join();
    }

    std::string address() const
    {
        const bool isV6 = settings_.host.find(':') != std::string::npos;
        return "http://" + (isV6 ? "[" + settings_.host + "]" : settings_.host) + ":" + std::to_string(port_) + "/";
    }

    void finish()
    {
        const MHD_socket listening = MHD_quiesce_daemon(daemon_);
        if (listening != MHD_INVALID_SOCKET)
            ::close(listening);
        for (int waited = 0; waited < kPatienceAtEndMs; waited += 10) {
            if (connections_.countIn(Phase::working) + connections_.countIn(Phase::sending) == 0)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

private:
    // What libmicrohttpd calls, all from its one thread.

    static void noteConnection(void* self, MHD_Connection* connection, void** context,
                               MHD_ConnectionNotificationCode what)
    {
        Connections& connections = static_cast<Daemon*>(self)->connections_;
        if (what == MHD_CONNECTION_NOTIFY_CLOSED)
            return connections.closed(static_cast<Connections::Connection*>(*context));
        const auto* socket = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
        const auto* client = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
        *context = connections.opened(socket->connect_fd, addressOf(client->client_addr));
    }

    static void* beginExchange(void*, const char* target, MHD_Connection* connection)
    {
        const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        auto* exchange = new Exchange;
        exchange->target = target;
        exchange->connection = static_cast<Connections::Connection*>(info->socket_context);
        return exchange;
    }

    static void endExchange(void* self, MHD_Connection*, void** context, MHD_RequestTerminationCode)
    {
        Connections& connections = static_cast<Daemon*>(self)->connections_;
        const std::unique_ptr<Exchange> exchange(static_cast<Exchange*>(*context));
        *context = nullptr;
        if (!exchange)
            return;
        connections.giveBytesBack(exchange->connection, exchange->request.address, exchange->heldBytes);
        connections.setPhase(exchange->connection, Phase::idle);
    }

    static MHD_Result takeRequest(void* self, MHD_Connection* connection, const char*, const char* method, const char*,
                                  const char* data, std::size_t* size, void** context)
    {
        Daemon& daemon = *static_cast<Daemon*>(self);
        Exchange& exchange = *static_cast<Exchange*>(*context);
        switch (exchange.connection->phase) {
        case Phase::idle: return daemon.takeHead(connection, exchange, method);
        case Phase::reading:
            if (*size == 0)
                return daemon.handOn(connection, exchange);
            if (!daemon.takeBody(exchange, {data, *size}))
                return MHD_NO;
            *size = 0;
            return MHD_YES;
        case Phase::working:
        case Phase::sending: return daemon.send(connection, exchange);
        }
        return MHD_NO;
    }

    MHD_Result takeHead(MHD_Connection* connection, Exchange& exchange, const char* method)
    {
        connections_.setPhase(exchange.connection, Phase::reading);
        const Target target = targetIn(exchange.target);
        Request& request = exchange.request;
        request.method = method;
        request.path = target.path;
        request.query = target.query;
        request.contentType = header(connection, MHD_HTTP_HEADER_CONTENT_TYPE);
        request.address = exchange.connection->address;
        if (settings_.isBehindProxy)
            if (std::string forwarded = forwardedAddress(connection); !forwarded.empty())
                request.address = std::move(forwarded);
        exchange.isUpload = request.method == "POST" && request.path.ends_with("/kv_upload.php");
        if (exchange.target.size() > kLongestTarget)
            exchange.reply = Reply{414, kTextTooLong};
        const std::string announced = header(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
        const auto length = std::strtoull(announced.c_str(), nullptr, 10);
        const bool isHeldBack = !header(connection, MHD_HTTP_HEADER_EXPECT).empty();
        if (length > kMostThrownAway || (isHeldBack && length > kLongestBody)) {
            exchange.reply = Reply{413, kTooLarge};
            return send(connection, exchange);
        }
        return MHD_YES;
    }

    /// False when the connection is to be closed.
    bool takeBody(Exchange& exchange, std::string_view part)
    {
        Request& request = exchange.request;
        if (exchange.isUpload && !exchange.reply) {
            if (request.body.size() + part.size() > kLongestBody)
                exchange.reply = Reply{413, kTooLarge};
            else if (!hold(exchange, part.size()))
                exchange.reply = Reply{503, kBusy};
            else
                request.body += part;
        }
        if (exchange.reply || !exchange.isUpload) {
            request.body = {};
            exchange.thrownAway += part.size();
        }
        return exchange.thrownAway <= kMostThrownAway;
    }

    bool hold(Exchange& exchange, std::size_t bytes)
    {
        if (!connections_.takeBytes(exchange.connection, exchange.request.address, bytes))
            return false;
        exchange.heldBytes += bytes;
        return true;
    }

    MHD_Result handOn(MHD_Connection* connection, Exchange& exchange)
    {
        if (exchange.reply)
            return send(connection, exchange);
        connections_.setPhase(exchange.connection, Phase::working);
        MHD_suspend_connection(connection);
        // Moved away, but for what the reply is counted and noted under.
        Request request = std::move(exchange.request);
        exchange.request.address = request.address;
        exchange.request.method = request.method;
        answer_(std::move(request), [connection, &exchange](Reply reply) {
            exchange.reply = std::move(reply);
            MHD_resume_connection(connection);
        });
        return MHD_YES;
    }

    MHD_Result send(MHD_Connection* connection, Exchange& exchange)
    {
        connections_.setPhase(exchange.connection, Phase::sending);
        connections_.giveBytesBack(exchange.connection, exchange.request.address, std::exchange(exchange.heldBytes, 0));
        const std::size_t size = exchange.reply->body.size();
        if (size > Connections::kSmall && !hold(exchange, size))
            exchange.reply = Reply{503, kBusy};
        Reply& reply = *exchange.reply;
        if (settings_.note)
            settings_.note({exchange.request.address, exchange.request.method, exchange.target, reply.status,
                            reply.body.size(), std::time(nullptr)});
        // The exchange outlives the response.
        MHD_Response* response =
            MHD_create_response_from_buffer(reply.body.size(), reply.body.data(), MHD_RESPMEM_PERSISTENT);
        if (!response)
            return MHD_NO;
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.contentType.c_str());
        MHD_add_response_header(response, "X-Content-Type-Options", "nosniff");
        for (const auto& [name, value] : reply.headers)
            MHD_add_response_header(response, name.c_str(), value.c_str());
        const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned int>(reply.status), response);
        MHD_destroy_response(response);
        return result;
    }

    void watch()
    {
        std::unique_lock lock(mutex_);
        while (!ended_.wait_for(lock, std::chrono::milliseconds(250), [this] { return isEnding_; }))
            connections_.cutLate(Connections::Clock::now());
    }

    const HttpSettings settings_;
    const Answer answer_;
    Connections connections_;
    int port_ = 0;
    MHD_Daemon* daemon_ = nullptr;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isEnding_ = false;
    std::thread watch_;
};

HttpServer::HttpServer(const HttpSettings& settings, Answer answer)
    : daemon_(std::make_unique<Daemon>(settings, std::move(answer)))
{}

HttpServer::~HttpServer() = default;

std::string HttpServer::address() const
{
    return daemon_->address();
}

void HttpServer::finish()
{
    daemon_->finish();
}

} // namespace community_server
