#pragma once
// The server as its own process, and clients of it over raw sockets.

#include "tests/support/TemporaryFolder.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace test {

inline constexpr char kHere[] = "127.0.0.1";

struct Reply {
    int status = 0; ///< 0 when none came
    std::string body;
};

/// A connection to the port of this machine, made from an address of it; -1 when that cannot be had.
int connectTo(std::uint16_t port, const std::string& from = kHere);
/// Whether the machine has 127.0.0.2 and the like.
bool hasOtherAddresses();
/// False when the server took no more.
bool sendAll(int socket, const std::string& bytes);
/// What comes until the server ends the connection, within some seconds.
std::string readAll(int socket);

/// The value at an SQLite JSON path of a text; empty when there is none.
std::string valueIn(const std::string& json, const std::string& path);

class TestServer {
public:
    using Arguments = std::vector<std::string>;

    explicit TestServer(const Path& data, const Arguments& further = {}, std::uint16_t port = 0);
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;
    /// Ends it, and fails the test unless it ends well.
    ~TestServer();

    std::uint16_t port() const { return port_; }
    pid_t process() const { return process_; }
    /// Ends it at once.
    void kill();

    /// Sends the bytes as they are and reads until the server ends the connection.
    Reply send(const std::string& bytes, const std::string& from = kHere) const;
    Reply get(const std::string& target, const std::string& from = kHere) const;
    Reply post(const std::string& target, const std::string& body = {}, const std::string& headers = {},
               const std::string& from = kHere) const;

    /// Makes an account and returns its PIN.
    std::string createAccount(const std::string& name, const std::string& from = kHere) const;
    /// The same, and logs in.
    std::string join(const std::string& name, const std::string& from = kHere) const;
    std::string logIn(const std::string& name, const std::string& pin, const std::string& from = kHere) const;
    Reply upload(const std::string& user, const std::string& file, const std::string& comments = {},
                 const std::string& plugin = "Echo", const std::string& from = kHere) const;
    std::string listing(const std::string& plugin = "Echo") const;
    /// Of the newest mapping.
    std::string listed(const std::string& key, const std::string& plugin = "Echo") const;

private:
    pid_t process_ = -1;
    std::uint16_t port_ = 0;
};

} // namespace test
