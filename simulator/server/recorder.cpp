#include "server/recorder.hpp"

#include <array>
#include <chrono>
#include <ctime>

#include <unistd.h>

#include <fmt/core.h>

#include "record/json.hpp"

namespace vorsim {
namespace {

// "2024-05-01T12:00:00.123456Z"
std::string time_text(Arrival time)
{
    const auto since = std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
    const auto whole = static_cast<std::time_t>(seconds.count());
    tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    return fmt::format("{}.{:06}Z", text.data(), (since - seconds).count());
}

} // namespace

Recorder::Recorder(Loop& loop, Control& control, const Counters& counters)
    : control_(control), counters_(counters), out_(loop, STDOUT_FILENO), errors_(loop, STDERR_FILENO)
{
}

void Recorder::begin_journal(std::uint64_t seed, bool show_secrets)
{
    journal_.write(journal_head(time_text(std::chrono::system_clock::now()), seed, show_secrets));
}

void Recorder::write_down(Record& record, Arrival arrived)
{
    blamed_ = blamed_ || !counters_.blameless();
    record.seq = ++recorded_;
    if (bytes_wanted()) {
        const auto took = std::chrono::system_clock::now() - arrived;
        record.time = time_text(arrived);
        record.took = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
        const std::string line = json_line(record);
        const bool failed = journal_.failed();
        journal_.write(line);
        if (journal_.failed() && !failed) {
            errors_.line(journal_.why());
        }
        control_.publish(record, line);
    }
    control_.note(record.call, record.object);
}

} // namespace vorsim
