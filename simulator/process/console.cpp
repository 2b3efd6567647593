#include "process/console.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "text/text.hpp"

namespace vorsim {
namespace {

constexpr std::size_t most_pending = 1 << 16;

// Writing to it blocks nobody any more. The terminal or pipe is opened anew for
// that, since a flag on the descriptor would be felt by whoever else holds it.
void keep_from_blocking(int descriptor)
{
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !(S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode))) {
        return;
    }
    const std::string path = fmt::format("/proc/self/fd/{}", descriptor);
    const Descriptor own(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (own.get() >= 0) {
        dup2(own.get(), descriptor);
    }
}

// As much as is taken without waiting; -1 for nothing, errno tells why.
ssize_t write_some(int descriptor, std::string_view bytes)
{
    const ssize_t sent = send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0 || errno != ENOTSOCK) {
        return sent;
    }
    pollfd room{descriptor, POLLOUT, 0};
    if (poll(&room, 1, 0) == 0) {
        errno = EAGAIN;
        return -1;
    }
    return write(descriptor, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
}

} // namespace

Console::Console(Loop& loop, int descriptor) : loop_(loop), descriptor_(descriptor)
{
    keep_from_blocking(descriptor);
}

void Console::flush()
{
    while (!pending_.empty() && !gone_) {
        const ssize_t written = write_some(descriptor_, pending_);
        if (written > 0) {
            pending_.erase(0, static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            gone_ = errno != EAGAIN;
            break;
        }
    }
    if (gone_) {
        pending_.clear();
    }
}

// Full once, it takes nothing until there is room for a good deal.
void Console::say_lost()
{
    full_ = full_ && pending_.size() > most_pending / 2;
    if (!full_ && lost_ > told_) {
        pending_ +=
            fmt::format("vorsim: {} lost here: nobody read what was written\n", vor::counted(lost_ - told_, "line"));
        told_ = lost_;
    }
}

void Console::on_writable()
{
    flush();
    say_lost();
    if (pending_.empty() && waits_) {
        waits_ = false;
        loop_.forget(descriptor_);
    }
}

void Console::line(std::string_view text)
{
    if (gone_) {
        return;
    }
    say_lost();
    full_ = full_ || pending_.size() + text.size() > most_pending;
    if (full_) {
        ++lost_;
        return;
    }
    pending_ += text;
    pending_ += '\n';
    if (!waits_) {
        flush();
    }
    if (!pending_.empty() && !waits_) {
        waits_ = true;
        loop_.watch_writing(descriptor_, [this] { on_writable(); });
    }
}

void Console::count_lost(std::uint64_t lines)
{
    lost_ += lines;
}

} // namespace vorsim
