#include "text/json_lines.hpp"

#include <algorithm>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vor {

namespace {

struct stat status_of(int descriptor)
{
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? status : throw FileError(errno);
}

} // namespace

// Does not wait for anything but a file.
JsonLines::JsonLines(const std::string& path, int flags) : JsonLines(nullptr)
{
    const int opened = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0600);
    if (opened < 0) {
        throw errno == ELOOP && (flags & O_NOFOLLOW) != 0 ? FileError("it is a symbolic link") : FileError(errno);
    }
    file_.reset(fdopen(opened, "r"));
    if (!S_ISREG(status_of(opened).st_mode)) {
        throw FileError("it is not a regular file");
    }
}

bool JsonLines::empty() const
{
    struct stat status {};
    return fstat(descriptor(), &status) == 0 && status.st_size == 0;
}

std::optional<std::string> JsonLines::next()
{
    if (!left_) {
        const struct stat status = status_of(descriptor());
        const bool has_size = S_ISREG(status.st_mode); // a pipe has an end of its own
        left_ = has_size ? static_cast<std::uintmax_t>(status.st_size) : std::numeric_limits<std::uintmax_t>::max();
    }
    if (left_ == 0) {
        return {};
    }
    std::string line;
    for (int byte = 0; byte != '\n' && (byte = getc_unlocked(file_.get())) != EOF;) {
        if (line.size() == longest_json_line) {
            throw FileError(fmt::format("line {} has more than {} MiB", number_ + 1, longest_json_line >> 20));
        }
        line += static_cast<char>(byte);
    }
    if (std::ferror(file_.get()) != 0) {
        throw FileError(errno);
    }
    if (line.empty()) {
        return {};
    }
    *left_ -= std::min<std::uintmax_t>(*left_, line.size());
    begin_ = end_;
    end_ += line.size();
    ++number_;
    torn_ = line.back() != '\n';
    if (!torn_) {
        line.pop_back();
    }
    return line;
}

void JsonLines::take_away()
{
    if (ftruncate(descriptor(), static_cast<off_t>(begin_)) != 0) {
        throw FileError(errno);
    }
}

void JsonLines::append(std::string_view line, bool on_disk)
{
    const std::string text = fmt::format("{}\n", line);
    const off_t end = lseek(descriptor(), 0, SEEK_END);
    if (!write_all(descriptor(), text) || (on_disk && fdatasync(descriptor()) != 0)) {
        const int error = errno;
        [[maybe_unused]] const int whole = ftruncate(descriptor(), end); // no part of a line stays
        throw FileError(error);
    }
}

} // namespace vor
