#include "processes.hpp"

#include "records.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <gtest/gtest.h>

extern char** environ;

namespace processes {

namespace {

constexpr int patience_ms = 20'000; // an emulator on a busy machine is slow, never this slow

[[noreturn]] void fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

int exit_code(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) == -1) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// As the kernel takes words and variables: the last is null.
std::vector<char*> pointers_to(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Starts a program with standard output and error in one pipe and no input.
pid_t start(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
            const std::filesystem::path& directory, int& output)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) == -1) {
        fail("pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1); // whatever a runner left open
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    pid_t pid = -1;
    const int error = posix_spawn(&pid, arguments[0].c_str(), &actions, nullptr, pointers_to(arguments).data(),
                                  pointers_to(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        errno = error;
        fail(arguments[0]);
    }
    output = ends[0];
    return pid;
}

// More of what a process prints; false at its end or when patience is over.
bool read_more(int output, std::string& text)
{
    pollfd waiting{output, POLLIN, 0};
    while (true) {
        const int ready = poll(&waiting, 1, patience_ms);
        if (ready == -1 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return false;
        }
        std::array<char, 4096> piece{};
        const ssize_t size = read(output, piece.data(), piece.size());
        if (size == -1 && errno == EINTR) {
            continue;
        }
        if (size <= 0) {
            return false;
        }
        text.append(piece.data(), static_cast<std::size_t>(size));
        return true;
    }
}

// Where the sockets are: the platform's own, and other daemons'.
std::map<std::string, std::string> platform_settings(const std::filesystem::path& place)
{
    return {{"VORINFRA_DIR", (place / "run").string()}, {"VORINFRA_ROOT", (place / "root").string()}};
}

void expect_described(const std::string& line, const std::string& from)
{
    if (const std::string why = mismatch(line); !why.empty()) {
        ADD_FAILURE() << from << ": " << line << "\nis not as docs/vorcfg.schema.json describes:\n" << why;
    }
}

void expect_described_output(const std::string& line, const std::string& from)
{
    if (line.starts_with("{\"schema\":")) {
        expect_described(line, from);
    }
}

// A journal of vorcfg, but for a last line that was cut off.
void expect_described_journal(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::string line;
    for (bool begun = false; std::getline(file, line) && !file.eof(); begun = true) {
        if (!begun && !line.starts_with("{\"vorcfg_journal\":")) {
            return;
        }
        expect_described(line, path.filename());
    }
}

} // namespace

TemporaryDirectory::TemporaryDirectory()
{
    std::string name = (std::filesystem::temp_directory_path() / "vor-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        fail(name);
    }
    path_ = name;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string contents(const std::filesystem::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

Workplace::Workplace()
{
    namespace fs = std::filesystem;
    fs::create_directories(path() / "bin");
    fs::create_directories(path() / "root/tmp");
    for (const char* tool : {"vorcfg", "vorcfg-page", "vorsim", "manager"}) {
        const fs::path script = path() / "bin" / tool;
        std::ofstream(script) << "#!/bin/sh\nexec " VOR_EMULATOR " \"" VOR_BUILD_DIR "/" << tool << "\" \"$@\"\n";
        fs::permissions(script, fs::perms::owner_all);
    }
    fs::copy(VOR_SOURCE_DIR "/examples", path() / "examples", fs::copy_options::recursive);
}

Workplace::~Workplace()
{
    for (const auto& file : std::filesystem::recursive_directory_iterator(path())) {
        if (file.path().extension() == ".journal" && file.is_regular_file()) {
            expect_described_journal(file.path());
        }
    }
}

std::vector<std::string> Workplace::environment() const
{
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (text.rfind("VORINFRA_", 0) != 0 && text.rfind("PATH=", 0) != 0 && text.rfind("XDG_STATE_HOME=", 0) != 0) {
            variables.push_back(text);
        }
    }
    const char* const search = std::getenv("PATH");
    variables.push_back("PATH=" + (path() / "bin").string() + ":" + (search != nullptr ? search : "/usr/bin:/bin"));
    variables.push_back("XDG_STATE_HOME=" + (path() / "state").string());
    for (const auto& [name, value] : platform_settings(path())) {
        variables.push_back(name + "=" + value);
    }
    return variables;
}

void Workplace::enter() const
{
    for (const auto& [name, value] : platform_settings(path())) {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

Output Workplace::run(const std::string& command) const
{
    int output = -1;
    const pid_t pid = start({"/bin/sh", "-c", command}, environment(), path(), output);
    Output result{};
    while (read_more(output, result.text)) {}
    close(output);
    result.exit_code = exit_code(pid);
    std::istringstream lines(result.text);
    for (std::string line; std::getline(lines, line);) {
        expect_described_output(line, command);
    }
    return result;
}

Tool::Tool(const Workplace& workplace, const std::string& name, const std::vector<std::string>& options)
{
    std::vector<std::string> arguments{(workplace.path() / "bin" / name).string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    pid_ = start(arguments, workplace.environment(), workplace.path(), output_);
}

Gateway::Gateway(const Workplace& workplace, const std::vector<std::string>& options)
    : Tool(workplace, "vorsim", options)
{
    const std::string line = next_line();
    if (line.rfind("vorsim: ready", 0) != 0) {
        stop(SIGKILL);
        throw std::runtime_error("vorsim did not become ready: " + line);
    }
}

Tool::~Tool()
{
    stop(SIGTERM);
    if (output_ != -1) {
        close(output_);
    }
}

std::string Tool::next_line()
{
    std::size_t end = pending_.find('\n');
    while (end == std::string::npos) {
        if (!read_more(output_, pending_)) {
            return {};
        }
        end = pending_.find('\n');
    }
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    expect_described_output(line, "process " + std::to_string(pid_));
    return line;
}

void Tool::suspend() const
{
    signal(SIGSTOP);
}

void Tool::resume() const
{
    signal(SIGCONT);
}

void Tool::signal(int number) const
{
    kill(pid_, number);
}

int Tool::stop(int signal_number)
{
    if (pid_ == -1) {
        return 0;
    }
    kill(pid_, signal_number);
    const int code = exit_code(pid_);
    pid_ = -1;
    return code;
}

Terminal::Terminal(const Workplace& workplace, const std::vector<std::string>& command)
{
    std::vector<std::string> environment = workplace.environment();
    std::erase_if(environment, [](const std::string& each) { return each.starts_with("TERM="); });
    environment.emplace_back("TERM=vt100");
    environment.emplace_back("NO_COLOR=1"); // texts are compared
    const std::vector<char*> variables = pointers_to(environment);
    const std::vector<char*> arguments = pointers_to(command);
    const std::string directory = workplace.path().string();
    const winsize size{24, 200, 0, 0};
    pid_ = forkpty(&terminal_, nullptr, nullptr, &size);
    if (pid_ == -1) {
        fail("forkpty");
    }
    if (pid_ == 0) {
        if (chdir(directory.c_str()) == 0) {
            execve(arguments[0], arguments.data(), variables.data());
        }
        _exit(127);
    }
    fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

Terminal::~Terminal()
{
    close(terminal_);
    if (pid_ != -1) {
        kill(pid_, SIGKILL);
        exit_code(pid_);
    }
}

void Terminal::type(const std::string& text) const
{
    if (write(terminal_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        fail("terminal");
    }
}

std::string Terminal::shown_until(const std::string& wanted)
{
    while (pending_.find(wanted) == std::string::npos) {
        if (!read_more(terminal_, pending_)) {
            return std::exchange(pending_, {});
        }
    }
    const std::size_t end = pending_.find(wanted) + wanted.size();
    std::string shown = pending_.substr(0, end);
    pending_.erase(0, end);
    return shown;
}

Output Terminal::rest()
{
    while (read_more(terminal_, pending_)) {}
    const int code = exit_code(pid_);
    pid_ = -1;
    return {std::exchange(pending_, {}), code};
}

} // namespace processes
