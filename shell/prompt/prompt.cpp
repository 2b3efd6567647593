#include "prompt/prompt.hpp"

#include <csignal>
#include <cstdio>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "call/runner.hpp"
#include "help/help.hpp"
#include "input/terminal.hpp"
#include "output/output.hpp"
#include "prompt/history.hpp"
#include "prompt/lines.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

constexpr std::string_view greeting = "vorcfg: help tells what there is, Tab completes, Ctrl-D ends the session\n";

// None of the line that ends the session.
std::optional<int> run_line(const std::string& line, std::size_t number, const Options& base,
                            int (*run)(const Options&))
{
    bool json = base.json;
    Options options;
    try {
        options = options_of(words_of(line), base);
        json = options.json;
        if (options.words.size() == 1 && (options.words[0].text == "exit" || options.words[0].text == "quit")) {
            return std::nullopt;
        }
        return options.words.empty() && !options.help && !options.version ? exit_ok : run(options);
    } catch (Complaint& complaint) {
        if (!at_terminal() && complaint.place.file.empty()) {
            complaint.place = {"standard input", number, column_of(complaint, options.words)};
        }
        return complain(complaint, json);
    }
}

} // namespace

int run_prompt(const Options& given, int (*run)(const Options&))
{
    Options options = given;
    options.in_session = true;
    const bool terminal = at_terminal();
    std::unique_ptr<Lines> lines = terminal ? edited_lines() : nullptr;
    if (terminal) {
        vor::print(stdout, greeting);
        std::signal(SIGINT, SIG_IGN); // a call that is under way ends with its verdict
    }
    if (lines == nullptr) {
        lines = plain_lines(terminal);
    }
    ExitCode worst = exit_ok;
    std::size_t number = 0;
    const auto next = [&]() -> std::optional<std::string> {
        try {
            return lines->next();
        } catch (Complaint& complaint) {
            complaint.place = {"standard input", number + 1, 1};
            complaint.text += "; it and what follows it is not read";
            throw;
        }
    };
    while (const auto line = next()) {
        number++;
        if (may_be_kept(*line)) {
            lines->keep(*line);
        }
        const std::optional<int> exit = run_line(*line, number, options, run);
        if (!exit) {
            break;
        }
        worst = worse(static_cast<ExitCode>(*exit), worst);
    }
    if (number == 0 && !terminal) { // nobody said anything
        vor::print(stderr, help());
        return exit_usage;
    }
    return terminal ? exit_ok : worst;
}

} // namespace vorcfg
