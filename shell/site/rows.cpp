// check with a spreadsheet: a file with the variables of each row.
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "output/output.hpp"
#include "site/commands.hpp"
#include "site/show.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

// What several rows have is one line of text, once all have been read.
class RowFindings {
public:
    RowFindings(const input::Spreadsheet& sheet, bool json) : sheet_(sheet), json_(json) {}

    void add(input::InputError error, const std::vector<std::size_t>& rows)
    {
        rows_.insert(rows.begin(), rows.end());
        if (error.from.file.empty() && error.place.file != sheet_.path()) {
            error.from = {sheet_.path(), rows[0]};
        }
        if (json_) {
            output::print_error(error, json_);
            return;
        }
        const auto& [file, line, column] = error.place;
        const auto [known, is_new] = known_.try_emplace({file, line, column, error.text}, found_.size());
        if (is_new) {
            found_.push_back({std::move(error), {}});
        }
        found_[known->second].rows.push_back(rows[0]);
    }

    void add(const Warning& warning, std::size_t row)
    {
        warnings_[{warning.place.line, warning.place.column, warning.other_line, warning.text}].push_back(row);
    }

    void print(const std::string& file)
    {
        for (Found& found : found_) {
            input::Place& from = found.error.from;
            if (found.rows.size() > 1 && from.file == sheet_.path()) {
                found.error.text += text_of(found.rows, from.column == 0);
                from = {};
            }
            output::print_error(found.error, json_);
        }
        for (const auto& [warning, rows] : warnings_) {
            const auto& [line, column, other_line, text] = warning;
            output::print_warning(text + text_of(rows, true), {file, line, column}, json_, other_line);
        }
    }

    std::size_t rows() const { return rows_.size(); }

private:
    // What is the same for all rows need not name them, unless it is about their cells.
    std::string text_of(const std::vector<std::size_t>& rows, bool plain) const
    {
        const auto read = std::ranges::count_if(sheet_.rows(), [](const auto& row) { return !row.error; });
        const bool in_all = rows.size() == static_cast<std::size_t>(read);
        return in_all && plain
                   ? ""
                   : fmt::format(" ({}: {})", sheet_.path(), in_all ? "every row" : output::lines_text(rows));
    }

    struct Found {
        input::InputError error;
        std::vector<std::size_t> rows;
    };

    const input::Spreadsheet& sheet_;
    const bool json_;
    std::vector<Found> found_;
    std::map<std::tuple<std::string, std::size_t, std::size_t, std::string>, std::size_t> known_;
    std::map<std::tuple<std::size_t, std::size_t, std::size_t, std::string>, std::vector<std::size_t>> warnings_;
    std::set<std::size_t> rows_;
};

} // namespace

int check_rows(const std::string& path, const input::Spreadsheet& sheet, const input::Options& options)
{
    const call::Batch without_row = call::batch_without_row(path, options);
    RowFindings findings(sheet, options.json);
    std::size_t calls = 0;
    std::map<std::string, std::vector<std::size_t>> gateways;
    vor::Progress progress("rows checked");
    for (const input::Spreadsheet::Row& row : sheet.rows()) {
        const auto report = [&](const input::InputError& error) {
            findings.add(error, {row.line});
            return error.exit;
        };
        try {
            call::Batch batch = without_row;
            batch.leave_input();
            batch.take(sheet, row, options);
            Planner planner({});
            std::size_t valid = 0;
            const auto count = [&](const call::PreparedCall& call) {
                valid++;
                planner.add(call);
            };
            if (call::check(batch, count, report, false) == input::exit_ok) {
                const Plan plan = planner.against(Ledger());
                for (const Warning& warning : warnings_of(plan, {batch.name(), {}, {}, options.json})) {
                    findings.add(warning, row.line);
                }
            }
            calls = std::max(calls, valid);
            gateways[batch.gateway()].push_back(row.line);
        } catch (const input::InputError& error) {
            report(error);
        }
        if (!options.json) {
            progress.show(static_cast<std::size_t>(&row - sheet.rows().data()) + 1, sheet.rows().size());
        }
    }
    progress.clear();
    for (const auto& [gateway, rows] : gateways) {
        if (rows.size() > 1 && !gateway.empty()) {
            findings.add(
                {.text = fmt::format("{} name the same gateway, {}", output::lines_text(rows), vor::quoted(gateway)),
                 .place = {sheet.path(), rows[1], 1}},
                rows);
        }
    }
    findings.print(without_row.name());
    const int exit = findings.rows() == 0 ? input::exit_ok : input::exit_usage;
    const std::size_t rows = sheet.rows().size();
    const std::size_t left = rows - findings.rows();
    vor::print(stdout,
               options.json
                   ? output::checked_json(without_row.name(), calls, rows, left)
                   : vor::printable(fmt::format("{}: {}, {} of {}, {}\n", without_row.name(),
                                                vor::counted(calls, "call"), vor::counted(rows, "row"), sheet.path(),
                                                left == rows ? "no errors" : fmt::format("{} without errors", left))));
    return exit;
}

} // namespace vorcfg::site
