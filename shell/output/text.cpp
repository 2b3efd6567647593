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

// Of a line of a batch: its place, as compilers write it.
std::string text_of(const InputError& complaint)
{
    std::string text;
    if (!complaint.place.file.empty()) {
        text = fmt::format("{}:{}:{}: ", complaint.place.file, complaint.place.line, complaint.place.column);
    } else {
        text = complaint.call.empty() ? "vorcfg: " : fmt::format("vorcfg: {}: ", complaint.call);
    }
    if (!complaint.argument.empty()) {
        text += fmt::format("{}: ", complaint.argument);
    }
    return vor::printable(text + complaint.text) + '\n';
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
