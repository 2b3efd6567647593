// A run, reported as it goes.
#include <cerrno>
#include <cstdio>
#include <unistd.h>

#include <fmt/core.h>

#include "output/output.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::output {

std::string place_text(const input::Place& place)
{
    std::string text = vor::printable(place.file);
    for (const std::size_t number : {place.line, place.column}) {
        text += number != 0 ? fmt::format(":{}", number) : "";
    }
    return text;
}

namespace {

std::string lead_of(const input::Place& place)
{
    return place.file.empty() ? "" : place_text(place) + ": ";
}

} // namespace

vor::Json record(std::string_view type, const input::Place& place)
{
    vor::Json json{{"schema", schema}, {"type", type}};
    json.add("file", place.file);
    json.add("line", place.line);
    json.add("column", place.column);
    return json;
}

std::string line_of(const vor::Json& json)
{
    return vor::dump(json) + '\n';
}

int print_error(const input::InputError& error, bool json)
{
    std::fflush(stdout);
    vor::print(json ? stdout : stderr, json ? json_of(error) : text_of(error));
    const bool in_file = !error.place.file.empty(); // one line per error, unless it is read at a terminal
    if (!json && !error.hint.empty() && (!in_file || isatty(STDERR_FILENO) == 1)) {
        vor::print_line(stderr, fmt::format("hint: {}", error.hint));
    }
    return error.exit;
}

std::function<int(const input::InputError&)> error_printer(bool json)
{
    return [json](const input::InputError& error) { return print_error(error, json); };
}

void print_warning(std::string_view text, const input::Place& place, bool json, std::size_t other_line)
{
    if (!json) {
        vor::print_line(stderr, fmt::format("{}warning: {}", lead_of(place), vor::printable(text)));
        return;
    }
    vor::Json warning = record("warning", place);
    warning["text"] = text;
    warning.add("other_line", other_line);
    vor::print(stdout, line_of(warning));
}

void print_notice(std::string_view text, const input::Place& place, bool json, std::FILE* to, const vor::Json& fields)
{
    if (!json) {
        vor::print_line(to, (to == stderr && place.file.empty() ? "vorcfg: " : lead_of(place)) + vor::printable(text));
        return;
    }
    vor::Json notice = record("notice", place);
    notice["text"] = text;
    for (const auto& [name, value] : fields.members()) {
        notice[name] = value;
    }
    vor::print(stdout, line_of(notice));
}

void print_notice(std::string_view text, const input::Place& place, bool json, std::FILE* to)
{
    print_notice(text, place, json, to, vor::Json::object());
}

void print_wait(unsigned milliseconds, bool json)
{
    print_notice("waiting until the timer is due: it ends with this process; interrupt to cancel it", {}, json, stderr,
                 {{"milliseconds", milliseconds}});
}

int print_declined(bool json)
{
    if (json) {
        return print_error({"nothing was sent"}, true);
    }
    vor::print_line(stderr, "Nothing was sent.");
    return input::exit_usage;
}

vor::Screen screen_of(const input::Options& options)
{
    return vor::screen_of(STDOUT_FILENO, options.color);
}

void ConsoleReporter::expect(const std::string& name)
{
    calls_++;
    table_.fit(cells_of(0, {call::Outcome::accepted, {}}, name));
}

std::string ConsoleReporter::shown(const call::PreparedCall& call, const call::CallResult& result) const
{
    if (json_) {
        return json_of(call, result);
    }
    return table_.screen().is_terminal ? row_of(call, result, table_) : text_of(call, result, table_.screen());
}

bool ConsoleReporter::report_call(const call::PreparedCall& call, const call::CallResult& result, std::size_t left)
{
    progress_.clear();
    errno = 0;
    vor::print(stdout, shown(call, result));
    error_ = error_ != 0 || std::ferror(stdout) == 0 ? error_ : errno;
    if (!json_) {
        progress_.show(calls_ - left, calls_);
    }
    return std::ferror(stdout) == 0;
}

int ConsoleReporter::finish(const call::Tally& tally, std::size_t left, bool interrupted)
{
    progress_.clear();
    call::Tally ended = tally;
    if (interrupted) {
        ended.worst = input::exit_ended;
        print_notice("interrupted", {}, json_, stderr);
    }
    // where standard output is closed, the totals go to standard error
    errno = 0;
    vor::print(std::ferror(stdout) != 0 ? stderr : stdout, summary_(ended, left));
    error_ = error_ == 0 ? errno : error_;
    errno = error_; // for the caller that reports it
    if (std::ferror(stdout) != 0) {
        return input::exit_no_output;
    }
    return ended.worst;
}

} // namespace vorcfg::output
