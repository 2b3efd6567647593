// output.hpp: calls and their totals, as text and as JSON.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "call/runner.hpp"
#include "input/input_error.hpp"
#include "text/table.hpp"

namespace vor {
class Json;
}

namespace vorcfg::output {

// Of all JSON, which docs/vorcfg.schema.json describes: raised when a field is removed or changes its meaning.
inline constexpr int schema = 3;

// What every object begins with: its type, and the place that it is about where a file is read.
vor::Json record(std::string_view type, const input::Place& place = {});
// On one line, ended.
std::string line_of(const vor::Json& json);

// Where standard output goes.
vor::Screen screen_of(const input::Options& options);

// "f:3:7", without what is 0
std::string place_text(const input::Place& place);
// As text, its lines ended: "can set-id 1: accepted by canmgr", in front of it the place of a file's line.
std::string text_of(const call::PreparedCall& call, const call::CallResult& result, const vor::Screen& screen = {});
std::string text_of(const input::InputError& error);
// A file's line at a terminal: the line's number, the outcome, the call and its object, the rest of the verdict.
vor::Cells cells_of(std::size_t line, const call::Verdict& verdict, const std::string& name);
std::string row_of(const call::PreparedCall& call, const call::CallResult& result, const vor::Table& table);

// Numbers of things: "3 accepted, 1 refused", in the order in which they came, without zeros.
class Counts {
public:
    void add(std::string_view what, std::size_t number = 1);
    std::string text(std::string_view none = "nothing to make") const;

private:
    std::vector<std::pair<std::string, std::size_t>> counts_;
};

Counts counts_of(const call::Tally& tally, std::size_t left);
// What totals begin with: "f", "f: stopped at line 9" or "f: failed at lines 4 and 9"; at a terminal, which shows one
// file, `title`, "Stopped at line 9" ...
std::string end_of_run(const std::string& file, std::string_view title, bool stopped,
                       const std::vector<std::size_t>& failed_lines, const vor::Screen& screen);
std::string text_of(const call::Tally& tally, const std::string& name, std::size_t left, const input::Options& options);
// "line 5", "lines 5, 7 and 9", "lines 4-14"
std::string lines_text(const std::vector<std::size_t>& lines);

// Each a line.
std::string json_of(const call::PreparedCall& call, const call::CallResult& result);
std::string json_of(const input::InputError& error);
std::string json_of(const call::Tally& tally, const std::string& name, std::size_t left);
std::string text_json(std::string_view text);
// Of a file, or of each row of a spreadsheet.
std::string checked_json(const std::string& name, std::size_t calls, std::size_t rows = 0,
                         std::size_t rows_without_errors = 0);

// The interface, described: a call, as a row of JSON and as text; and all there is.
vor::Json description_of(const rows::Row& row);
std::string json_of(const rows::Row& row);
std::string description_text(const rows::Row& row, const vor::Screen& screen = {});
vor::Json description();
std::string description_json();

// What is not a result: as JSON on standard output.

// As text on standard error; its exit code.
int print_error(const input::InputError& error, bool json);
std::function<int(const input::InputError&)> error_printer(bool json);
// As text on standard error. `other_line`, if not 0, is a second one of the same file.
void print_warning(std::string_view text, const input::Place& place, bool json, std::size_t other_line = 0);
// As text on `to`, after the place or, on standard error, the tool's name. The fields are for JSON.
void print_notice(std::string_view text, const input::Place& place, bool json, std::FILE* to, const vor::Json& fields);
void print_notice(std::string_view text, const input::Place& place, bool json, std::FILE* to = stdout);
// What a call's timer is waited for.
void print_wait(unsigned milliseconds, bool json);
// After a no; its exit code.
int print_declined(bool json);

// A run reported on standard output.
class ConsoleReporter final : public call::Reporter {
public:
    // The totals as text or JSON.
    using Summary = std::function<std::string(const call::Tally& tally, std::size_t left)>;

    ConsoleReporter(const input::Options& options, const vor::Screen& screen, Summary summary)
        : json_(options.json), table_(screen), summary_(std::move(summary))
    {
    }

    // Each call to be made, before the first is.
    void expect(const std::string& name);
    std::size_t calls() const { return calls_; }

    bool report_call(const call::PreparedCall& call, const call::CallResult& result, std::size_t left) override;
    void report_wait(unsigned milliseconds) override { print_wait(milliseconds, json_); }
    int finish(const call::Tally& tally, std::size_t left, bool interrupted) override;

private:
    std::string shown(const call::PreparedCall& call, const call::CallResult& result) const;

    const bool json_;
    vor::Table table_;
    const Summary summary_;
    std::size_t calls_ = 0;
    vor::Progress progress_{"calls made"};
    int error_ = 0; // of standard output, an errno
};

} // namespace vorcfg::output
