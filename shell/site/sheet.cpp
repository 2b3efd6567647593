// The hand-over sheet of a site, from its journal.
#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <fmt/core.h>

#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"
#include "site/pending.hpp"
#include "site/show.hpp"
#include "style_texts.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

struct SheetLine {
    std::string name; // without the family's
    std::string values;
    std::string verdict;
    std::string when;
    bool open = false;
    bool sent = false;
};

struct SheetSection {
    const rows::Family* family;
    std::vector<SheetLine> lines;
};

struct Sheet {
    std::string title;
    std::vector<SheetSection> sections;
    std::size_t settled = 0;
    std::size_t open = 0;
    std::string first;
    std::string last;
    std::string note; // while it may still be reverted
};

SheetLine line_of(const Known& known)
{
    const Entry& entry = *known.latest();
    const call::CallKey& key = entry.begun.key;
    const std::string name = call::name_of(key).substr(key.row->family->name.size() + 1);
    if (known.open != nullptr) {
        return {name, values_of(known.open->begun.key), "unknown", minute_of(known.open->begun.at), true};
    }
    return {name, values_of(key), entry.ended.outcome, minute_of(entry.ended.at), false, entry.is_sent()};
}

// The calls of a family are in the order of its rows, those of one call in the order of their objects.
Sheet sheet_of(const Journal& journal)
{
    const History& history = journal.history();
    const auto known = history.known();
    Sheet sheet;
    sheet.title = history.gateway().empty() ? std::filesystem::path(journal.path()).stem().string() : history.gateway();
    for (const rows::Family* const family : rows::families()) {
        SheetSection section{family, {}};
        for (const Known* const each : known) {
            if (each->latest()->begun.key.row->family != family) {
                continue;
            }
            const SheetLine& line = section.lines.emplace_back(line_of(*each));
            (line.open ? sheet.open : sheet.settled)++;
            sheet.first = sheet.first.empty() ? line.when : std::min(sheet.first, line.when);
            sheet.last = std::max(sheet.last, line.when);
        }
        if (!section.lines.empty()) {
            sheet.sections.push_back(std::move(section));
        }
    }
    if (history.pending()) {
        sheet.note = "The last apply is not confirmed yet: these settings may still be reverted.";
    }
    return sheet;
}

std::string counts_of(const Sheet& sheet)
{
    std::string text = vor::counted(sheet.settled, "setting");
    text += sheet.open != 0 ? fmt::format(", {} unknown", sheet.open) : "";
    text += sheet.first.empty() ? "" : ", " + sheet.first;
    return sheet.first == sheet.last ? text : fmt::format("{} to {}", text, sheet.last);
}

constexpr const char* meaning =
    "Settings sent to the gateway, with their outcomes. Its current values cannot be read back.";

vor::Cells cells_of(const SheetLine& line)
{
    const vor::Color color = line.open ? vor::Color::yellow : vor::Color::plain;
    return {{" "}, {line.verdict, color}, {line.name}, {line.when + (line.values.empty() ? "" : ", ") + line.values}};
}

std::string text_of(const Sheet& sheet, const vor::Screen& screen)
{
    vor::Table table(screen);
    for (const SheetSection& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            table.fit(cells_of(line));
        }
    }
    std::string text = vor::paragraph(fmt::format("{}: {}", vor::printable(sheet.title), counts_of(sheet)), screen) +
                       vor::paragraph(meaning, screen) + (sheet.note.empty() ? "" : vor::paragraph(sheet.note, screen));
    for (const SheetSection& section : sheet.sections) {
        text += fmt::format("\n{}: {}\n", section.family->name, rows::about(*section.family));
        for (const SheetLine& line : section.lines) {
            text += table.text_of(cells_of(line));
        }
    }
    return text;
}

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

// One page that needs nothing from elsewhere.
std::string html_of(const Sheet& sheet)
{
    std::string text = fmt::format("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                                   "<meta name=\"viewport\" content=\"width=device-width\">\n<title>{0}</title>\n"
                                   "<style>\n{1}</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p>{2}<br>{3}{4}</p>\n",
                                   html(sheet.title), style_texts[0].text, html(counts_of(sheet)), meaning,
                                   sheet.note.empty() ? "" : fmt::format("<br><b>{}</b>", sheet.note));
    for (const SheetSection& section : sheet.sections) {
        // the family's name within the head, which each page repeats
        text += fmt::format("<table>\n<colgroup><col><col><col><col></colgroup>\n<thead>\n"
                            "<tr><th colspan=\"4\"><h2>{} <span>{}</span></h2></th></tr>\n"
                            "<tr><th>Call and object</th><th>Value</th><th>Verdict</th><th>When</th></tr>\n"
                            "</thead>\n<tbody>\n",
                            section.family->name, html(rows::about(*section.family)));
        for (const SheetLine& line : section.lines) {
            text += fmt::format("<tr{}><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                                line.open ? " class=\"open\"" : "", html(line.name), html(line.values),
                                html(line.verdict), html(line.when));
        }
        text += "</tbody>\n</table>\n";
    }
    return text + "<footer><div>Handed over by, date</div><div>Received by, date</div></footer>\n</body>\n</html>\n";
}

std::string json_of(const Sheet& sheet)
{
    Json lines = Json::array();
    for (const SheetSection& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            lines.push_back({{"family", section.family->name},
                             {"name", line.name},
                             {"values", line.values},
                             {"verdict", line.sent ? "sent, no verdict comes" : line.verdict},
                             {"when", line.when}});
        }
    }
    const Json json{{"schema", output::schema}, {"type", "report"},      {"title", sheet.title},
                    {"settled", sheet.settled}, {"unknown", sheet.open}, {"pending", !sheet.note.empty()},
                    {"lines", std::move(lines)}};
    return vor::dump(json) + '\n';
}

} // namespace

int run_report(const std::string& path, const input::Options& options)
{
    if (options.json && options.html) {
        throw input::InputError{"--json and --html exclude each other"};
    }
    if (!std::filesystem::exists(path)) {
        throw input::InputError{fmt::format("{}: no such journal", path), input::exit_journal};
    }
    const Journal journal = Journal::read(path);
    if (journal.history().pending()) {
        output::print_error(pending_error(journal), false);
    }
    const Sheet sheet = sheet_of(journal);
    if (options.json) {
        vor::print(stdout, json_of(sheet));
    } else {
        vor::print(stdout, options.html ? html_of(sheet) : text_of(sheet, output::screen_of(options)));
    }
    return input::exit_ok;
}

} // namespace vorcfg::site
