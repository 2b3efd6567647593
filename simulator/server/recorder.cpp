#include "server/recorder.hpp"

#include <chrono>
#include <string_view>

#include <unistd.h>

#include <fmt/core.h>

#include "record/json.hpp"

namespace vorsim::server {

Recorder::Recorder(sockets::Loop& loop, Control& control, Memory& memory, const record::LineStyle& style)
    : control_(control), memory_(memory), errors_(loop, STDERR_FILENO), out_(loop, STDOUT_FILENO, &errors_),
      style_(style)
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
    memory_.add(record, arrived);
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

} // namespace vorsim::server
