#include "sockets/console.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include "text/file.hpp"
#include "text/text.hpp"

namespace vorsim::sockets {
namespace {

constexpr std::size_t most_pending = 1 << 16;

} // namespace

// Reopens a terminal or pipe without blocking, since a flag on the descriptor would affect whoever shares it.
Console::Kind Console::keep_from_blocking(int descriptor)
{
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || S_ISSOCK(status.st_mode)) {
        return S_ISSOCK(status.st_mode) ? Kind::socket : Kind::asked_first;
    }
    if (!S_ISFIFO(status.st_mode) && !S_ISCHR(status.st_mode)) {
        return Kind::file;
    }
    const std::string path = fmt::format("/proc/self/fd/{}", descriptor);
    const Descriptor own(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return own.get() >= 0 && dup2(own.get(), descriptor) == descriptor ? Kind::file : Kind::asked_first;
}

// Writes as much as is possible without waiting; -1 with errno if nothing was.
ssize_t Console::write_some(std::string_view bytes) const
{
    if (kind_ == Kind::socket) {
        return send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    pollfd room{descriptor_, POLLOUT, 0};
    if (kind_ == Kind::asked_first && poll(&room, 1, 0) == 0) {
        errno = EAGAIN;
        return -1;
    }
    return write(descriptor_, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
}

Console::Console(Loop& loop, int descriptor, Console* errors)
    : loop_(loop), descriptor_(descriptor), kind_(keep_from_blocking(descriptor)), errors_(errors)
{
}

void Console::flush()
{
    while (!pending_.empty() && !gone_) {
        const ssize_t written = write_some(pending_);
        if (written > 0) {
            pending_.erase(0, static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            gone_ = errno != EAGAIN;
            if (gone_ && errno != EPIPE && errors_ != nullptr) {
                errors_->line(
                    fmt::format("vorsim: standard output: {}; no more lines are printed", vor::reason_of(errno)));
            }
            break;
        }
    }
    if (gone_) {
        dropped_ += static_cast<std::uint64_t>(std::ranges::count(pending_, '\n'));
        pending_.clear();
    }
}

// Once full, it accepts nothing until half of it is free.
void Console::report_dropped()
{
    full_ = full_ && pending_.size() > most_pending / 2;
    if (!full_ && dropped_ > reported_) {
        pending_ += fmt::format("vorsim: {} dropped: output not read\n", vor::counted(dropped_ - reported_, "line"));
        reported_ = dropped_;
    }
}

void Console::on_writable()
{
    flush();
    report_dropped();
    if (pending_.empty() && waits_) {
        waits_ = false;
        loop_.forget(descriptor_);
    }
}

void Console::line(std::string_view text)
{
    if (gone_) {
        ++dropped_;
        return;
    }
    report_dropped();
    full_ = full_ || pending_.size() + text.size() > most_pending;
    if (full_) {
        ++dropped_;
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

} // namespace vorsim::sockets
