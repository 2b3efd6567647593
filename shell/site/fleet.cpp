// report: one site, or several as a table.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>

#include <fmt/core.h>

#include "output/output.hpp"
#include "site/commands.hpp"
#include "site/sheet.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

// What most calls for attention, in the order of totals.
enum class SiteState { accepted, partly_reverted, failed, unknown, waiting, expired, empty, unreadable };

constexpr std::string_view site_states[] = {"accepted", "partly reverted", "failed", "unknown",
                                            "waiting",  "expired",         "empty",  "unreadable"};
static_assert(std::size(site_states) == static_cast<std::size_t>(SiteState::unreadable) + 1);

struct SiteLine {
    std::string journal;
    std::string gateway{};
    std::string title;
    SiteState state{};
    std::string counts{};
    std::size_t settled = 0;
    std::size_t unknown = 0;
    std::size_t failed = 0;
    std::string last{};
    std::string by{};
    std::string note{};
    int exit = input::exit_ok;

    bool is_readable() const { return state != SiteState::unreadable; }
    std::string_view state_name() const { return site_states[static_cast<std::size_t>(state)]; }
};

SiteLine unreadable_line(const std::string& path, const input::InputError& error)
{
    std::string_view why = error.text;
    for (const std::string_view lead : {std::string_view(path), std::string_view(": "), std::string_view(" ")}) {
        why.remove_prefix(why.starts_with(lead) ? lead.size() : 0);
    }
    return {
        .journal = path, .title = path, .state = SiteState::unreadable, .note = std::string(why), .exit = error.exit};
}

SiteState state_of(const Sheet& sheet)
{
    if (sheet.is_undecided()) {
        return sheet.apply->confirmation == Confirmation::waiting ? SiteState::waiting : SiteState::expired;
    }
    if (sheet.open != 0) {
        return SiteState::unknown;
    }
    if (sheet.failed != 0) {
        return SiteState::failed;
    }
    if (sheet.settled == 0) {
        return SiteState::empty;
    }
    return sheet.apply && sheet.apply->confirmation == Confirmation::partly_reverted ? SiteState::partly_reverted
                                                                                     : SiteState::accepted;
}

SiteLine line_of(const Machine& machine, const std::string& path)
try {
    const Journal journal = Journal::read(machine, path);
    const Sheet sheet = sheet_of(journal);
    const SiteState state = state_of(sheet);
    const bool has_note = sheet.apply && sheet.apply->confirmation != Confirmation::confirmed;
    SiteLine line{.journal = path,
                  .gateway = journal.ledger().gateway(),
                  .title = sheet.title,
                  .state = state,
                  .counts = counts_of(sheet),
                  .settled = sheet.settled,
                  .unknown = sheet.open,
                  .failed = sheet.failed,
                  .note = has_note ? text_of(*sheet.apply) : "",
                  .exit = state == SiteState::accepted || state == SiteState::partly_reverted ? input::exit_ok
                                                                                              : input::exit_due};
    if (const auto& entries = journal.ledger().entries(); !entries.empty()) {
        line.last = entries.back().begun.at;
        line.by = entries.back().begun.by;
    }
    return line;
} catch (const input::InputError& error) {
    return unreadable_line(path, error);
}

std::vector<SiteLine> lines_of(const std::vector<std::string>& paths, const input::Options& options)
{
    const Machine machine = this_machine(options.json);
    vor::Progress progress("journals read");
    std::vector<SiteLine> lines;
    for (const std::string& path : paths) {
        try {
            const std::vector<std::string> journals = journals_in(path);
            if (journals.empty()) {
                throw input::InputError{"no journals in this folder", input::exit_journal};
            }
            for (const std::string& journal : journals) {
                progress.show(lines.size());
                lines.push_back(line_of(machine, journal));
            }
        } catch (const input::InputError& error) {
            lines.push_back(unreadable_line(path, error));
        }
    }
    std::map<std::string, std::size_t> titles;
    for (const SiteLine& line : lines) {
        titles[line.title]++;
    }
    for (SiteLine& line : lines) { // perhaps copies of one journal
        line.title += titles[line.title] > 1 ? fmt::format(" ({})", line.journal) : "";
    }
    return lines;
}

