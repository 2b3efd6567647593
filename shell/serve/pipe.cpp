#include "serve/pipe.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "text/file.hpp"

namespace vorcfg::serve {

namespace {

std::atomic<bool> signal_came = false;

void note_signal(int)
{
    if (signal_came.exchange(true)) {
        _exit(input::exit_ended);
    }
}

int require(int result, std::string_view what)
{
    if (result < 0) {
        throw input::InputError{fmt::format("{}: {}", what, std::strerror(errno)), input::exit_unusable};
    }
    return result;
}

// Those that are ignored stay so, under nohup, say.
sigset_t blocked_signals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(each, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            action.sa_handler = note_signal;
            action.sa_flags = SA_RESTART;
            sigaction(each, &action, nullptr);
            sigaddset(&set, each);
        }
    }
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return set;
}

} // namespace

Pipe::Pipe()
    : input_(require(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "standard input")),
      output_(require(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "standard output")),
      printed_(require(memfd_create("vorcfg", MFD_CLOEXEC), "no memory for answers")), blocked_(blocked_signals()),
      signals_(require(signalfd(-1, &blocked_, SFD_CLOEXEC), "cannot wait for signals"))
{
    const int nothing = require(open("/dev/null", O_RDONLY | O_CLOEXEC), "/dev/null");
    dup2(nothing, STDIN_FILENO);
    close(nothing);
    std::fflush(stdout);
    dup2(printed_, STDOUT_FILENO);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_IGN); // nobody waits for a process that waits for a confirmation
    only_ = this;
    pthread_atfork(nullptr, nullptr, leave);
}

void Pipe::leave()
{
    close(only_->input_); // the client would wait for its end
    close(only_->output_);
    only_->read_.resize(only_->read_.capacity());
    explicit_bzero(only_->read_.data(), only_->read_.size());
}

bool Pipe::has_signal()
{
    return signal_came;
}

Pipe::Interruptible::Interruptible(const Pipe& pipe) : pipe_(pipe)
{
    sigprocmask(SIG_UNBLOCK, &pipe_.blocked_, nullptr);
}

Pipe::Interruptible::~Interruptible()
{
    sigprocmask(SIG_BLOCK, &pipe_.blocked_, nullptr);
}

bool Pipe::wait(int descriptor, short events, int milliseconds)
{
    pollfd waits[] = {{signals_, POLLIN, 0}, {descriptor, events, 0}};
    while (poll(waits, std::size(waits), signal_came ? 0 : milliseconds) < 0 && errno == EINTR) {}
    if (waits[0].revents != 0) {
        signal_came = true;
    }
    return !signal_came && waits[1].revents != 0;
}

std::optional<Line> Pipe::next()
{
    std::array<char, 1 << 16> bytes;
    Line line;
    while (true) {
        const std::size_t end = read_.find('\n', searched_);
        if (end != std::string::npos || ended_) {
            line.text = read_.substr(0, end);
            read_.erase(0, end != std::string::npos ? end + 1 : end);
            searched_ = 0;
            const bool is_last = end == std::string::npos && line.text.empty() && line.is_whole;
            wait(-1, 0, 0);
            return signal_came || is_last ? std::nullopt : std::optional(std::move(line));
        }
        searched_ = read_.size();
        if (searched_ > longest_line) {
            line.is_whole = false;
            searched_ = 0;
            read_.clear();
        }
        if (!wait(input_, POLLIN)) {
            return std::nullopt;
        }
        const ssize_t got = ::read(input_, bytes.data(), bytes.size());
        if (got > 0) {
            read_.append(bytes.data(), static_cast<std::size_t>(got));
        }
        ended_ = got == 0 || (got < 0 && errno != EINTR && errno != EAGAIN);
    }
}

void Pipe::rest(int milliseconds)
{
    if (!signal_came) {
        wait(-1, 0, milliseconds);
    }
}

std::string Pipe::take_printed()
{
    std::fflush(stdout);
    std::clearerr(stdout);
    const off_t size = std::max<off_t>(lseek(printed_, 0, SEEK_CUR), 0);
    std::string text(static_cast<std::size_t>(size), '\0');
    const ssize_t got = pread(printed_, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    (void)!ftruncate(printed_, 0);
    lseek(printed_, 0, SEEK_SET);
    return text;
}

bool Pipe::write(std::string_view text)
{
    constexpr int patience_ms = 1000; // after a signal
    while (!text.empty()) {
        pollfd writable{output_, POLLOUT, 0};
        if (!wait(output_, POLLOUT) && poll(&writable, 1, patience_ms) <= 0) {
            errno = ETIMEDOUT;
            return false;
        }
        // as much as a pipe that is ready takes without waiting
        const std::string_view part = text.substr(0, PIPE_BUF);
        if (!vor::write_all(output_, part)) {
            return false;
        }
        text.remove_prefix(part.size());
    }
    return true;
}

} // namespace vorcfg::serve
