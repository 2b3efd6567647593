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
            error.place = {name_, line_, column_of(error, words, line)};
            error.hint = error.hint.empty() ? input::hint_about(words) : error.hint;
            throw;
        }
    }
    return std::nullopt;
}

Batch batch_of(const std::string& path, const input::Options& options)
{
    if (options.password) {
        throw input::InputError{
            "--password-file and --password-stdin are for a single call; in a file, write @FILE, - or ? in place of "
            "the secret"};
    }
    if (path == "-" && options.in_session) {
        throw input::InputError{"cannot read a batch from standard input, which the session is reading"};
    }
    input::Variables variables;
    for (const std::string& definition : options.sets) {
        variables.set(definition);
    }
    for (const std::string& file : options.vars) {
        variables.read(file);
    }
    const bool from_file = path != "-";
    const std::string name = from_file ? path : "standard input";
    return {from_file ? input::content_of(path) : input::content_of_standard_input(),
            name,
            {.literals = true,
             .standard_input = from_file && !options.in_session,
             .prompts_wait = true,
             .directory = std::filesystem::path(from_file ? path : "").parent_path()},
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
