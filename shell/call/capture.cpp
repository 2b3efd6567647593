#include "call/capture.hpp"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

namespace vorcfg {

namespace {

// Of the captures under way. Who ends them all keeps it: then nobody begins or ends another.
std::mutex mutex;
Capture* begun[3]; // of the descriptors up to standard error

// A file in memory takes any amount, where a pipe that nobody reads would
// block. Without one the lines go where they always went. Each descriptor has
// one for good: to make it anew for every line of a long batch would be most of
// what checking it takes.
int file_for(int descriptor)
{
    static int files[3] = {-1, -1, -1};
    if (files[descriptor] < 0) {
        files[descriptor] = memfd_create("vorcfg", MFD_CLOEXEC);
    }
    return files[descriptor];
}

} // namespace

Capture::Capture(int wanted) : descriptor_(wanted), file_(file_for(wanted))
{
    const std::lock_guard lock(mutex);
    begun[descriptor_] = this;
    std::fflush(nullptr);
    before_ = file_ >= 0 ? dup(descriptor_) : -1;
    if (before_ >= 0) {
        dup2(file_, descriptor_);
    }
}

Capture::~Capture()
{
    take();
    const std::lock_guard lock(mutex);
    begun[descriptor_] = nullptr;
}

void Capture::end_all()
{
    mutex.lock();
    std::fflush(nullptr); // what was captured stays where it is: nobody looks for secrets in it any more
    for (const Capture* const capture : begun) {
        if (capture != nullptr && capture->before_ >= 0) {
            dup2(capture->before_, capture->descriptor_);
        }
    }
}

std::string Capture::take()
{
    const std::lock_guard lock(mutex);
    if (before_ >= 0) {
        std::fflush(nullptr);
        dup2(before_, descriptor_);
        close(before_);
        before_ = -1;
    }
    const off_t size = file_ >= 0 ? lseek(file_, 0, SEEK_CUR) : 0;
    std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
    if (!text.empty()) {
        const ssize_t got = pread(file_, text.data(), text.size(), 0);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        (void)!ftruncate(file_, 0);
        lseek(file_, 0, SEEK_SET);
    }
    return text;
}

std::vector<std::string> lines_of(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

} // namespace vorcfg
