// A server for the community library: accounts, uploads, listings, downloads. See README.md.

#include "platform/Utf8.h"
#include "tools/community_server/Library.h"

#include <httplib.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <thread>

namespace {

using httplib::Request;
using httplib::Response;

constexpr std::size_t kLongestName = 200;
constexpr std::size_t kLongestComments = 4000;
constexpr char kTooLarge[] = "The file is too large, so it was not shared. A mapping has at most 1 MiB.";

constexpr char kUsage[] = "Usage: community_server [--host ADDRESS] [--port NUMBER] [--data FOLDER] [--seed FOLDER]\n"
                          "                        [--with-parent PID]\n"
                          "Port 0 takes a free one; the address is printed when the server listens.\n";

using Options = std::map<std::string, std::string>;

bool read(int argc, char** argv, Options& options)
{
    for (int i = 1; i + 1 < argc; i += 2) {
        const auto option = options.find(argv[i]);
        if (option == options.end())
            return false;
        option->second = argv[i + 1];
    }
    return argc % 2 == 1;
}

std::string percentDecoded(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(&text[i + 1], &text[i + 3], byte, 16).ptr == &text[i + 3]) {
            bytes += static_cast<char>(byte);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

/// A value of the request's query. The clients leave a plus as it is, and httplib would make a space of it.
std::string valueOf(const Request& request, const std::string& name)
{
    const std::string& target = request.target;
    for (std::size_t start = target.find('?'); start != std::string::npos; start = target.find('&', start + 1))
        if (target.compare(start + 1, name.size() + 1, name + "=") == 0) {
            const std::size_t value = start + name.size() + 2;
            return percentDecoded(target.substr(value, target.find('&', value) - value));
        }
    return {};
}

/// The bytes of the form's file. httplib has put files of forms in a place of their own since version 0.23.
std::optional<std::string> uploadIn(const auto& request)
{
    constexpr char kField[] = "userfile";
    if constexpr (requires { request.form; })
        return request.form.has_file(kField) ? std::optional(request.form.get_file(kField).content) : std::nullopt;
    else
        return request.has_file(kField) ? std::optional(request.get_file_value(kField).content) : std::nullopt;
}

/// A text that can be stored and sent out again.
bool isText(const std::string& text, std::size_t shortest, std::size_t longest)
{
    return text.size() >= shortest && text.size() <= longest && platform::isUtf8(text) &&
           text.find('\0') == std::string::npos;
}

void say(Response& response, const std::string& text)
{
    response.set_content(text, "text/plain; charset=utf-8");
}

std::string createAccount(Library& library, const std::string& userName, const std::string& email)
{
    // The last two are what clients send when there is no name.
    if (!isText(userName, 1, kLongestName) || userName == "NOONEHERE" || userName == "(null)")
        return "Please choose another user name.";
    if (!isText(email, 1, kLongestName) || email.find('@') == std::string::npos)
        return "Please give an e-mail address.";
    const auto pin = library.createAccount(userName, email);
    if (!pin)
        return "The user name " + userName + " is taken. Please choose another one.";
    return "Welcome, " + userName + "! Your PIN is " + *pin + ". Please write it down: it is not shown again.";
}

std::string takeUpload(Library& library, const Request& request)
{
    const std::string userName = valueOf(request, "user");
    const std::string plugin = valueOf(request, "plugin");
    const std::string comments = valueOf(request, "comments");
    if (!library.hasAccount(userName))
        return "Please log in before you share a mapping.";
    if (!isText(plugin, 1, kLongestName) || !isText(comments, 0, kLongestComments))
        return "The name of the plug-in or the comments cannot be stored.";
    const auto file = uploadIn(request);
    if (!file)
        return "There was no file in the upload.";
    if (file->size() > Library::kLargestFile)
        return kTooLarge;
    if (!library.share(userName, plugin, comments, *file))
        return "The file is no mapping, so it was not shared. Save the mapping first.";
    return "Thank you, " + userName + "! Your mapping for " + plugin + " is now shared.";
}

void route(httplib::Server& server, Library& library)
{
    const auto answer = [&](const char* path, auto answerTo) {
        server.Post(path, [=](const Request& request, Response& response) { say(response, answerTo(request)); });
    };
    answer("/checkuser.php", [&](const Request& request) {
        return library.isPinOf(valueOf(request, "userName"), valueOf(request, "pinCode")) ? "\nOK\n" : "\nNO\n";
    });
    answer("/checkuserexists.php", [&](const Request& request) {
        return createAccount(library, valueOf(request, "userName"), valueOf(request, "emailAddr"));
    });
    answer("/kv_upload.php", [&](const Request& request) { return takeUpload(library, request); });
    answer("/kv_downloadreg.php", [&](const Request& request) {
        return library.countDownload(valueOf(request, "patchID")) ? "\nOK\n" : "\nNO\n";
    });
    server.Post("/kv_listplists.php", [&](const Request& request, Response& response) {
        response.set_content(library.listing(valueOf(request, "plugin")), "application/json");
    });
    server.Get("/files/([0-9a-f]+\\.plist)", [&](const Request& request, Response& response) {
        if (const auto bytes = library.file(request.matches[1].str()))
            response.set_content(*bytes, "application/octet-stream");
        else
            response.status = 404;
    });
}

void answerProblems(httplib::Server& server)
{
    // The clients show the body, so an empty one would be an alert that says nothing.
    server.set_error_handler([](const Request&, Response& response) {
        switch (response.status) {
        case 400: return say(response, "The request was not understood.");
        case 404: return say(response, "The library has nothing at this address.");
        case 413: return say(response, kTooLarge);
        case 414: return say(response, "The text is too long. Please shorten it.");
        default: return say(response, "The library could not do that. Please try again later.");
        }
    });
    server.set_exception_handler([](const Request& request, Response& response, std::exception_ptr problem) {
        try {
            std::rethrow_exception(problem);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "community_server: %s: %s\n", request.path.c_str(), error.what());
        }
        response.status = 500;
    });
}

int serve(httplib::Server& server, const Options& options)
{
    // Without the library's own choice of options two servers could share a port and take turns.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    // Shorter than the library's own, since a connection left open keeps a thread, and the server from ending.
    server.set_keep_alive_timeout(1);
    server.set_payload_max_length(Library::kLargestFile + 4096); // with the form around the file
    const std::string& host = options.at("--host");
    const int asked = std::atoi(options.at("--port").c_str());
    const bool isBound = asked > 0 && asked <= 65535 && server.bind_to_port(host, asked);
    const int port = asked == 0 ? server.bind_to_any_port(host) : isBound ? asked : -1;
    if (port < 0) {
        std::fprintf(stderr, "community_server: cannot listen on %s, port %s\n", host.c_str(),
                     options.at("--port").c_str());
        return 1;
    }
    std::printf("http://%s:%d/\n", host.c_str(), port);
    std::fflush(stdout);
    return server.listen_after_bind() ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    Options options{{"--host", "127.0.0.1"},
                    {"--port", "8765"},
                    {"--data", "community-data"},
                    {"--seed", ""},
                    {"--with-parent", ""}};
    if (!read(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    umask(077); // the folder holds e-mail addresses and the hashes of PINs
    // Blocked before any thread starts, so that only the one that waits for them gets them.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    if (const std::string& parent = options["--with-parent"]; !parent.empty())
        std::thread([parent] {
            // Asked for again and again, since not every system tells of a parent's end.
            while (std::to_string(::getppid()) == parent)
                ::usleep(100'000);
            ::kill(::getpid(), SIGTERM);
        }).detach();
    try {
        Library library(options["--data"]);
        if (!options["--seed"].empty())
            library.seed(options["--seed"]);
        httplib::Server server;
        route(server, library);
        answerProblems(server);
        std::atomic<bool> hasServed = false;
        std::thread ender([&] {
            int signal = 0;
            sigwait(&ends, &signal);
            // A stop before the server runs would be lost.
            while (!server.is_running() && !hasServed)
                ::usleep(1000);
            server.stop();
        });
        const int status = serve(server, options);
        hasServed = true;
        pthread_kill(ender.native_handle(), SIGTERM); // for when no signal came
        ender.join();
        return status;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "community_server: %s\n", error.what());
        return 1;
    }
}
