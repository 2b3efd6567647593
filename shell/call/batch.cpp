#include "call/batch.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <fmt/core.h>

#include "call/call_key.hpp"
#include "call/session.hpp"
#include "input/terminal.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::call {

Batch::Batch(std::string text, std::string name, input::SecretSources sources, input::Variables variables)
    : text_(std::move(text)), name_(std::move(name)), secrets_(std::move(sources)), variables_(std::move(variables))
{
}

void Batch::take(const input::Spreadsheet& sheet, const input::Spreadsheet::Row& row, const input::Options& options)
{
    if (row.error) {
        throw input::InputError(*row.error);
    }
    for (std::size_t i = 0; i < row.cells.size(); i++) {
        const input::Spreadsheet::Cell& column = sheet.columns()[i];
        const auto names_it = [&](std::string_view typed) { return typed.starts_with(column.text + '='); };
        if (input::Spreadsheet::is_variable(column)) {
            variables_.add(column.text, {.value = row.cells[i].text,
                                         .exposed = std::ranges::any_of(options.rows, names_it),
                                         .place = row.cells[i].place});
        }
    }
}

void Batch::rewind(std::function<bool(std::size_t)> selected)
{
    at_ = 0;
    line_ = 0;
    begun_ = false;
    tried_ = true;
    selected_ = std::move(selected);
}

void Batch::ask(const std::function<bool(std::size_t)>& selected)
{
    secrets_.ask([&] {
        rewind(selected);
        tried_ = false;
        while (next()) {}
    });
}

std::size_t column_of(const input::InputError& error, const std::vector<input::Word>& words, std::string_view line)
{
    std::size_t column = error.place.column;
    if (column == 0 && error.word == input::InputError::no_word) {
        column = words.empty() ? 1 : words.front().column;
    } else if (column == 0) {
        column = error.word < words.size() ? words[error.word].column : words.back().end;
    }
    return input::column_in(line, column);
}

void check_gateway(std::string_view name)
{
    const auto is_control = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    if (name.empty() || name.starts_with('.') || name.find('/') != name.npos || std::ranges::any_of(name, is_control)) {
        throw input::InputError{
            fmt::format("a gateway's name must not be empty, begin with a dot, or contain / or a control character: {}",
                        vor::quoted(name))};
    }
}

// The first line with words may be `gateway NAME`.
bool Batch::is_gateway_line(const std::vector<input::Word>& words)
{
    const bool is_first = !std::exchange(begun_, true);
    if (words[0].text != input::gateway_word || tried_) {
        return words[0].text == input::gateway_word;
    }
    if (!is_first) {
        throw input::InputError{.text = "gateway must be the first line", .word = 0};
    }
    if (words.size() == 1) {
        throw input::InputError{.text = "gateway needs a name", .word = 1};
    }
    if (words.size() > 2) {
        throw input::InputError{.text = "unexpected word; put a name with spaces in double quotes", .word = 2};
    }
    if (words[1].secret) {
        throw input::InputError{.text = "a gateway's name must not be a secret", .word = 1};
    }
    try {
        check_gateway(words[1].text);
    } catch (input::InputError& error) {
        error.word = 1;
        throw;
    }
    gateway_ = words[1].text;
    return true;
}

std::optional<PreparedCall> Batch::next()
{
    while (at_ < text_.size()) {
        const std::size_t end = std::min(text_.find('\n', at_), text_.size());
        const std::string_view line = std::string_view{text_}.substr(at_, end - at_);
        at_ = end + 1;
        line_++;
        if (selected_ && !selected_(line_)) {
            continue;
        }
        std::vector<input::Word> words;
        try {
            words = input::words_of(line, &variables_);
            if (!words.empty() && !is_gateway_line(words)) {
                const std::size_t column = words.size() > 1 ? words[1].column : words[0].column;
                PreparedCall call = prepare(words, secrets_, {name_, line_, input::column_in(line, column)});
                if (!tried_) {
                    rehearse(call);
                }
                return call;
            }
        } catch (input::InputError& error) {
            if (error.word < words.size() && words[error.word].from != nullptr) {
                error.from = *words[error.word].from;
            }
            error.place = {name_, line_, column_of(error, words, line)};
            error.hint = error.hint.empty() ? input::hint_about(words) : error.hint;
            throw;
        }
    }
    return std::nullopt;
}

