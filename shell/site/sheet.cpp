#include "site/sheet.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <vector>

#include <fmt/core.h>

#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "site/clock.hpp"
#include "site/journal.hpp"
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
    std::string note; // of what may not stay
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

struct Subject {
    vor::Json objects;
    const Entry* entry;
    const Known* known;
};

// Numbers as numbers.
bool is_before(const vor::Json& one, const vor::Json& other)
{
    const auto before = [](const vor::Json& left, const vor::Json& right) {
        return left.is_integer() && right.is_integer() ? left.number<std::int64_t>() < right.number<std::int64_t>()
                                                       : vor::dump(left) < vor::dump(right);
    };
    return std::ranges::lexicographical_compare(one.elements(), other.elements(), before);
}

std::map<const Row*, std::vector<Subject>> subjects_of(const History& history)
{
    std::map<const Row*, std::vector<Subject>> subjects;
    for (const auto& [subject, known] : history.subjects()) {
        const Entry* const entry = known.standing != nullptr ? known.standing : known.open;
        if (entry != nullptr && subject_of(entry->said) == subject) {
            subjects[entry->said.row].push_back({vor::Json::parse(entry->said.objects), entry, &known});
        }
    }
    for (auto& [row, each] : subjects) {
        std::ranges::sort(each, is_before, &Subject::objects);
    }
    return subjects;
}

// The calls of a family in the order of its rows, those of one call in the order of their objects.
Sheet sheet_of(const Journal& journal)
{
    const History& history = journal.history();
    const auto subjects = subjects_of(history);
    Sheet sheet;
    sheet.title = history.gateway().empty() ? std::filesystem::path(journal.path()).stem().string() : history.gateway();
    for (const Family* const family : families()) {
        Section section{family, {}};
        for (const Row& row : family->rows) {
            const auto known = subjects.find(&row);
            for (const Subject& each : known != subjects.end() ? known->second : std::vector<Subject>()) {
                section.lines.push_back(sheet_line(*each.entry, *each.known));
                const SheetLine& line = section.lines.back();
                (line.open ? sheet.open : sheet.settled)++;
                sheet.first = sheet.first.empty() ? line.when : std::min(sheet.first, line.when);
                sheet.last = std::max(sheet.last, line.when);
            }
        }
        if (!section.lines.empty()) {
            sheet.sections.push_back(std::move(section));
        }
    }
    if (history.pending()) {
        sheet.note = "A confirmed apply is neither confirmed nor taken back: what stands here may not stay.";
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

constexpr const char* meaning = "What the gateway accepted, and when; what it holds now cannot be read back.";

std::string text_of(const Sheet& sheet)
{
    std::string text = fmt::format("{}: {}\n{}\n", vor::printable(sheet.title), counts_of(sheet), meaning);
    text += sheet.note.empty() ? "" : sheet.note + '\n';
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
h1 { font-size: 1.6em; margin: 0; overflow-wrap: anywhere; }
p { margin: .3em 0 0; }
p, th, h2 span, footer { color: #57606a; }
table { border-collapse: collapse; table-layout: fixed; width: 100%; margin-top: 1.6em; }
td, th { text-align: left; vertical-align: top; padding: .3em .8em .3em 0; border-bottom: 1px solid #d8dee4; }
td { overflow-wrap: anywhere; }
th { font-size: .8em; font-weight: normal; }
th[colspan] { border: 0; padding-bottom: 0; font-size: 1em; }
h2 { font-size: 1.05em; margin: 0; color: #1b1f24; }
h2 span { font-weight: normal; }
col:nth-child(1) { width: 26%; }
col:nth-child(3) { width: 19%; }
col:nth-child(4) { width: 13em; }
td:nth-child(1) { font-weight: 600; }
td:nth-child(4) { font-variant-numeric: tabular-nums; }
tr.open td { background: #fff3cd; }
footer { margin-top: 3em; display: flex; gap: 3em; }
footer div { flex: 1; border-top: 1px solid; padding-top: .3em; }
@media screen and (max-width: 48em) {
  table, tbody, tr, td, thead { display: block; }
  thead tr + tr { display: none; }
  tbody tr { border-bottom: 1px solid #d8dee4; padding: .4em 0; }
  td { border: 0; padding: 0 .3em; }
  td:nth-child(3)::after { content: ","; }
  td:nth-child(3), td:nth-child(4) { display: inline-block; padding-right: 0; }
}
@media print {
  @page { margin: 15mm; @bottom-right { content: counter(page) " / " counter(pages); font: 9px sans-serif; } }
  body { font-size: 10px; margin: 0; padding: 0; max-width: none; }
  body, p, th, h2, h2 span, footer { color: #000; }
  td, th { border-color: #888; }
  tr, footer { break-inside: avoid; }
  thead { display: table-header-group; break-inside: avoid; break-after: avoid; }
  tr.open td { background: none; font-style: italic; }
  tr.open td:first-child::before { content: "! "; }
  footer { margin-top: 6em; }
}
)";

std::string html_of(const Sheet& sheet)
{
    std::string text = fmt::format("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                                   "<meta name=\"viewport\" content=\"width=device-width\">\n<title>{0}</title>\n"
                                   "<style>{1}</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p>{2}<br>{3}{4}</p>\n",
                                   html(sheet.title), style, html(counts_of(sheet)), meaning,
                                   sheet.note.empty() ? "" : fmt::format("<br><b>{}</b>", sheet.note));
    for (const Section& section : sheet.sections) {
        // the family's name within the head, which each page repeats
        text += fmt::format("<table>\n<colgroup><col><col><col><col></colgroup>\n<thead>\n"
                            "<tr><th colspan=\"4\"><h2>{} <span>{}</span></h2></th></tr>\n"
                            "<tr><th>Call and object</th><th>Value</th><th>Verdict</th><th>When</th></tr>\n"
                            "</thead>\n<tbody>\n",
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
    json["pending"] = !sheet.note.empty();
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
    if (options.json && options.html) {
        throw Complaint{"one of --json and --html is enough"};
    }
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
