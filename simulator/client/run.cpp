#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "client/expect.hpp"
#include "server/server.hpp"
#include "text/file.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

enum Exit : int { check_failed = 1, timed_out = 124, not_executable = 126, not_found = 127, by_signal = 128 };

struct RunOptions {
    server::Options gateway;
    Check check; // without a file: none
    std::optional<milliseconds> timeout;
    bool lines = false;
    std::vector<std::string> command;
};

constexpr vor::OptionOf<RunOptions> run_options[] = {
    {{"--expect", "FILE", ""}, [](RunOptions& options, std::string_view value) { options.check.file = value; }},
    {{"--timeout", "T", ""},
     [](RunOptions& options, std::string_view value) { options.timeout = server::time_of("--timeout", value); }},
    {{"--lines", "", ""}, vor::taken_as<&RunOptions::lines>},
};

RunOptions options_in(const std::vector<std::string>& arguments)
{
    RunOptions options;
    vor::Operands operands(arguments);
    while (!operands.empty() && operands.front() != "--" && operands.front().starts_with("-")) {
        if (!operands.take_option(run_options, options) && !operands.take_option(check_options, options.check) &&
            !server::take_option(operands, options.gateway)) {
            operands.refuse();
        }
    }
    if (!operands.empty() && operands.front() == "--") {
        operands.take();
    }
    while (!operands.empty()) {
        options.command.push_back(operands.take());
    }
    server::check(options.gateway);
    const bool checks = options.check.manner != record::Manner() || options.check.within.count() > 0;
    if (checks && options.check.file.empty()) {
        throw server::UsageError("--any-order, --subset, --allow-complaints and --within require --expect FILE");
    }
    if (options.command.empty() && !options.gateway.help) {
        throw server::UsageError("run needs a COMMAND");
    }
    return options;
}

// The platform's directories of this run. The process that began it removes them, or the gateway that outlives it.
class PrivateDirectory {
public:
    PrivateDirectory()
    {
        constexpr std::size_t longest = 80; // VORINFRA_DIR may have as much as it and the name
        const char* const set = std::getenv("TMPDIR");
        const std::string where = set != nullptr && *set == '/' ? set : "/tmp";
        if (where.size() > longest) {
            throw std::runtime_error(
                fmt::format("TMPDIR must have at most {} characters, not {}: {}", longest, where.size(), where));
        }
        path_ = where + "/vorsim.XXXXXX";
        if (mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error(
                fmt::format("cannot create a directory such as {}: {}", path_, vor::reason_of(errno)));
        }
        setenv("VORINFRA_DIR", path_.c_str(), 1);
        setenv("VORINFRA_ROOT", path_.c_str(), 1);
    }
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;
    ~PrivateDirectory()
    {
        std::error_code ignored;
        if (getpid() == began_ || getppid() != began_) {
            fs::remove_all(path_, ignored);
        }
    }

private:
    std::string path_;
    pid_t began_ = getpid();
};

// The parent of each process that can be seen.
template <class Visit>
void each_process(Visit visit)
{
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", error)) {
        const auto pid = vor::number_in<pid_t>(entry.path().filename().string());
        std::ifstream file(entry.path() / "stat");
        std::string stat;
        if (!pid || !std::getline(file, stat)) {
            continue;
        }
        const std::size_t name_end = stat.rfind(") "); // the state and the parent follow
        const std::string_view left = std::string_view(stat).substr(std::min(name_end + 4, stat.size()));
        if (const auto parent = vor::number_in<pid_t>(left.substr(0, left.find(' ')))) {
            visit(*pid, *parent);
        }
    }
}

// The gateway and the command as children, and whatever the command leaves behind.
class Children {
public:
    Children()
    {
        sigset_t taken;
        sigemptyset(&taken);
        for (const int signal_number : {SIGCHLD, SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            sigaddset(&taken, signal_number);
        }
        taken_ = taken;
        std::signal(SIGCHLD, SIG_DFL); // the parent may have ignored it
        sigprocmask(SIG_BLOCK, &taken_, &before_);
        prctl(PR_SET_CHILD_SUBREAPER, 1);
    }

    // 0 in the child.
    pid_t start()
    {
        const pid_t child = fork();
        if (child < 0) {
            sockets::fail("fork");
        }
        if (child == 0) {
            sigprocmask(SIG_SETMASK, &before_, nullptr);
        }
        return child;
    }

    // Waits for the process, which is a child. Its status; none if it still runs at the end of the time.
    std::optional<int> wait(pid_t child, Clock::time_point end = Clock::time_point::max(), pid_t signalled = -1)
    {
        for (;;) {
            reap();
            if (const auto found = ended_.find(child); found != ended_.end()) {
                return found->second;
            }
            const auto left = std::min<Clock::duration>(end - Clock::now(), std::chrono::hours(1));
            if (left.count() <= 0) {
                return {};
            }
            take_signal(left, signalled);
        }
    }

    // Ends all children but this one, and theirs.
    void end_others(pid_t kept)
    {
        for (const auto& [signal_number, within] :
             {std::pair{SIGTERM, milliseconds(500)}, {SIGKILL, milliseconds(5000)}}) {
            const auto end = Clock::now() + within;
            std::set<pid_t> told;
            while (Clock::now() < end) {
                reap();
                std::vector<pid_t> left;
                each_process([&](pid_t pid, pid_t parent) {
                    if (parent == getpid() && pid != kept && !ended_.contains(pid)) {
                        left.push_back(pid);
                    }
                });
                if (left.empty()) {
                    return;
                }
                for (const pid_t pid : left) {
                    if (told.insert(pid).second) {
                        kill(pid, signal_number);
                        kill(pid, SIGCONT);
                    }
                }
                take_signal(milliseconds(20), -1);
            }
        }
    }

private:
    void reap()
    {
        int status = 0;
        for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
            ended_[child] = status;
        }
    }

