#pragma once
// HTTP for the library, in which no client can keep the others waiting: every request has a time in all and a size,
// every address a number of connections and of bytes in memory. A connection too many costs its address the oldest one
// that is still being waited for.

#include "tools/community_server/AccessLog.h"
#include "tools/community_server/Service.h"

#include <functional>
#include <memory>
#include <string>

namespace community_server {

struct HttpSettings {
    std::string host;
    int port = 0; ///< 0 takes a free one
    /// Whether connections come from a proxy, whose last X-Forwarded-For is the client's address.
    bool isBehindProxy = false;
    std::function<void(const Access&)> note; ///< told of every request that is replied to, by one thread
};

class HttpServer {
public:
    using Answer = std::function<void(Request, std::function<void(Reply)>)>;

    /// Listens, and hands every request to `answer`, which is to call what it is given once. Throws std::runtime_error.
    HttpServer(const HttpSettings& settings, Answer answer);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    /// All that were handed on have to be answered.
    ~HttpServer();

    /// "http://HOST:PORT/".
    std::string address() const;
    /// Takes no further connections, and waits a while for the requests that have begun.
    void finish();

private:
    class Daemon;
    std::unique_ptr<Daemon> daemon_;
};

} // namespace community_server
