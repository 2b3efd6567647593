// The hand-over sheet of a site, from its journal.
#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <fmt/core.h>

#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "site/sheet.hpp"
#include "site/show.hpp"
#include "style_texts.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

SheetLine line_of(const Entry& entry, bool open)
{
    const call::CallKey& key = entry.begun.key;
    return {&entry,
            call::name_of(key).substr(key.row->family->name.size() + 1),
            values_of(key),
            std::string(call::name_of(open ? call::State::unknown : entry.state())),
            minute_of(open || entry.ended.number == 0 ? entry.begun.at : entry.ended.at),
            open};
}

// The calls of a family are in the order of its rows, those of one call in the order of their objects.
bool goes_before(const Entry* one, const Entry* other)
{
    const auto key = [](const Entry* entry) { return std::pair(entry->begun.key.row, &entry->settings); };
    const auto [row, settings] = key(one);
    const auto [other_row, other_settings] = key(other);
    return row != other_row ? std::less<>()(row, other_row) : *settings < *other_settings;
}

} // namespace

Sheet sheet_of(const Journal& journal)
{
    const Ledger& ledger = journal.ledger();
    std::vector<const Entry*> entries = ledger.latest();
    std::ranges::sort(entries, goes_before);
    Sheet sheet;
    sheet.title = ledger.gateway().empty() ? std::filesystem::path(journal.path()).stem().string() : ledger.gateway();
    for (const rows::Family* const family : rows::families()) {
        SheetSection section{family, {}};
        for (const Entry* const each : entries) {
            if (each->begun.key.row->family != family) {
                continue;
            }
            const SheetLine& line = section.lines.emplace_back(line_of(*each, ledger.is_open(*each)));
            const bool is_made = call::is_made(each->state());
            std::size_t& settled_or_failed = is_made ? sheet.settled : sheet.failed;
            (line.open ? sheet.open : settled_or_failed)++;
            sheet.first = sheet.first.empty() ? line.when : std::min(sheet.first, line.when);
            sheet.last = std::max(sheet.last, line.when);
        }
        if (!section.lines.empty()) {
            sheet.sections.push_back(std::move(section));
        }
    }
    sheet.apply = confirmed_apply_of(journal);
    return sheet;
}

std::string counts_of(const Sheet& sheet)
{
    std::string text = vor::counted(sheet.settled, "setting");
    text += sheet.open != 0 ? fmt::format(", {} unknown", sheet.open) : "";
    text += sheet.failed != 0 ? fmt::format(", {} refused or not delivered", sheet.failed) : "";
    return text;
}

namespace {

// While the settings may still be reverted, or what was not when others were.
std::string note_of(const Sheet& sheet)
{
    if (sheet.is_undecided()) {
        return fmt::format("The last apply {}: these settings may still be reverted.",
                           sheet.apply->confirmation == Confirmation::expired ? "was not confirmed in time"
                                                                              : "is not confirmed yet");
    }
    return sheet.apply && sheet.apply->confirmation != Confirmation::confirmed
               ? fmt::format("The last apply: {}.", text_of(*sheet.apply))
               : "";
}

std::string counts_and_times_of(const Sheet& sheet)
{
    const std::string text = counts_of(sheet) + (sheet.first.empty() ? "" : ", " + sheet.first);
    return sheet.first == sheet.last ? text : fmt::format("{} to {}", text, sheet.last);
}

constexpr const char* meaning =
    "Settings sent to the gateway, with their outcomes. Its current values cannot be read back.";

vor::Cells cells_of(const SheetLine& line)
{
    const vor::Color color = line.open || !call::is_made(line.entry->state()) ? vor::Color::yellow : vor::Color::plain;
    return {{" "}, {line.state, color}, {line.name}, {line.when + (line.values.empty() ? "" : ", ") + line.values}};
}

std::string text_of(const Sheet& sheet, const vor::Screen& screen)
{
    vor::Table table(screen);
    for (const SheetSection& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            table.fit(cells_of(line));
        }
    }
    std::string text =
        vor::paragraph(fmt::format("{}: {}", vor::printable(sheet.title), counts_and_times_of(sheet)), screen) +
        vor::paragraph(meaning, screen) + (note_of(sheet).empty() ? "" : vor::paragraph(note_of(sheet), screen));
    for (const SheetSection& section : sheet.sections) {
        text += fmt::format("\n{}: {}\n", section.family->name, rows::about(*section.family));
        for (const SheetLine& line : section.lines) {
            text += table.text_of(cells_of(line));
        }
    }
    return text;
}

} // namespace