std::optional<input::Spreadsheet> spreadsheet_of(const input::Options& options)
{
    const auto found = std::ranges::find_if(options.vars, input::Spreadsheet::is_named);
    if (found == options.vars.end()) {
        return std::nullopt;
    }
    if (std::any_of(found + 1, options.vars.end(), input::Spreadsheet::is_named)) {
        throw input::InputError{"only one of the --vars can be a spreadsheet"};
    }
    return input::Spreadsheet(*found);
}

Batch batch_of(const std::string& path, const input::Options& options)
{
    const auto sheet = spreadsheet_of(options);
    if (sheet.has_value() == options.rows.empty()) {
        throw sheet ? input::InputError{.text = fmt::format("{} has a row per site: which one?", sheet->path()),
                                        .hint = fmt::format("give --row {}=VALUE", sheet->columns().front().text)}
                    : input::InputError{.text = "--row needs a spreadsheet", .hint = "give --vars FILE.csv"};
    }
    Batch batch = batch_without_row(path, options);
    if (sheet) {
        batch.take(*sheet, sheet->row_with(options.rows), options);
    }
    return batch;
}

Batch batch_without_row(const std::string& path, const input::Options& options)
{
    if (options.password) {
        throw input::InputError{
            "--password-file and --password-stdin are for a single call; in a file, write @FILE, - or ? in place of "
            "the secret"};
    }
    const bool from_file = path != "-";
    const std::string name = from_file ? path : "standard input";
    const std::filesystem::path directory = std::filesystem::path(from_file ? path : "").parent_path();
    if (options.file != nullptr) {
        return {options.file->text,
                name,
                {.literals = true, .standard_input = false, .prompts = false, .directory = directory},
                options.file->variables};
    }
    const bool takes_input = std::ranges::find(options.vars, "-") != options.vars.end();
    if ((!from_file || takes_input) && options.in_session) {
        throw input::InputError{fmt::format("cannot read {} from standard input, which the session is reading",
                                            from_file ? "variables" : "a batch")};
    }
    if (!from_file && takes_input) {
        throw input::InputError{"standard input cannot provide both the calls and their variables"};
    }
    input::Variables variables;
    for (const std::string& definition : options.sets) {
        variables.set(definition);
    }
    for (const std::string& file : options.vars) {
        if (!input::Spreadsheet::is_named(file)) {
            variables.read(file, !options.allow_unused);
        }
    }
    return {from_file ? input::content_of(path) : input::content_of_standard_input(),
            name,
            {.literals = true,
             .standard_input = from_file && !takes_input && !options.in_session,
             .prompts_wait = true,
             .directory = directory},
            std::move(variables)};
}

void check_confirmed(const PreparedCall& call, const input::Options& options)
{
    if (call.row->has(rows::confirmed) && !options.yes && !options.dry_run) {
        throw input::InputError{"requires --yes", input::exit_usage, {}, 1, call.row->full_name(), call.place};
    }
}

std::string named(const PreparedCall& call)
{
    const std::string line = call.place.line != 0 ? fmt::format(" (line {})", call.place.line) : "";
    return name_of(call) + line;
}

bool agreed_to(const std::vector<std::string>& cutting, const std::string& question, const input::Options& options)
{
    if (cutting.empty() || options.yes || options.dry_run || !input::at_terminal() ||
        input::agreed(
            fmt::format("{} may drop the connection you are using. {}", vor::joined(cutting, ", "), question))) {
        return true;
    }
    return false;
}

int check(Batch& batch, const std::function<void(const PreparedCall&)>& each,
          const std::function<int(const input::InputError&)>& report, bool shows_progress)
{
    int exit = input::exit_ok;
    vor::Progress progress("lines checked");
    for (bool more = true; more;) {
        if (shows_progress) {
            progress.show(batch.line());
        }
        try {
            const auto call = batch.next();
            more = call.has_value();
            if (more) {
                each(*call);
            }
        } catch (const input::InputError& error) {
            progress.clear();
            exit = report(error);
        }
    }
    progress.clear();
    for (const input::InputError& error : batch.unused_variables()) {
        exit = report(error);
    }
    return exit;
}

} // namespace vorcfg::call
