#include "server/page.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include "record/bytes.hpp"
#include "sockets/unix_socket.hpp"

namespace vorsim::server {
namespace {

std::string program_beside_this()
{
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const std::string program = folder / "vorsim-page";
    if (access(program.c_str(), X_OK) != 0) {
        throw std::runtime_error(
            fmt::format("--http requires the program vorsim-page, which is not in {}", folder.string()));
    }
    return program;
}

std::string random_token()
{
    std::array<std::uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        sockets::fail("cannot create a token for the page");
    }
    return record::hex(bytes);
}

// Listens at the port; 0 is replaced by the free one that was chosen.
sockets::Descriptor listen_at(std::uint16_t& port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    const int yes = 1;
    sockets::Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (listener.get() < 0 || setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(listener.get(), plain, size) != 0 || listen(listener.get(), SOMAXCONN) != 0 ||
        getsockname(listener.get(), plain, &size) != 0) {
        sockets::fail(fmt::format("cannot serve the page at 127.0.0.1:{}", port));
    }
    port = ntohs(address.sin_port);
    return listener;
}

// The program gets its end of the socket as standard input, the listening port as standard output.
pid_t spawn(const std::string& program, bool control, int socket, int listener)
{
    char* const arguments[] = {const_cast<char*>("vorsim-page"), control ? const_cast<char*>("--control") : nullptr,
                               nullptr};
    pid_t child = -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, listener, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDERR_FILENO); // kept open
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);    // inherited ones stay out
    errno = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return errno == 0 ? child : -1;
}

} // namespace

Page::Page(std::uint16_t port, bool control)
    : control_(control), port_(port), program_(program_beside_this()), token_(random_token()),
      listener_(listen_at(port_))
{
}

void Page::start(sockets::Loop& loop, std::function<void(const std::string& exit_reason)> on_end)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        sockets::fail("cannot create a socket for vorsim-page");
    }
    socket_ = sockets::Descriptor(ends[0]);
    const sockets::Descriptor childs_end(ends[1]);
    sockets::send_now(socket_.get(), token_ + "\n");
    std::signal(SIGCHLD, SIG_DFL); // the parent may have ignored it; waitpid needs it
    child_ = spawn(program_, control_, childs_end.get(), listener_.get());
    if (child_ < 0) {
        sockets::fail("cannot start vorsim-page");
    }
    listener_ = sockets::Descriptor();
    loop.watch(socket_.get(), [this, &loop, on_end = std::move(on_end)] {
        loop.forget(socket_.get());
        on_end(exit_reason());
    });
}

Page::~Page()
{
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
}

std::string Page::link() const
{
    return fmt::format("http://127.0.0.1:{}/#{}", port_, token_);
}

std::string Page::exit_reason()
{
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = -1;
    const bool killed = WIFSIGNALED(status);
    return fmt::format("the page is no longer served: vorsim-page ended with {} {}", killed ? "signal" : "code",
                       killed ? WTERMSIG(status) : WEXITSTATUS(status));
}

} // namespace vorsim::server
