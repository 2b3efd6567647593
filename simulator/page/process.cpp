#include "page/process.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "text/text.hpp"

namespace vorsim::page {
namespace {

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error(fmt::format("{}: {}", what, std::strerror(errno)));
}

std::string random_token()
{
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        fail("no random token for the page");
    }
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

// Listens at the port; where that is 0, at one that is free, which it becomes.
Descriptor listen_at(std::uint16_t& port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    const int yes = 1;
    Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (listener.get() < 0 || setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(listener.get(), plain, size) != 0 || listen(listener.get(), SOMAXCONN) != 0 ||
        getsockname(listener.get(), plain, &size) != 0) {
        fail(fmt::format("--http {}: the page cannot be served at 127.0.0.1", port));
    }
    port = ntohs(address.sin_port);
    return listener;
}

// Its only end is its parent's: what a terminal or a service's manager sends to all is not its own.
void become_companion(pid_t parent)
{
    prctl(PR_SET_NAME, "vorsim page");
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(0);
    }
    for (const int signal_number : {SIGTERM, SIGINT, SIGHUP, SIGPIPE}) {
        std::signal(signal_number, SIG_IGN);
    }
    const Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    dup2(nothing.get(), STDIN_FILENO);
    dup2(nothing.get(), STDOUT_FILENO);
}

[[noreturn]] void serve(pid_t parent, int parents_end, int listener, const Settings& settings)
{
    become_companion(parent);
    try {
        char opened = 0;
        if (read(parents_end, &opened, 1) != 1) {
            _exit(0);
        }
        Loop loop;
        loop.watch(parents_end, [] { _exit(0); });
        const Site site(loop, listener, settings);
        loop.run();
    } catch (const std::exception& error) {
        vor::print_line(stderr, fmt::format("vorsim: the page: {}", error.what()));
    }
    _exit(1);
}

} // namespace

Process::Process(std::uint16_t port, bool control)
    : settings_{.port = port, .token = random_token(), .control = control}
{
    Http::require();
    const Descriptor listener = listen_at(settings_.port);
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        fail("no socket for the page's process");
    }
    socket_ = Descriptor(ends[0]);
    const Descriptor childs_end(ends[1]);
    const pid_t parent = getpid();
    std::signal(SIGCHLD, SIG_DFL); // whoever starts us may not want to know of his own; we do
    child_ = fork();
    if (child_ < 0) {
        fail("no process for the page");
    }
    if (child_ == 0) {
        socket_ = Descriptor(); // for its end to be seen
        serve(parent, childs_end.get(), listener.get(), settings_);
    }
}

Process::~Process()
{
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
}

void Process::open()
{
    send_now(socket_.get(), "+");
}

std::string Process::link() const
{
    return fmt::format("http://127.0.0.1:{}/#{}", settings_.port, settings_.token);
}

std::string Process::fate()
{
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = -1;
    return fmt::format("vorsim: the page is served no more: its process ended by {} {}",
                       WIFSIGNALED(status) ? "signal" : "code",
                       WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
}

} // namespace vorsim::page
