#include "journal.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

namespace vorsim {
namespace {

/* "2024-05-01T12:00:00.123Z" */
std::string now_text()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%03dZ", static_cast<int>(now.tv_nsec / 1000000));
    return text.data();
}

} // namespace

std::string dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Journal::Journal(const std::string& path)
    : path_(path), file_(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600))
{
    if (file_.get() < 0) {
        throw std::runtime_error("cannot write the journal " + path + ": " + std::strerror(errno));
    }
}

void Journal::write(const Json& record)
{
    if (file_.get() < 0 || failed_) {
        return;
    }
    Json entry = {{"seq", ++written_}, {"time", now_text()}};
    entry.update(record);
    const std::string line = dump(entry) + "\n";
    if (::write(file_.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        failed_ = true;
        std::fprintf(stderr, "vorsim: cannot write the journal %s: %s\n", path_.c_str(), std::strerror(errno));
    }
}

} // namespace vorsim