    // Waits for one. What a terminal sends has reached the whole group already.
    void take_signal(Clock::duration within, pid_t to)
    {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(within);
        const timespec limit{static_cast<std::time_t>(seconds.count()),
                             static_cast<long>(std::chrono::nanoseconds(within - seconds).count())};
        siginfo_t info{};
        const int signal_number = sigtimedwait(&taken_, &info, &limit);
        if (signal_number > 0 && signal_number != SIGCHLD && info.si_code != SI_KERNEL && to > 0) {
            kill(to, signal_number);
        }
    }

    sigset_t taken_{};
    sigset_t before_{};
    std::map<pid_t, int> ended_; // with their status
};

int code_of(int status)
{
    return WIFSIGNALED(status) ? by_signal + WTERMSIG(status) : WEXITSTATUS(status);
}

// In the gateway's process. Its group is its own, so that a terminal's signals do not reach it.
int serve(const RunOptions& options, pid_t parent, int ready)
{
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        return 0;
    }
    const sockets::Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    dup2(null.get(), STDIN_FILENO);
    dup2(options.lines ? STDERR_FILENO : null.get(), STDOUT_FILENO);
    server::Server server(options.gateway);
    [[maybe_unused]] const ssize_t written = write(ready, "+", 1);
    return server.run();
}

[[noreturn]] void execute(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    std::signal(SIGXFSZ, SIG_DFL);
    execvp(words[0], words.data());
    const int error = errno;
    vor::print_line(stderr,
                    fmt::format("vorsim: cannot run {}: {}", vor::printable(command[0]), vor::reason_of(error)));
    _exit(error == ENOENT ? not_found : not_executable);
}

// Its status, and whether the time was up.
std::pair<int, bool> wait_for_command(Children& children, pid_t command, std::optional<milliseconds> timeout)
{
    constexpr milliseconds grace{2000};
    const auto end = timeout ? Clock::now() + *timeout : Clock::time_point::max();
    if (const auto status = children.wait(command, end, command)) {
        return {*status, false};
    }
    vor::print_line(stderr, fmt::format("vorsim: the command did not end within {} ms", timeout->count()));
    kill(command, SIGTERM);
    kill(command, SIGCONT);
    if (const auto status = children.wait(command, Clock::now() + grace, command)) {
        return {*status, true};
    }
    kill(command, SIGKILL);
    return {children.wait(command).value_or(0), true};
}

bool is_as_expected(const Check& check)
try {
    return check.run(stderr);
} catch (const std::exception& error) {
    vor::print_line(stderr, fmt::format("vorsim: {}", vor::printable(error.what())));
    return false;
}

// The exit code of the check, in a process of its own, which a signal ends.
int code_of_check(const Check& check, Children& children)
{
    const pid_t self = getpid();
    const pid_t checking = children.start();
    if (checking == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(getppid() == self && is_as_expected(check) ? 0 : check_failed);
    }
    return code_of(children.wait(checking, Clock::time_point::max(), checking).value_or(0));
}

} // namespace

int run_command(const std::vector<std::string>& arguments)
{
    RunOptions options = options_in(arguments);
    if (options.gateway.help) {
        print(help_text());
        return 0;
    }
    if (!options.check.file.empty()) {
        options.check.read();
    }
    const PrivateDirectory directory;
    Children children;
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        sockets::fail("pipe");
    }
    const sockets::Descriptor is_ready(ends[0]);
    sockets::Descriptor ready(ends[1]);
    const pid_t self = getpid();
    const pid_t gateway = children.start();
    if (gateway == 0) {
        return serve(options, self, ready.get());
    }
    ready = sockets::Descriptor();
    char byte = 0;
    if (read(is_ready.get(), &byte, 1) != 1) {
        return code_of(children.wait(gateway).value_or(0)); // it has said why
    }
    const pid_t command = children.start();
    if (command == 0) {
        execute(options.command);
    }
    const auto [status, late] = wait_for_command(children, command, options.timeout);
    int code = code_of(status);
    const bool was_run = code != not_found && code != not_executable;
    int check_code = 0;
    if (children.wait(gateway, Clock::now())) {
        vor::print_line(stderr, "vorsim: the gateway ended before the command");
        check_code = check_failed;
    } else if (was_run && !options.check.file.empty()) {
        check_code = code_of_check(options.check, children);
    }
    children.end_others(gateway);

    kill(gateway, SIGTERM);
    kill(gateway, SIGCONT);
    auto ended = children.wait(gateway, Clock::now() + std::chrono::seconds(2));
    if (!ended) {
        kill(gateway, SIGKILL);
        ended = children.wait(gateway);
    }
    if (WIFSIGNALED(*ended)) {
        vor::print_line(stderr, fmt::format("vorsim: the gateway was ended by signal {}", WTERMSIG(*ended)));
    }
    if (late) {
        return timed_out;
    }
    if (code == 0) {
        code = check_code;
    }
    if (code == 0 && code_of(*ended) != 0) {
        code = check_failed;
    }
    return code;
}

} // namespace vorsim::client
