#include "tests/trust/DriverRuns.h"

#include "tests/support/OrderFiles.h"

#include <algorithm>
#include <atomic>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr char kPlugin[] = "EQ One";

std::vector<std::string> linesOf(const Path& file)
{
    std::vector<std::string> lines;
    std::istringstream stream(fs::exists(file) ? read(file) : std::string());
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// What is in the way of a run, and who watches it.
std::vector<std::string> settingsOf(const Path& watched, const Path& trace, const Fault& fault)
{
    std::vector<std::string> settings = {"KV_FAULT_FOLDER=" + watched.native()};
    if (fault.obstacle.empty()) // which would stand in the way of the trace, too
        settings.push_back("KV_FAULT_TRACE=" + trace.native());
    settings.push_back("KV_FAULT_AT=" + std::to_string(fault.at));
    settings.push_back("KV_FAULT=" + std::to_string(fault.error));
    settings.push_back("KV_FAULT_SIGNAL=" + std::to_string(fault.signal));
    if (fault.lasts)
        settings.push_back("KV_FAULT_LASTS=1");
    if (!fault.obstacle.empty())
        settings.push_back("KV_OBSTACLE=" + fault.obstacle);
    return settings;
}

/// The status of a process that has ended or stopped.
int waitFor(pid_t process)
{
    int status = 0;
    if (::waitpid(process, &status, WUNTRACED) != process)
        throw std::runtime_error("cannot wait for a program");
    return status;
}

} // namespace

const std::vector<Scenario>& scenarios()
{
    static const std::vector<Scenario> all = {
        {"mark", {"mark"}, {"mark"}, {}},
        {"mark_of_no_dictionary", {"mark"}, {"mark"}, {}, "no property list"},
        {"first_save", {"save", "2"}, {"save", "2"}, {{"mark"}}},
        {"later_save", {"save", "4"}, {"save", "4"}, {{"save", "2"}, {"save", "3"}}},
        {"save_of_no_dictionary",
         {"spoilt-save", "4"},
         {"save", "4"},
         {{"save", "2"}, {"save", "3"}},
         "no property list"},
        {"recall_original", {"recall-original"}, {"recall-original"}, {{"save", "2"}, {"save", "3"}}},
        {"recall_previous", {"recall-prev"}, {"recall-prev"}, {{"save", "2"}, {"save", "3"}}},
        {"chart", {"chart"}, {"chart"}, {{"chart"}, {"save", "2"}}},
        {"download", {"download"}, {"download"}, {{"mark"}}},
        {"two_downloads", {"download-twice"}, {"download"}, {{"mark"}}},
    };
    return all;
}

Driver::~Driver()
{
    if (process_ == 0)
        return;
    ::close(requests_);
    ::close(answers_);
    ::waitpid(process_, nullptr, 0);
}

pid_t Driver::start(const std::vector<std::string>& settings, const std::vector<std::string>& arguments)
{
    if (process_ == 0)
        load();
    std::string request;
    for (const auto* lines : {&settings, &arguments}) {
        for (const std::string& line : *lines)
            request += line + '\n';
        request += '\n';
    }
    std::string answer;
    char letter = 0;
    if (::write(requests_, request.data(), request.size()) == static_cast<ssize_t>(request.size())) {
        while (::read(answers_, &letter, 1) == 1 && letter != '\n')
            answer += letter;
    }
    if (letter != '\n')
        throw std::runtime_error("the driver has ended");
    return std::stoi(answer);
}

void Driver::load()
{
    int requests[2];
    int answers[2];
    if (::pipe2(requests, O_CLOEXEC) != 0 || ::pipe2(answers, O_CLOEXEC) != 0)
        throw std::runtime_error("there is no pipe");
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, requests[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
    // The preloaded library stands before the sanitizers' own, which only calls from the one to the other. The first
    // setting of a name counts.
    std::string preload = "LD_PRELOAD=" KV_FILE_FAULTS;
    std::string order = "ASAN_OPTIONS=verify_asan_link_order=0";
    std::vector<char*> settings = {preload.data(), order.data()};
    for (char** each = environ; *each; ++each)
        settings.push_back(*each);
    settings.push_back(nullptr);
    std::string program = KV_TRUST_DRIVER;
    char* arguments[] = {program.data(), nullptr};
    const int error = ::posix_spawn(&process_, KV_TRUST_DRIVER, &actions, nullptr, arguments, settings.data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(requests[0]);
    ::close(answers[1]);
    requests_ = requests[1];
    answers_ = answers[0];
    if (error != 0)
        throw std::runtime_error("cannot run " KV_TRUST_DRIVER);
}

bool DriverRun::wrote(const std::string& line) const
{
    return std::find(output.begin(), output.end(), line) != output.end();
}

Folder::Folder() : folder_(root_ / "machine/Library/Application Support/Logic/Plug-In Settings" / kPlugin)
{
    // A user who may not write to the plug-in's folder still gets there.
    fs::permissions(root_.path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
}

void Folder::prepare(const Scenario& scenario)
{
    put({});
    write(folder_ / kFile, orderBytes(numbered(40)));
    for (const auto& operation : scenario.history) {
        if (!run(operation).goesOn())
            throw std::runtime_error("cannot prepare " + std::string(scenario.name));
    }
    if (!scenario.spoilt.empty())
        write(folder_ / kFile, scenario.spoilt);
    if (scenario.operation.front().starts_with("download"))
        write(folder_ / kDownloaded, "what was downloaded before");
}

void Folder::put(const Files& files) const
{
    fs::remove_all(drafts()); // of hundreds of runs, which each would read
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    for (const auto& [name, content] : files)
        write(folder_ / name, content);
}

Files Folder::files() const
{
    Files found;
    for (const auto& entry : fs::directory_iterator(folder_))
        found[entry.path().filename().native()] = read(entry.path());
    return found;
}

Path Folder::drafts() const
{
    return root_ / "machine/state/trust_driver/drafts";
}

DriverRun Folder::run(const std::vector<std::string>& operation, const Fault& fault,
                      const std::function<void()>& meanwhile) const
{
    static std::atomic<int> runs = 0; // more than one at a time
    const std::string number = std::to_string(++runs);
    const Path trace = root_ / ("trace " + number);
    const Path output = root_ / ("output " + number);
    std::vector<std::string> arguments = {output.native(), (root_ / "machine").native(), kPlugin};
    arguments.insert(arguments.end(), operation.begin(), operation.end());
    Path watched = folder_;
    if (operation.front() == "scan") // comes to the plug-in's folder from above
        watched = root_ / "machine";
    if (operation.front() == "draft")
        watched = drafts();
    const pid_t process = driver_.start(settingsOf(watched, trace, fault), arguments);
    DriverRun run;
    run.status = waitFor(process);
    run.wasStopped = WIFSTOPPED(run.status);
    if (run.wasStopped) {
        meanwhile();
        ::kill(process, SIGCONT);
        run.status = waitFor(process);
    }
    run.isKilled = WIFSIGNALED(run.status) && WTERMSIG(run.status) == fault.signal;
    run.output = linesOf(output);
    run.trace = linesOf(trace);
    return run;
}

bool isPartial(const std::string& name)
{
    return name.starts_with('~');
}

bool isKept(const Files& files, const std::string& content)
{
    return std::any_of(files.begin(), files.end(), [&](const auto& file) {
        const bool isRead = file.first == kFile || file.first == kOriginal || file.first == kPrevious;
        return (isRead || file.first == kUnreadable) && file.second == content;
    });
}

} // namespace test
