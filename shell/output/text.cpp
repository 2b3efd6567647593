#include <algorithm>

#include <fmt/core.h>

#include "call/call_key.hpp"
#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg::output {

namespace {

std::string place_of(const call::PreparedCall& call)
{
    const input::Place& at = call.place;
    return at.file.empty() ? "" : fmt::format("{}:{}: ", vor::printable(at.file), at.line);
}

// Besides the verdict.
std::vector<std::string> notes_of(const call::PreparedCall& call, const call::CallResult& result)
{
    std::vector<std::string> notes;
    for (const std::string& line : result.library) {
        notes.push_back("library: " + line);
    }
    for (const call::Message& message : result.seen.messages) {
        if (result.verdict.outcome == call::Outcome::dry_run) {
            notes.push_back("would send: " + call::described(message, *call.row, call.values));
        } else if (call.row->read != nullptr) { // its command is not obvious
            notes.push_back("command: " + vor::printable(call::without_secrets(message.command, call.values)));
        }
    }
    return notes;
}

std::string fields_text(const call::CallResult& result, std::string_view indentation)
{
    std::string text;
    if (result.verdict.outcome != call::Outcome::dry_run) {
        for (const rows::Field& field : result.back.fields) {
            text += fmt::format("{}{} {}\n", indentation, field.name, field.text);
        }
    }
    return text;
}

vor::Color color_of(call::Outcome outcome)
{
    if (call::exit_of(outcome) == input::exit_ok) {
        return outcome == call::Outcome::accepted ? vor::Color::green : vor::Color::plain;
    }
    return outcome == call::Outcome::unknown || outcome == call::Outcome::unread ? vor::Color::yellow : vor::Color::red;
}

} // namespace

std::string text_of(const call::PreparedCall& call, const call::CallResult& result, const vor::Screen& screen)
{
    const std::string place = place_of(call);
    std::string text;
    for (const std::string& note : notes_of(call, result)) {
        text += fmt::format("{}{}\n", place, note);
    }
    return text + fmt::format("{}{}: {}\n{}", place, call::name_of(call),
                              screen.painted(result.verdict.text, color_of(result.verdict.outcome)),
                              fields_text(result, "  "));
}

vor::Cells cells_of(std::size_t line, const call::Verdict& verdict, const std::string& name)
{
    const vor::Color color = color_of(verdict.outcome);
    std::string outcome(call::name_of(verdict.outcome));
    if (color == vor::Color::red) {
        std::ranges::transform(outcome, outcome.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; });
    }
    return {{fmt::format("{:>5}", line)},
            {std::move(outcome), color},
            {name},
            {std::string(call::detail_of(verdict)), vor::Color::dim}};
}

std::string row_of(const call::PreparedCall& call, const call::CallResult& result, const vor::Table& table)
{
    constexpr std::string_view indentation = "      ";
    vor::Cells cells = cells_of(call.place.line, result.verdict, call::name_of(call));
    std::vector<std::string> notes = notes_of(call, result);
    if (result.verdict.outcome == call::Outcome::dry_run) { // which is about the messages
        cells.back() = {vor::joined(std::exchange(notes, {}), "; ")};
    }
    std::string text = table.text_of(cells);
    for (const std::string& note : notes) {
        text += vor::paragraph(note, table.screen(), indentation);
    }
    return text + fields_text(result, indentation);
}

// In a file it is one line that begins with its place, as compilers write it.
std::string text_of(const input::InputError& error)
{
    if (!error.place.file.empty()) {
        const std::string from = place_text(error.from);
        return vor::printable(fmt::format("{}: {}{}", place_text(error.place), error.text,
                                          from.empty() ? "" : fmt::format(" ({})", from))) +
               '\n';
    }
    const bool named = !error.call.empty() && error.excerpt.empty(); // an excerpt shows the call
    const std::string call = named ? error.call + ": " : "";
    return vor::printable(fmt::format("vorcfg: {}{}", call, error.text)) + '\n' + error.excerpt;
}

void Counts::add(std::string_view what, std::size_t number)
{
    const auto found = std::ranges::find(counts_, what, &std::pair<std::string, std::size_t>::first);
    if (found != counts_.end()) {
        found->second += number;
    } else if (number != 0) {
        counts_.emplace_back(what, number);
    }
}

std::string Counts::text(std::string_view none) const
{
    std::string text;
    for (const auto& [what, number] : counts_) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", number, what);
    }
    return text.empty() ? std::string(none) : text;
}

Counts counts_of(const call::Tally& tally, std::size_t left)
{
    Counts counts;
    for (std::size_t i = 0; i < call::outcome_count; i++) {
        const auto outcome = static_cast<call::Outcome>(i);
        counts.add(call::total_of(outcome), tally.successes(outcome) + tally.failures(outcome));
    }
    counts.add("not made", left);
    return counts;
}

std::string end_of_run(const std::string& file, std::string_view title, bool stopped,
                       const std::vector<std::size_t>& failed_lines, const vor::Screen& screen)
{
    const std::string where = failed_lines.empty() ? "" : " at " + lines_text(failed_lines);
    if (!stopped && where.empty()) {
        return screen.is_terminal ? std::string(title) : vor::printable(file);
    }
    return screen.is_terminal ? fmt::format("{}{}", stopped ? "Stopped" : "Failed", where)
                              : fmt::format("{}: {}{}", vor::printable(file), stopped ? "stopped" : "failed", where);
}

std::string text_of(const call::Tally& tally, const std::string& name, std::size_t left, const input::Options& options)
{
    const bool stopped = left != 0 || (!options.keep_going && !tally.failed.empty());
    const vor::Screen screen = screen_of(options);
    return vor::paragraph(fmt::format("{}: {}", end_of_run(name, "Batch", stopped, tally.failed_lines(), screen),
                                      counts_of(tally, left).text()),
                          screen);
}

std::string lines_text(const std::vector<std::size_t>& lines)
{
    std::vector<std::string> ranges;
    for (std::size_t i = 0; i < lines.size(); i++) {
        std::size_t last = i;
        while (last + 1 < lines.size() && lines[last + 1] == lines[last] + 1) {
            last++;
        }
        const bool is_range = last > i + 1;
        ranges.push_back(is_range ? fmt::format("{}-{}", lines[i], lines[last]) : std::to_string(lines[i]));
        i = is_range ? last : i;
    }
    const std::string last = ranges.empty() ? "" : ranges.back();
    ranges.resize(std::max<std::size_t>(ranges.size(), 1) - 1);
    return fmt::format("{} {}{}{}", lines.size() == 1 ? "line" : "lines", vor::joined(ranges, ", "),
                       ranges.empty() ? "" : " and ", last);
}

} // namespace vorcfg::output