std::string html(std::string_view text)
{
    std::string out;
    for (const char c : vor::printable(text)) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string page_of(std::string_view title, std::string_view paragraph, std::string_view body)
{
    return fmt::format("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width\">\n<title>{0}</title>\n"
                       "<style>\n{1}</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p>{2}</p>\n{3}</body>\n</html>\n",
                       html(title), style_texts[0].text, paragraph, body);
}

std::string html_row(bool open, std::string_view name, std::string_view values, std::string_view state,
                     std::string_view when)
{
    return fmt::format("<tr{}><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", open ? " class=\"open\"" : "",
                       html(name), html(values), html(state), html(when));
}

namespace {

std::string html_of(const Sheet& sheet)
{
    std::string body;
    for (const SheetSection& section : sheet.sections) {
        // the family's name within the head, which each page repeats
        body += fmt::format("<table>\n<colgroup><col><col><col><col></colgroup>\n<thead>\n"
                            "<tr><th colspan=\"4\"><h2>{} <span>{}</span></h2></th></tr>\n"
                            "<tr><th>Call and object</th><th>Value</th><th>State</th><th>When</th></tr>\n"
                            "</thead>\n<tbody>\n",
                            section.family->name, html(rows::about(*section.family)));
        for (const SheetLine& line : section.lines) {
            body += html_row(line.open || !call::is_made(line.entry->state()), line.name, line.values, line.state,
                             line.when);
        }
        body += "</tbody>\n</table>\n";
    }
    const std::string note = note_of(sheet).empty() ? "" : fmt::format("<br><b>{}</b>", html(note_of(sheet)));
    return page_of(sheet.title, fmt::format("{}<br>{}{}", html(counts_and_times_of(sheet)), meaning, note),
                   body + "<footer><div>Handed over by, date</div><div>Received by, date</div></footer>\n");
}

std::string json_of(const Sheet& sheet, const Journal& journal, int exit)
{
    Json lines = Json::array();
    for (const SheetSection& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            const CallBegun& begun = line.entry->begun;
            Json json{{"call", begun.key.row->full_name()},
                      {"arguments", values_json(begun.key)},
                      {"state", line.state},
                      {"at", line.entry->ended.number != 0 ? line.entry->ended.at : begun.at}};
            json.add("secret", begun.key.secret);
            lines.push_back(std::move(json));
        }
    }
    Json json = output::record("report");
    json["journal"] = journal.path();
    json.add("gateway", journal.ledger().gateway());
    json["settled"] = sheet.settled;
    json["unknown"] = sheet.open;
    json["failed"] = sheet.failed;
    if (sheet.apply) {
        json["confirmation"] = json_of(*sheet.apply);
    }
    json["lines"] = std::move(lines);
    json["exit"] = exit;
    return output::line_of(json);
}

} // namespace

int report_site(const std::string& path, const input::Options& options)
{
    if (!std::filesystem::exists(path)) {
        throw input::InputError{fmt::format("{}: no such journal", path), input::exit_journal};
    }
    const Journal journal = Journal::read(this_machine(options.json), path);
    const Sheet sheet = sheet_of(journal);
    const int exit = sheet.is_undecided() ? input::exit_due : input::exit_ok;
    if (options.json) {
        vor::print(stdout, json_of(sheet, journal, exit));
        return exit;
    }
    if (sheet.is_undecided()) {
        print(*sheet.apply, false, stderr);
    }
    vor::print(stdout, options.html ? html_of(sheet) : text_of(sheet, output::screen_of(options)));
    return exit;
}

} // namespace vorcfg::site
