#include "text/file.hpp"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vor {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Whether a process writes to the pipe, or has: opening it without waiting does not tell. Nobody can open one that has
// no name later.
bool has_writer(std::FILE* pipe)
{
    struct statfs system {};
    if (fstatfs(fileno(pipe), &system) == 0 && system.f_type == PIPEFS_MAGIC) {
        return true;
    }
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 2s;
    char byte = 0;
    ssize_t got = 0;
    while ((got = read(fileno(pipe), &byte, 1)) == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(10ms);
    }
    if (got == 1) {
        std::ungetc(static_cast<unsigned char>(byte), pipe);
    }
    return got == 1 || (got < 0 && errno == EAGAIN);
}

// Opening does not wait, reading and writing do.
void wait_for(int opened)
{
    fcntl(opened, F_SETFL, fcntl(opened, F_GETFL) & ~O_NONBLOCK);
}

} // namespace

std::string reason_of(int error)
{
    rlimit limit{};
    if (error == EFBIG && getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
        return fmt::format("{} (ulimit -f allows {} bytes)", std::strerror(error), limit.rlim_cur);
    }
    return std::strerror(error);
}

std::FILE* open_to_read(const std::string& path)
{
    const int opened = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    File file(opened >= 0 ? fdopen(opened, "r") : nullptr, std::fclose);
    struct stat status {};
    if (file == nullptr || fstat(opened, &status) != 0) {
        throw FileError(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        throw FileError(EISDIR);
    }
    if (S_ISFIFO(status.st_mode) && !has_writer(file.get())) {
        throw FileError("it is a pipe that no process writes to");
    }
    wait_for(opened);
    return file.release();
}

std::string content_of(std::FILE* file, const Bounds& bounds)
{
    const File closed(file, std::fclose);
    std::string content;
    char bytes[4096];
    std::size_t got = 0;
    std::size_t number = 1;
    std::size_t line = 0; // bytes read of it
    while ((got = std::fread(bytes, 1, sizeof bytes, file)) != 0) {
        for (const char byte : std::string_view{bytes, got}) {
            line = byte == '\n' ? 0 : line + 1;
            if (line > bounds.line) {
                throw FileError(fmt::format("line {} has more than {} bytes", number, bounds.line));
            }
            number += byte == '\n' ? 1 : 0;
        }
        content.append(bytes, got);
        if (content.size() > bounds.file) {
            throw FileError(fmt::format("it is larger than {} MiB", bounds.file >> 20));
        }
    }
    return std::ferror(file) == 0 ? content : throw FileError(errno);
}

std::string content_of(const std::string& path, const Bounds& bounds)
{
    return content_of(open_to_read(path), bounds);
}

bool write_all(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
    return true;
}

void replace_file(const std::string& path, std::string_view text, unsigned mode)
{
    struct stat status {};
    const bool in_place = stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
    std::string written = path + (in_place ? "" : ".XXXXXX");
    const int file = in_place ? open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)
                              : mkostemp(written.data(), O_CLOEXEC);
    if (file < 0) {
        throw FileError(errno);
    }
    wait_for(file);
    const bool whole = write_all(file, text) && (in_place || fchmod(file, static_cast<mode_t>(mode)) == 0);
    int error = whole ? 0 : errno;
    close(file);
    if (error == 0 && !in_place && std::rename(written.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0 && !in_place) {
        unlink(written.c_str());
    }
    if (error != 0) {
        throw FileError(error);
    }
}

void ignore_size_signal()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace vor
