// A server for the community library: accounts, uploads, listings, downloads. See README.md.

#include "platform/Utf8.h"
#include "tools/community_server/Library.h"

#include <httplib.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>

namespace {

using httplib::Request;
using httplib::Response;

constexpr std::size_t kLongestName = 200;
constexpr std::size_t kLongestComments = 4000;
constexpr std::size_t kFormOverhead = 4096;

struct Options {
    std::string host = "127.0.0.1";
    int port = 8765;
    std::string data = "community-data";
    std::string seed;
};

constexpr char kUsage[] = "Usage: community_server [--host ADDRESS] [--port NUMBER] [--data FOLDER] [--seed FOLDER]\n"
                          "Port 0 takes a free one; the address is printed when the server listens.\n";

bool read(int argc, char** argv, Options& options)
{
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const std::string value = argv[i + 1];
        if (name == "--host")
            options.host = value;
        else if (name == "--port")
            options.port = std::atoi(value.c_str());
        else if (name == "--data")
            options.data = value;
        else if (name == "--seed")
            options.seed = value;
        else
            return false;
    }
    return argc % 2 == 1 && options.port >= 0 && options.port <= 65535;
}

/// A text that can be stored and sent out again.
bool isText(const std::string& text, std::size_t longest)
{
    return text.size() <= longest && platform::isUtf8(text) && text.find('\0') == std::string::npos;
}

bool isName(const std::string& text)
{
    return !text.empty() && isText(text, kLongestName);
}

/// Names that clients send when there is none.
bool isReserved(const std::string& userName)
{
    return userName == "NOONEHERE" || userName == "(null)";
}

void say(Response& response, const std::string& text)
{
    response.set_content(text, "text/plain; charset=utf-8");
}

std::string createAccount(Library& library, const std::string& userName, const std::string& email)
{
    if (!isName(userName) || isReserved(userName))
        return "Please choose another user name.";
    if (!isName(email) || email.find('@') == std::string::npos)
        return "Please give an e-mail address.";
    const auto pin = library.createAccount(userName, email);
    if (!pin)
        return "The user name " + userName + " is taken. Please choose another one.";
    return "Welcome, " + userName + "! Your PIN is " + *pin + ". Please write it down: it is not shown again.";
}

std::string takeUpload(Library& library, const Request& request)
{
    const std::string userName = request.get_param_value("user");
    const std::string plugin = request.get_param_value("plugin");
    const std::string comments = request.get_param_value("comments");
    if (isReserved(userName) || !library.hasAccount(userName))
        return "Please log in before you share a mapping.";
    if (!isName(plugin) || !isText(comments, kLongestComments))
        return "The name of the plug-in or the comments cannot be stored.";
    if (!request.has_file("userfile"))
        return "There was no file in the upload.";
    if (!library.share(userName, plugin, comments, request.get_file_value("userfile").content))
        return "The file is no mapping, so it was not shared. Save the mapping first.";
    return "Thank you, " + userName + "! Your mapping for " + plugin + " is now shared.";
}

void route(httplib::Server& server, Library& library)
{
    server.Post("/checkuser.php", [&](const Request& request, Response& response) {
        const bool isValid = library.isPinOf(request.get_param_value("userName"), request.get_param_value("pinCode"));
        say(response, isValid ? "\nOK\n" : "\nNO\n");
    });
    server.Post("/checkuserexists.php", [&](const Request& request, Response& response) {
        say(response,
            createAccount(library, request.get_param_value("userName"), request.get_param_value("emailAddr")));
    });
    server.Post("/kv_upload.php",
                [&](const Request& request, Response& response) { say(response, takeUpload(library, request)); });
    server.Post("/kv_listplists.php", [&](const Request& request, Response& response) {
        response.set_content(library.listing(request.get_param_value("plugin")), "application/json");
    });
    server.Post("/kv_downloadreg.php", [&](const Request& request, Response& response) {
        say(response, library.countDownload(request.get_param_value("patchID")) ? "\nOK\n" : "\nNO\n");
    });
    server.Get("/files/([0-9a-f]+\\.plist)", [&](const Request& request, Response& response) {
        if (const auto bytes = library.file(request.matches[1].str()))
            response.set_content(*bytes, "application/octet-stream");
        else
            response.status = 404;
    });
    server.set_exception_handler([](const Request& request, Response& response, std::exception_ptr problem) {
        try {
            std::rethrow_exception(problem);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "community_server: %s: %s\n", request.path.c_str(), error.what());
        }
        response.status = 500;
        say(response, "The library could not do that. Please try again later.");
    });
}

int serve(httplib::Server& server, const Options& options)
{
    // Without the library's own choice of options two servers could share a port and take turns.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.set_payload_max_length(Library::kLargestFile + kFormOverhead);
    int port = options.port;
    if (port == 0)
        port = server.bind_to_any_port(options.host);
    else if (!server.bind_to_port(options.host, port))
        port = -1;
    if (port < 0) {
        std::fprintf(stderr, "community_server: cannot listen on %s, port %d\n", options.host.c_str(), options.port);
        return 1;
    }
    std::printf("http://%s:%d/\n", options.host.c_str(), port);
    std::fflush(stdout);
    return server.listen_after_bind() ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    Options options;
    if (!read(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    // Blocked before any thread starts, so that only the one that waits for them gets them.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    try {
        Library library(options.data);
        if (!options.seed.empty())
            library.seed(options.seed);
        httplib::Server server;
        route(server, library);
        std::thread([&server, ends] {
            int signal = 0;
            sigwait(&ends, &signal);
            server.stop();
        }).detach();
        return serve(server, options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "community_server: %s\n", error.what());
        return 1;
    }
}
