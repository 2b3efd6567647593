#include <fmt/core.h>

#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg {

std::string text_of(const PreparedCall& planned, const CallResult& report)
{
    const bool dry = report.verdict.outcome == Outcome::dry_run;
    const Place& at = planned.place;
    const std::string place = at.file.empty() ? "" : fmt::format("{}:{}: ", vor::printable(at.file), at.line);
    std::string text;
    for (const std::string& line : report.library) {
        text += fmt::format("{}library: {}\n", place, line);
    }
    for (const Message& message : report.seen.messages) {
        if (dry) {
            text += fmt::format("{}would send: {}\n", place, described(message, *planned.row, planned.values));
        } else if (planned.row->read != nullptr) { // nobody knows its command by heart
            text +=
                fmt::format("{}command: {}\n", place, vor::printable(without_secrets(message.command, planned.values)));
        }
    }
    text += fmt::format("{}{}: {}\n", place, planned.row->full_name(), report.verdict.text);
    if (!dry) {
        for (const Field& field : report.back.fields) {
            text += fmt::format("  {} {}\n", field.name, field.text);
        }
    }
    return text;
}

// In a file it is one line that begins with its place, as compilers write it.
std::string text_of(const InputError& complaint)
{
    if (!complaint.place.file.empty()) {
        return vor::printable(fmt::format("{}:{}:{}: {}", complaint.place.file, complaint.place.line,
                                          complaint.place.column, complaint.text)) +
               '\n';
    }
    const bool named = !complaint.call.empty() && complaint.excerpt.empty(); // which shows the call
    const std::string call = named ? complaint.call + ": " : "";
    return vor::printable(fmt::format("vorcfg: {}{}", call, complaint.text)) + '\n' + complaint.excerpt;
}

std::string text_of(const Tally& tally, const std::string& name, std::size_t left)
{
    std::string text = fmt::format("{}: {} accepted, {} sent", vor::printable(name), tally.accepted, tally.sent);
    if (tally.unread != 0) {
        text += fmt::format(", {} delivered with their verdict unread", tally.unread);
    }
    if (tally.dry != 0) {
        text += fmt::format(", {} shown only (dry run)", tally.dry);
    }
    if (tally.other != 0) {
        text += fmt::format(", {} done here", tally.other);
    }
    text += fmt::format(", {} failed", tally.failed.size());
    if (!tally.failed.empty()) {
        text += tally.failed.size() == 1 ? " at line" : " at lines";
    }
    for (const std::size_t line : tally.failed) {
        text += fmt::format(" {}", line);
    }
    return text + (left != 0 ? fmt::format(", {} not made\n", left) : "\n");
}

} // namespace vorcfg
