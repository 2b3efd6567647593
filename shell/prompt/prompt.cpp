#include "prompt/prompt.hpp"

#include <csignal>
#include <cstdio>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "call/runner.hpp"
#include "help/help.hpp"
#include "input/input_error.hpp"
#include "input/options.hpp"
#include "input/secret.hpp"
#include "input/terminal.hpp"
#include "output/output.hpp"
#include "prompt/history.hpp"
#include "text/file.hpp"
#include "text/text.hpp"

namespace vorcfg::prompt {

namespace {

#ifdef VORCFG_EDITED
constexpr std::string_view greeting = "vorcfg: type help for help, Tab to complete, Ctrl-D to leave\n";
#else
constexpr std::string_view greeting = "vorcfg: type help for help, Ctrl-D to leave\n";
#endif

// Lines as they come, from a pipe or, after a prompt, from a terminal.
class PlainLines : public Lines {
public:
    explicit PlainLines(bool prompted) : prompted_(prompted) {}

    std::optional<std::string> next() override
    {
        if (!prompted_) {
            return read();
        }
        input::Waiting for_line;
        vor::print(stdout, prompt_text);
        const bool there = for_line.wait();
        auto line = there ? read() : std::optional<std::string>("");
        vor::print(stdout, there && line ? "" : "\n");
        return line;
    }

private:
    static std::optional<std::string> read()
    {
        std::string line;
        int byte;
        while ((byte = std::getc(stdin)) != EOF && byte != '\n') {
            line += static_cast<char>(byte);
            if (line.size() > vor::Bounds().line) {
                throw input::InputError{fmt::format("line of more than {} bytes", vor::Bounds().line)};
            }
        }
        return byte == EOF && line.empty() ? std::nullopt : std::optional(std::move(line));
    }

    const bool prompted_;
};

std::unique_ptr<Lines> lines_of_input(bool terminal)
{
#ifdef VORCFG_EDITED
    if (terminal) {
        return edited_lines();
    }
#endif
    return std::make_unique<PlainLines>(terminal);
}

// The exit code; none for the line that ends the session.
std::optional<int> run_line(const std::string& line, std::size_t number, const input::Options& base)
{
    input::Options options = base;
    try {
        input::take_options(input::words_of(line), options);
        if (options.words.size() == 1 && (options.words[0].text == "exit" || options.words[0].text == "quit")) {
            return std::nullopt;
        }
        return options.words.empty() && !options.help && !options.version ? input::exit_ok : input::run(options);
    } catch (input::InputError& error) {
        if (!input::at_terminal() && error.place.file.empty()) {
            error.place = {"standard input", number, call::column_of(error, options.words, line)};
        }
        return output::print_error(error, options.json);
    }
}

} // namespace

int run_prompt(const input::Options& given)
{
    input::Options options = given;
    options.in_session = true;
    const bool terminal = input::at_terminal();
    const std::unique_ptr<Lines> lines = lines_of_input(terminal);
    if (terminal) {
        vor::print(stdout, options.json ? "" : greeting);
        std::signal(SIGINT, SIG_IGN); // a call that is under way ends with its verdict
    }
    input::ExitCode worst = input::exit_ok;
    std::size_t number = 0;
    const auto next = [&]() -> std::optional<std::string> {
        try {
            return lines->next();
        } catch (input::InputError& error) {
            error.place = {"standard input", number + 1, 1};
            error.text += "; this line and those after it are ignored";
            throw;
        }
    };
    while (const auto line = next()) {
        number++;
        if (may_be_kept(*line)) {
            lines->keep(*line);
        }
        const std::optional<int> exit = run_line(*line, number, options);
        if (!exit) {
            break;
        }
        worst = call::worse(static_cast<input::ExitCode>(*exit), worst);
    }
    if (number == 0 && !terminal) { // as from /dev/null
        if (options.json) {
            throw input::InputError{.text = "no lines on standard input", .hint = "vorcfg --help"};
        }
        vor::print(stderr, help::brief_help());
        return input::exit_usage;
    }
    return terminal ? input::exit_ok : worst;
}

} // namespace vorcfg::prompt
