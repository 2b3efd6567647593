#include "record/line.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>

#include <fmt/core.h>

#include "gateway/decode.hpp"
#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim::record {
namespace {

using vor::Color;

constexpr std::string_view between = "  ";

std::string verdict_of(const values::Record& record)
{
    const bool konfd = record.kind == values::Record::Kind::konfd;
    if (record.unanswered) {
        return "NO ANSWER";
    }
    if (record.complained) {
        const std::string_view verdict = record.via.empty() ? "REFUSED" : "INVALID";
        return record.awaits && record.status ? fmt::format("{} {}", verdict, *record.status) : std::string(verdict);
    }
    if (konfd && (record.answer == "-o" || record.answer == "-e")) {
        return fmt::format("answer {}", record.answer);
    }
    if (konfd || !record.answer_values.empty()) {
        return "answered";
    }
    return record.status ? fmt::format("status {}", *record.status) : "one-way";
}

std::string text_of(const values::Record& record)
{
    std::string text;
    const auto add = [&text](std::string_view more, std::string_view separator) {
        text += text.empty() || more.empty() ? "" : separator;
        text += more;
    };
    add(record.kind == values::Record::Kind::konfd ? record.commands : record.object, "");
    add(record.complaint, ": ");
    const std::string asked = gateway::values_text(record.values);
    add(asked, ": ");
    add(gateway::values_text(record.answer_values), asked.empty() ? ": " : " ");
    for (const std::string& note : record.notes) {
        add(fmt::format("[{}]", note), between);
    }
    return text;
}

Columns columns_of(const values::Record& record)
{
    switch (record.kind) {
    case values::Record::Kind::konfd:
        return {verdict_of(record), "konfd", fmt::format("client {}", record.client), text_of(record)};
    case values::Record::Kind::malformed:
        return {"MALFORMED", tables::manager_key(record.sap), "-", record.why};
    case values::Record::Kind::foreign:
        return {"FOREIGN", tables::manager_key(record.sap), "-", record.why};
    default:
        return {verdict_of(record), tables::manager_key(record.sap),
                record.call.empty() ? fmt::format("{:#x}", record.id) : record.call, text_of(record)};
    }
}

} // namespace

Columns columns_of(std::string_view line)
{
    std::array<std::string, 3> first;
    std::string_view left = line;
    for (std::string& column : first) {
        const std::size_t end = left.find(between);
        if (end == left.npos) {
            return {{}, {}, {}, std::string(line)};
        }
        column = left.substr(0, end);
        left.remove_prefix(std::min(left.find_first_not_of(' ', end), left.size()));
    }
    return {first[0], first[1], first[2], std::string(left)};
}

std::string local_time(const std::string& utc)
{
    tm parts{};
    const char* const fraction = strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    if (fraction == nullptr) {
        return utc;
    }
    const std::time_t seconds = timegm(&parts);
    localtime_r(&seconds, &parts);
    return fmt::format("{:02}:{:02}:{:02}{:.4}", parts.tm_hour, parts.tm_min, parts.tm_sec, fraction);
}

std::string line_of(const values::Record& record)
{
    const Columns columns = columns_of(record);
    return fmt::format("{:<{}}{}{}{}{}{}{}", columns.verdict, verdict_width, between, columns.manager, between,
                       columns.call, between, columns.text);
}

std::string shown(const values::Record& record, const LineStyle& style, std::optional<std::string> stamp)
{
    const vor::Screen& screen = style.screen;
    if (!stamp && screen.is_terminal) {
        stamp = local_time(record.time);
    }
    const std::string front = stamp ? fmt::format("{}{}", *stamp, between) : "";
    Columns columns = columns_of(record.line);
    if (columns.verdict.empty()) {
        return front + record.line;
    }
    if (style.ids && record.kind != values::Record::Kind::konfd) {
        columns.manager += fmt::format(" {}", record.sap);
        columns.manager += record.kind == values::Record::Kind::message ? fmt::format(" {:#x}", record.id) : "";
    }
    const std::string verdict = fmt::format("{:<{}}{}", columns.verdict, verdict_width, between);
    const std::string call = fmt::format("{}{}", between, columns.call);
    const std::size_t indent = std::min(front.size() + verdict.size(), screen.width / 3);
    const std::size_t begin = front.size() + verdict.size() + columns.manager.size() + call.size() + between.size();
    std::string text = columns.text;
    std::string before_text(between);
    if (screen.width != text.npos && begin + vor::characters_in(text) > screen.width) {
        before_text = '\n' + std::string(indent, ' ');
        text = vor::joined(vor::wrapped(text, screen.width - indent), before_text);
    }
    const std::size_t notes = std::min(text.rfind("["), text.size());
    const bool has_notes = !record.notes.empty() || record.fault;
    const std::size_t end = has_notes ? notes : text.size();
    const bool failed = std::isupper(static_cast<unsigned char>(verdict[0])) != 0;
    const Color normal = record.fault ? Color::yellow : Color::plain;
    return screen.painted(front, Color::dim) + screen.painted(verdict, failed ? Color::red : normal) +
           screen.painted(columns.manager, Color::dim) + call + before_text + text.substr(0, end) +
           screen.painted(std::string_view(text).substr(end), Color::yellow);
}

} // namespace vorsim::record
