#include "bench/ChildProcess.h"

#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

std::vector<char*> pointers(const Texts& texts)
{
    std::vector<char*> all;
    for (const std::string& text : texts)
        all.push_back(const_cast<char*>(text.c_str()));
    all.push_back(nullptr);
    return all;
}

} // namespace

double run(const Texts& command, const Texts& environment, const std::string& output)
{
    std::vector<char*> arguments = pointers(command);
    std::vector<char*> variables = pointers(environment); // the first of a name counts
    variables.pop_back();
    for (char** own = environ; *own; ++own)
        variables.push_back(*own);
    variables.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = ::posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), variables.data());
    ::posix_spawn_file_actions_destroy(&actions);
    rusage used = {};
    if (status != 0 || ::wait4(child, &status, 0, &used) != child || status != 0)
        throw std::runtime_error("failed with status " + std::to_string(status) + ": " + command.front());
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
}

} // namespace bench
