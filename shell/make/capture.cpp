#include "make/capture.hpp"

#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

namespace vorcfg {

// A file in memory takes any amount, where a pipe that nobody reads would
// block. Without one the lines go where they always went.
Capture* Capture::begun_[3];

Capture::Capture(int wanted) : descriptor_(wanted)
{
    begun_[descriptor_] = this;
    std::fflush(nullptr);
    file_ = memfd_create("vorcfg", MFD_CLOEXEC);
    before_ = file_ >= 0 ? dup(descriptor_) : -1;
    if (before_ >= 0) {
        dup2(file_, descriptor_);
    }
}

Capture::~Capture()
{
    restore();
    begun_[descriptor_] = nullptr;
    if (file_ >= 0) {
        close(file_);
    }
}

void Capture::restore()
{
    if (before_ >= 0) {
        std::fflush(nullptr);
        dup2(before_, descriptor_);
        close(before_);
        before_ = -1;
    }
}

void Capture::end_all()
{
    for (Capture* const capture : begun_) {
        if (capture != nullptr) {
            dup2(capture->before_, capture->descriptor_);
        }
    }
}

std::string Capture::take()
{
    restore();
    std::string text;
    char block[4096];
    off_t at = 0;
    ssize_t got;
    while (file_ >= 0 && (got = pread(file_, block, sizeof block, at)) > 0) {
        text.append(block, static_cast<std::size_t>(got));
        at += got;
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
