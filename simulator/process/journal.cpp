#include "process/journal.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <fmt/format.h>

#include "text/text.hpp"

namespace vorsim {
namespace {

// "2024-05-01T12:00:00.123Z"
std::string now_text()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    std::array<char, 32> seconds{};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    return fmt::format("{}.{:03}Z", seconds.data(), now.tv_nsec / 1'000'000);
}

} // namespace

Journal::Journal(const std::string& path) : path_(path), file_(open_own(path))
{
    if (file_.get() < 0) {
        throw std::runtime_error(fmt::format("cannot write the journal {}: {}", path, std::strerror(errno)));
    }
}

void Journal::write(const Json& record)
{
    if (file_.get() < 0 || failed_) {
        return;
    }
    Json entry = {{"seq", ++written_}, {"time", now_text()}};
    entry.update(record);
    if (!write_all(file_.get(), vor::dump(entry) + "\n")) {
        failed_ = true;
        vor::print_line(stderr, fmt::format("vorsim: cannot write the journal {}: {}", path_, std::strerror(errno)));
    }
}

} // namespace vorsim
