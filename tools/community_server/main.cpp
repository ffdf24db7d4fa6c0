// A server for the community library: accounts, uploads, listings, downloads. See README.md.

#include "platform/files/Files.h"
#include "tools/community_server/AccessLog.h"
#include "tools/community_server/HttpServer.h"
#include "tools/community_server/Library.h"
#include "tools/community_server/Options.h"
#include "tools/community_server/Schema.h"
#include "tools/community_server/Service.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>
#include <utility>
#include <variant>

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

namespace {

using namespace community_server;

void prepareLibrary(const Options& options)
{
    Database database(options.data);
    for (const std::string& problem : bringUpToDate(database, options.data))
        std::fprintf(stderr, "community_server: %s\n", problem.c_str());
    if (!options.seed.empty())
        Library(database).seed(options.seed, now());
}

/// A descriptor for each connection, where the system gives fewer unless it is asked.
void raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = std::max<rlim_t>(limit.rlim_cur, std::min<rlim_t>(limit.rlim_max, 1024));
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

/// Has glibc give large texts back at once, of which its heaps would keep many times what is in use.
void keepLittleMemory()
{
#ifdef M_MMAP_THRESHOLD
    ::mallopt(M_MMAP_THRESHOLD, 128 << 10);
#endif
}

void endWith(const std::string& parent)
{
    // Asked for again and again, since not every system tells of a parent's end.
    while (std::to_string(::getppid()) == parent)
        ::usleep(100'000);
    ::kill(::getpid(), SIGTERM);
}

void serve(const Options& options, const sigset_t& ends)
{
    prepareLibrary(options);
    Service service({options.data, options.quotas, options.pathPrefix});
    AccessLog log(options.accessLog);
    const auto note = [&](const Access& access) { log.write(access); };
    HttpServer server(
        {options.host, options.port, options.isBehindProxy, note},
        [&](Request request, Service::Done done) { service.answer(std::move(request), std::move(done)); });
    std::printf("%s%s\n", server.address().c_str(),
                options.pathPrefix.empty() ? "" : (options.pathPrefix.substr(1) + "/").c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&ends, &signal);
    server.finish();
    service.endSoon();
}

} // namespace

int main(int argc, char* argv[])
{
    const auto read = readOptions({argv + 1, argv + argc}, environmentOfProcess());
    if (const auto* ending = std::get_if<Ending>(&read)) {
        std::fputs(ending->text.c_str(), ending->status == 0 ? stdout : stderr);
        return ending->status;
    }
    const Options& options = std::get<Options>(read);
    umask(077); // the folder holds e-mail addresses and the hashes of PINs
    platform::files::failBeyondSizeLimits();
    raiseDescriptorLimit();
    keepLittleMemory();
    std::signal(SIGPIPE, SIG_IGN); // clients go, and whoever reads the access log may end
    // Blocked before any thread starts, so that only the one that waits for them gets them.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    if (!options.parent.empty())
        std::thread(endWith, options.parent).detach();
    try {
        serve(options, ends);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "community_server: %s\n", error.what());
        return 1;
    }
}
