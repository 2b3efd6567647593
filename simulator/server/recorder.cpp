#include "server/recorder.hpp"

#include <array>
#include <chrono>
#include <ctime>

#include <unistd.h>

#include <fmt/core.h>

#include "record/json.hpp"

namespace vorsim::server {
namespace {

// "2024-05-01T12:00:00.123456Z"
std::string time_text(sockets::Arrival time)
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

Recorder::Recorder(sockets::Loop& loop, Control& control, const record::Counters& counters,
                   const record::LineStyle& style)
    : control_(control), counters_(counters), errors_(loop, STDERR_FILENO), out_(loop, STDOUT_FILENO, &errors_),
      style_(style)
{
}

void Recorder::begin_journal(std::uint64_t seed, bool show_secrets)
{
    journal_.write(record::journal_head(time_text(std::chrono::system_clock::now()), seed, show_secrets));
}

void Recorder::record(values::Record& record, sockets::Arrival arrived)
{
    failed_ = failed_ || !counters_.all_valid();
    record.seq = ++recorded_;
    record.line = record::line_of(record);
    if (keeps_bytes() || style_.screen.is_terminal) {
        record.time = time_text(arrived);
    }
    const bool is_message = record.kind == values::Record::Kind::message || record.kind == values::Record::Kind::konfd;
    if (is_message || !record.via.empty()) {
        out_.line(record::shown(record, style_)); // the platform has already reported the others, on standard error
    }
    if (keeps_bytes()) {
        const auto took = std::chrono::system_clock::now() - arrived;
        record.took = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
        const std::string line = record::json_line(record);
        const bool failed = journal_.failed();
        journal_.write(line);
        if (journal_.failed() && !failed) {
            errors_.line(journal_.why());
        }
        control_.publish(record, line);
    }
    control_.note(record.call, record.object);
}

} // namespace vorsim::server