// "2026-05-12 10:04 UTC, by noc"
std::string when_of(const SiteLine& line)
{
    return line.last.empty() ? ""
                             : fmt::format("{}{}{}", minute_of(line.last), line.by.empty() ? "" : ", by ", line.by);
}

std::string total_of(const std::vector<SiteLine>& lines)
{
    output::Counts counts;
    for (const std::string_view state : site_states) {
        counts.add(state, static_cast<std::size_t>(std::ranges::count(lines, state, &SiteLine::state_name)));
    }
    return fmt::format("{}: {}", vor::counted(lines.size(), "site"), counts.text());
}

vor::Cells cells_of(const SiteLine& line)
{
    const vor::Color color = line.exit == input::exit_ok ? vor::Color::plain : vor::Color::yellow;
    const std::string when = when_of(line);
    return {{" "},
            {std::string(line.state_name()), line.is_readable() ? color : vor::Color::red},
            {vor::printable(line.title)},
            {line.counts},
            {vor::printable(when + (when.empty() || line.note.empty() ? "" : "; ") + line.note)}};
}

std::string text_of(const std::vector<SiteLine>& lines, const vor::Screen& screen)
{
    vor::Table table(screen);
    for (const SiteLine& line : lines) {
        table.fit(cells_of(line));
    }
    std::string text;
    for (const SiteLine& line : lines) {
        text += table.text_of(cells_of(line));
    }
    return text + total_of(lines) + '\n';
}

std::string html_of(const std::vector<SiteLine>& lines)
{
    std::string body = "<table>\n<colgroup><col><col><col><col></colgroup>\n<thead>\n"
                       "<tr><th>Site</th><th>Settings</th><th>State</th><th>Last call</th></tr>\n"
                       "</thead>\n<tbody>\n";
    for (const SiteLine& line : lines) {
        const std::string between = line.counts.empty() || line.note.empty() ? "" : "; ";
        body += html_row(line.exit != input::exit_ok, line.title, line.counts + between + line.note, line.state_name(),
                         when_of(line));
    }
    return page_of("Sites", html(total_of(lines)), body + "</tbody>\n</table>\n");
}

std::string json_of(const SiteLine& line)
{
    Json json = output::record("site");
    json["journal"] = line.journal;
    json.add("gateway", line.gateway);
    json["state"] = line.state_name();
    if (!line.is_readable()) {
        json["complaint"] = line.note;
    } else {
        json["settled"] = line.settled;
        json["unknown"] = line.unknown;
        json["failed"] = line.failed;
        json.add("confirmation", line.note);
    }
    json.add("last", line.last);
    json.add("by", line.by);
    json["exit"] = line.exit;
    return output::line_of(json);
}

std::string json_of(const std::vector<SiteLine>& lines, int exit)
{
    std::string text;
    for (const SiteLine& line : lines) {
        text += json_of(line);
    }
    Json json = output::record("sites");
    json["sites"] = lines.size();
    json["open"] = std::ranges::count(lines, input::exit_due, &SiteLine::exit);
    json["unreadable"] = std::ranges::count(lines, false, &SiteLine::is_readable);
    json["exit"] = exit;
    return text + output::line_of(json);
}

} // namespace

int run_report(const std::vector<std::string>& paths, const input::Options& options)
{
    if (options.json && options.html) {
        throw input::InputError{"--json and --html exclude each other"};
    }
    if (paths.size() == 1 && !std::filesystem::is_directory(paths[0])) {
        return report_site(paths[0], options);
    }
    const std::vector<SiteLine> lines = lines_of(paths, options);
    const int exit = std::ranges::max_element(lines, {}, &SiteLine::exit)->exit;
    if (options.json) {
        vor::print(stdout, json_of(lines, exit));
    } else {
        vor::print(stdout, options.html ? html_of(lines) : text_of(lines, output::screen_of(options)));
    }
    return exit;
}

} // namespace vorcfg::site
