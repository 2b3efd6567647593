#include "server/recorder.hpp"

#include <array>
#include <chrono>
#include <ctime>
#include <string_view>
#include <utility>

#include <unistd.h>

#include <fmt/core.h>

#include "record/json.hpp"

namespace vorsim::server {
namespace {

constexpr std::size_t most_remembered = 10'000;
constexpr std::size_t most_bytes_remembered = std::size_t{16} << 20;
constexpr std::size_t bytes_of_an_element = 64;

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

Recorder::Recorder(sockets::Loop& loop, Control& control, const record::LineStyle& style)
    : control_(control), errors_(loop, STDERR_FILENO), out_(loop, STDOUT_FILENO, &errors_), style_(style)
{
}

void Recorder::begin_journal(std::uint64_t seed, bool show_secrets)
{
    journal_.write(record::journal_head(time_text(std::chrono::system_clock::now()), seed, show_secrets));
}

void Recorder::record(values::Record& record, sockets::Arrival arrived)
{
    record.seq = ++recorded_;
    record.line = record::line_of(record);
    note_complaint(record);
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
    control_.note(record);
    remember(record, arrived);
}

void Recorder::note_complaint(const values::Record& record)
{
    constexpr std::size_t most_shown = 5;
    const bool served = record.kind == values::Record::Kind::message || record.kind == values::Record::Kind::konfd;
    if (served && !record.complained) {
        return;
    }
    const bool invalid = record.kind == values::Record::Kind::message && !record.via.empty();
    ++complained_of_[invalid ? complained_of_.size() - 1 : static_cast<std::size_t>(record.kind)];
    if (complaints_.size() < most_shown) {
        complaints_.push_back({record.seq, record.line});
    }
}

std::string Recorder::complaints() const
{
    constexpr std::string_view kinds[] = {"refused", "refused by konfd", "malformed", "foreign", "invalid"};
    std::string counts;
    std::uint64_t more = 0;
    for (std::size_t kind = 0; kind < complained_of_.size(); ++kind) {
        if (complained_of_[kind] > 0) {
            counts += fmt::format("{}{} {}", counts.empty() ? "" : ", ", complained_of_[kind], kinds[kind]);
            more += complained_of_[kind];
        }
    }
    if (complaints_.empty()) {
        return {};
    }
    std::string text = fmt::format("vorsim: --strict: {}", counts);
    for (const Complaint& complaint : complaints_) {
        text += fmt::format("\n  message {}: {}", complaint.seq, complaint.line);
    }
    more -= complaints_.size();
    return text + (more > 0 ? fmt::format("\n  and {} more", more) : "");
}

void Recorder::remember(values::Record& record, sockets::Arrival arrived)
{
    record.meta_data = record.payload = record.answer_payload = record.text = record.answer_text = record.datagram =
        std::nullopt;
    std::size_t size = record.line.size() + record.commands.size() + record.complaint.size() + record.object.size();
    for (auto* const values : {&record.values, &record.answer_values}) {
        for (values::Value& value : *values) {
            value.text = {};
            const auto* const text = value.held<std::string>();
            const auto* const list = std::get_if<values::List>(&value.data);
            size += text != nullptr ? text->size() : 0;
            size += list != nullptr ? list->size() * bytes_of_an_element : 0;
        }
    }
    remembered_size_ += size;
    remembered_.push_back({std::move(record), arrived, size});
    while (remembered_.size() > most_remembered || remembered_size_ > most_bytes_remembered) {
        remembered_size_ -= remembered_.front().size;
        remembered_.pop_front();
    }
}

void Recorder::forget()
{
    remembered_.clear();
    remembered_size_ = 0;
    first_ = recorded_ + 1;
}

std::string Recorder::Remembered::json() const
{
    values::Record timed = record;
    timed.time = time_text(arrived);
    return record::json_line(timed, record::Extent::without_bytes);
}

} // namespace vorsim::server
