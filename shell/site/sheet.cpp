#include "site/sheet.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include <fmt/format.h>

#include "journal/clock.hpp"
#include "journal/journal.hpp"
#include "report/report.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "site/pending.hpp"
#include "site/show.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

struct SheetLine {
    std::string name; // without the family's
    std::string values;
    std::string verdict;
    std::string when;
    bool open = false;
};

struct Section {
    const Family* family;
    std::vector<SheetLine> lines;
};

struct Sheet {
    std::string title;
    std::vector<Section> sections;
    std::size_t settled = 0;
    std::size_t open = 0;
    std::string first;
    std::string last;
};

SheetLine sheet_line(const Entry& entry, const Known& known)
{
    const std::string name = name_of(entry.said).substr(entry.said.row->family->name.size() + 1);
    if (known.open != nullptr) {
        return {name, values_of(known.open->said), "unknown", minute_of(known.open->begun), true};
    }
    const bool unread = entry.outcome == name_of(Outcome::unread) || entry.outcome == name_of(Outcome::sent);
    return {name, values_of(entry.said), unread ? "sent, no verdict comes" : entry.outcome, minute_of(entry.ended)};
}

// The calls of a family in the order of its rows, those of one call in the order of their objects.
Sheet sheet_of(const Journal& journal)
{
    const History& history = journal.history();
    Sheet sheet;
    sheet.title = history.gateway().empty() ? std::filesystem::path(journal.path()).stem().string() : history.gateway();
    for (const Family* const family : families()) {
        Section section{family, {}};
        for (const Row& row : family->rows) {
            for (const auto& [subject, known] : history.subjects()) {
                const Entry* const entry = known.standing != nullptr ? known.standing : known.open;
                if (entry == nullptr || entry->said.row != &row || subject_of(entry->said) != subject) {
                    continue;
                }
                section.lines.push_back(sheet_line(*entry, known));
                (section.lines.back().open ? sheet.open : sheet.settled)++;
                const std::string& when = section.lines.back().when;
                sheet.first = sheet.first.empty() ? when : std::min(sheet.first, when);
                sheet.last = std::max(sheet.last, when);
            }
        }
        if (!section.lines.empty()) {
            sheet.sections.push_back(std::move(section));
        }
    }
    return sheet;
}

std::string counts_of(const Sheet& sheet)
{
    std::string text = vor::counted(sheet.settled, "setting");
    text += sheet.open != 0 ? fmt::format(", {} unknown", sheet.open) : "";
    return sheet.first.empty() ? text : fmt::format("{}, {} to {}", text, sheet.first, sheet.last);
}

constexpr const char* meaning = "What the gateway accepted, and when; what it holds now cannot be read back.";

std::string text_of(const Sheet& sheet)
{
    std::string text = fmt::format("{}: {}\n{}\n", vor::printable(sheet.title), counts_of(sheet), meaning);
    for (const Section& section : sheet.sections) {
        text += fmt::format("\n{}: {}\n", section.family->name, about(*section.family));
        std::size_t width = 0;
        for (const SheetLine& line : section.lines) {
            width = std::max(width, line.name.size());
        }
        for (const SheetLine& line : section.lines) {
            text += fmt::format("  {:<{}}  {}{}{}, {}\n", line.name, width, line.values,
                                line.values.empty() ? "" : "; ", line.verdict, line.when);
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

constexpr const char* style = R"(
body { font: 15px/1.45 system-ui, sans-serif; max-width: 62em; margin: 2em auto; padding: 0 1em; color: #1b1f24; }
h1 { font-size: 1.6em; margin: 0; }
p { color: #57606a; margin: .3em 0 1.6em; }
h2 { font-size: 1.05em; margin: 1.8em 0 .4em; }
h2 span { font-weight: normal; color: #57606a; }
table { border-collapse: collapse; width: 100%; }
td, th { text-align: left; vertical-align: top; padding: .3em .8em .3em 0; border-bottom: 1px solid #d8dee4; }
th { font-size: .8em; color: #57606a; font-weight: normal; }
td:nth-child(1) { width: 26%; font-weight: 600; overflow-wrap: anywhere; }
td:nth-child(2) { overflow-wrap: anywhere; }
td:nth-child(3) { width: 20%; }
td:nth-child(4) { width: 16%; white-space: nowrap; font-variant-numeric: tabular-nums; }
tr.open td { background: #fff3cd; }
footer { margin-top: 3em; display: flex; gap: 3em; }
footer div { flex: 1; border-top: 1px solid #1b1f24; padding-top: .3em; color: #57606a; }
@media print {
  @page { margin: 15mm; }
  body { font-size: 10px; margin: 0; max-width: none; }
  h2 { break-after: avoid; }
  tr, footer { break-inside: avoid; }
  thead { display: table-header-group; }
  tr.open td { font-style: italic; }
}
)";

std::string html_of(const Sheet& sheet)
{
    std::string text = fmt::format("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                                   "<meta name=\"viewport\" content=\"width=device-width\">\n<title>{0}</title>\n"
                                   "<style>{1}</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p>{2}<br>{3}</p>\n",
                                   html(sheet.title), style, html(counts_of(sheet)), meaning);
    for (const Section& section : sheet.sections) {
        text += fmt::format("<h2>{} <span>{}</span></h2>\n<table>\n<thead><tr><th>Call and object</th><th>Value</th>"
                            "<th>Verdict</th><th>When</th></tr></thead>\n<tbody>\n",
                            section.family->name, html(about(*section.family)));
        for (const SheetLine& line : section.lines) {
            text += fmt::format("<tr{}><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                                line.open ? " class=\"open\"" : "", html(line.name), html(line.values),
                                html(line.verdict), html(line.when));
        }
        text += "</tbody>\n</table>\n";
    }
    return text + "<footer><div>Handed over by, date</div><div>Taken over by, date</div></footer>\n</body>\n</html>\n";
}

std::string json_of(const Sheet& sheet)
{
    vor::Json json{{"schema", schema}, {"report", sheet.title}, {"settled", sheet.settled}, {"unknown", sheet.open}};
    json["lines"] = vor::Json::array();
    for (const Section& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            json["lines"].push_back({{"family", section.family->name},
                                     {"name", line.name},
                                     {"values", line.values},
                                     {"verdict", line.verdict},
                                     {"when", line.when}});
        }
    }
    return vor::dump(json) + '\n';
}

} // namespace

int run_report(const std::string& path, const Options& options)
{
    if (!std::filesystem::exists(path)) {
        throw Complaint{fmt::format("{}: there is no such journal", path), exit_journal};
    }
    const Journal journal = Journal::read(path);
    if (journal.history().pending()) {
        vor::print_line(stderr, fmt::format("vorcfg: {}", pending_text(journal)));
    }
    const Sheet sheet = sheet_of(journal);
    vor::print(stdout, options.json ? json_of(sheet) : options.html ? html_of(sheet) : text_of(sheet));
    return exit_ok;
}

} // namespace vorcfg
