#include "server/journal.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vorsim {
namespace {

constexpr off_t longest_line = 1 << 23;

// A line that a killed process left unfinished is taken away, not added to.
void remove_torn_line(int file, off_t size)
{
    char byte = '\n';
    char first = 0;
    off_t begin = size;
    while (begin > 0 && size - begin < longest_line && pread(file, &byte, 1, begin - 1) == 1 && byte != '\n') {
        first = byte;
        --begin;
    }
    if (begin == size) {
        return;
    }
    if (first != '{') {
        throw std::runtime_error("it is no journal");
    }
    if (ftruncate(file, begin) != 0) {
        throw std::runtime_error(std::strerror(errno));
    }
}

// As one of this version or of the first does, as far as that was written.
bool begins_as_a_journal(int file)
{
    char bytes[10] = {};
    const ssize_t size = pread(file, bytes, sizeof bytes, 0);
    const std::string_view begin(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const auto agree = [&](std::string_view known) {
        return known.substr(0, begin.size()) == begin.substr(0, known.size());
    };
    return size >= 0 && (agree("{\"journal\":") || agree("{\"seq\":"));
}

void take_over(int file)
{
    struct stat status {};
    if (fstat(file, &status) != 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw std::runtime_error("it is no file");
    }
    if (status.st_uid != geteuid()) {
        throw std::runtime_error(fmt::format("it belongs to user {}", status.st_uid));
    }
    if (status.st_nlink != 1) {
        throw std::runtime_error("it has a second name");
    }
    if (!begins_as_a_journal(file)) {
        throw std::runtime_error("it is no journal");
    }
    if (fchmod(file, 0600) != 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    remove_torn_line(file, status.st_size);
}

} // namespace

Journal::Journal(const std::string& path) : path_(path)
{
    constexpr int flags = O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    file_ = Descriptor(open(path.c_str(), flags));
    if (file_.get() < 0 && errno == ENOENT) {
        file_ = Descriptor(open(path.c_str(), flags | O_CREAT | O_EXCL, 0600));
        made_ = file_.get() >= 0;
    }
    if (file_.get() < 0) {
        throw std::runtime_error(fmt::format("cannot write the journal {}: {}", path,
                                             errno == ELOOP ? "it is a link" : std::strerror(errno)));
    }
    try {
        take_over(file_.get());
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("cannot write the journal {}: {}", path, error.what()));
    }
    std::signal(SIGXFSZ, SIG_IGN); // a limit is told by the write
}

Journal::~Journal()
{
    struct stat status {};
    if (made_ && file_.get() >= 0 && fstat(file_.get(), &status) == 0 && status.st_size == 0) {
        unlink(path_.c_str());
    }
}

void Journal::write(const std::string& line)
{
    if (!kept()) {
        return;
    }
    const std::string ended = line + "\n";
    const off_t end = lseek(file_.get(), 0, SEEK_END);
    const ssize_t written = ::write(file_.get(), ended.data(), ended.size());
    if (written != static_cast<ssize_t>(ended.size())) {
        const int error = written < 0 ? errno : ENOSPC;
        [[maybe_unused]] const int whole = ftruncate(file_.get(), end); // no part of a line stays
        why_ = fmt::format("vorsim: cannot write the journal {}: {}", path_, std::strerror(error));
    }
}

} // namespace vorsim
