#include "capture.hpp"

#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

namespace vorcfg {

// A file in memory takes any amount, where a pipe that nobody reads would
// block. Without one the lines go where they always went.
Capture::Capture(int wanted) : descriptor(wanted)
{
    std::fflush(nullptr);
    file = memfd_create("vorcfg", MFD_CLOEXEC);
    before = file >= 0 ? dup(descriptor) : -1;
    if (before >= 0) {
        dup2(file, descriptor);
    }
}

Capture::~Capture()
{
    restore();
    if (file >= 0) {
        close(file);
    }
}

void Capture::restore()
{
    if (before >= 0) {
        std::fflush(nullptr);
        dup2(before, descriptor);
        close(before);
        before = -1;
    }
}

std::string Capture::take()
{
    restore();
    std::string text;
    char block[4096];
    off_t at = 0;
    ssize_t got;
    while (file >= 0 && (got = pread(file, block, sizeof block, at)) > 0) {
        text.append(block, std::size_t(got));
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
