#include "text/json_lines.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
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

FileError::FileError(int why) : std::runtime_error(why == 0 ? "not a regular file" : std::strerror(why)), error(why) {}

// Does not wait for anything but a file.
JsonLines::JsonLines(const std::string& path, int flags) : JsonLines(nullptr)
{
    const int opened = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0600);
    if (opened < 0) {
        throw FileError(errno);
    }
    file_.reset(fdopen(opened, "r"));
    if (!S_ISREG(status_of(opened).st_mode)) {
        throw FileError(0);
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
    char* bytes = nullptr;
    std::size_t room = 0;
    const ssize_t size = getline(&bytes, &room, file_.get());
    const std::unique_ptr<char, void (*)(void*)> freed(bytes, std::free);
    if (size < 0 && std::ferror(file_.get()) != 0) {
        throw FileError(errno);
    }
    if (size <= 0) {
        return {};
    }
    std::string line(bytes, static_cast<std::size_t>(size));
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
    const ssize_t written = write(descriptor(), text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size()) || (on_disk && fdatasync(descriptor()) != 0)) {
        const int error = written >= 0 && written < static_cast<ssize_t>(text.size()) ? ENOSPC : errno;
        [[maybe_unused]] const int whole = ftruncate(descriptor(), end); // no part of a line stays
        throw FileError(error);
    }
}

} // namespace vor
