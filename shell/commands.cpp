#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "call/runner.hpp"
#include "help/help.hpp"
#include "input/options.hpp"
#include "output/output.hpp"
#include "prompt/prompt.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

int print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return exit_ok;
}

// --- The words behind a command ---------------------------------------------------

[[noreturn]] void complain_usage(const Options& options)
{
    const Command& command = *command_named(options.words[0].text);
    throw InputError{fmt::format("wanted: vorcfg {}", command.wanted.empty() ? command.usage : command.wanted)};
}

// Of a command with at most one word behind it; null where there is none.
const std::string* word_behind(const Options& options)
{
    if (options.words.size() > 2) {
        complain_usage(options);
    }
    return options.words.size() == 2 ? &options.words[1].text : nullptr;
}

const std::string& wanted_word(const Options& options)
{
    const std::string* const word = word_behind(options);
    if (word == nullptr) {
        complain_usage(options);
    }
    return *word;
}

template <int (*Run)(const std::string& file, const Options& options)>
int over_file(const Options& options)
{
    return Run(wanted_word(options), options);
}

// --- Calls --------------------------------------------------------------------------

void rest(unsigned milliseconds)
{
    const auto before = std::signal(SIGINT, SIG_DFL); // the prompt ignores it
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    std::signal(SIGINT, before);
}

int run_call(const Options& options)
{
    if (options.words.size() < 2) {
        vor::print(stderr, help(wanted_family(options.words[0].text)));
        return exit_usage;
    }
    Secrets secrets({.literals = options.in_session,
                     .standard_input = !options.in_session,
                     .left_out = options.password.value_or(Word{{"?"}})});
    PreparedCall planned = plan(options.words, secrets);
    check_confirmed(planned, options);
    rehearse(planned);
    if (planned.row->has(cuts_link)) {
        ask_before({planned.row->full_name()}, options);
    }
    Session session({options.dry_run, options.trace}, options.sap);
    const CallResult report = session.make(planned);
    vor::print(stdout, options.json ? json_of(planned, report) : text_of(planned, report));
    wait_for(*planned.row, report, rest);
    return exit_of(report.verdict.outcome);
}

int run_batch(const std::string& path, const Options& options)
{
    Batch batch = batch_of(path, options);
    std::size_t calls = 0;
    std::vector<std::string> cutting;
    const auto count = [&](const PreparedCall& planned) {
        check_confirmed(planned, options);
        calls++;
        if (planned.row->has(cuts_link)) {
            cutting.push_back(named(planned));
        }
    };
    if (const int exit = check(batch, count, complaining(options.json)); exit != exit_ok) {
        return exit;
    }
    ask_before(cutting, options);
    batch.ask();
    batch.rewind();
    Account account(options, calls, [&](const Tally& tally, std::size_t left) {
        return options.json ? json_of(tally, batch.name(), left) : text_of(tally, batch.name(), left);
    });
    BatchRunner runner(options, calls, account, {});
    for (bool more = true; more;) {
        auto planned = batch.next();
        more = planned && runner.make(*planned);
    }
    return runner.finish();
}

int run_check(const std::string& path, const Options& options)
{
    Batch batch = batch_of(path, options);
    batch.leave_input();
    std::size_t calls = 0;
    if (check(
            batch, [&](const PreparedCall&) { calls++; }, complaining(options.json)) != exit_ok) {
        return exit_usage;
    }
    vor::print(stdout, options.json ? checked_json(batch.name(), calls)
                                    : fmt::format("{}: {}, nothing to complain about\n", vor::printable(batch.name()),
                                                  vor::counted(calls, "call")));
    return exit_ok;
}

// --- What is known of calls ---------------------------------------------------------

int print_help(std::span<const Word> words)
{
    if (words.empty()) {
        return print(help());
    }
    if (const Command* const command = command_named(words[0].text)) {
        return print(help(*command));
    }
    return print(words.size() == 1 ? help(wanted_family(words[0].text))
                                   : help(wanted_row(words[0].text, words[1].text)));
}

int run_help(const Options& options)
{
    return print_help(std::span(options.words).subspan(1));
}

int run_list(const Options& options)
{
    const std::string* const family = word_behind(options);
    return print(list(family != nullptr ? &wanted_family(*family) : nullptr, options.json));
}

int run_search(const Options& options)
{
    const std::string& word = wanted_word(options);
    const std::string found = search(word, options.json);
    if (found.empty()) {
        throw InputError{fmt::format("nothing is known of \"{}\"", word)};
    }
    return print(found);
}

int run_manual(const Options& options)
{
    const std::string* const page = word_behind(options);
    return print(page != nullptr ? manual(*page) : vor::joined(manual_pages(), "\n") + "\n");
}

int run_completion(const Options& options)
{
    return print(completion_script(wanted_word(options)));
}

// --- The table ----------------------------------------------------------------------

constexpr Command table[] = {
    {"", "FAMILY CALL ARGUMENT...", "make a call", "", run_call},
    {"", "", "take lines from standard input, at a terminal with a prompt", "", run_prompt},
    {"batch", "batch FILE", "make every call of a file; - is standard input",
     "One call a line, as on the command line behind `vorcfg`. # begins a comment; a text with blanks\n"
     "stands between double quotes, with \\\" and \\\\ for the two characters. The file is checked whole, and\n"
     "each call tried on a platform that sends nothing, before the first message. The first failure ends\n"
     "it, unless --keep-going is given; it ends with the code of the worst.\n",
     over_file<run_batch>},
    {"check", "check FILE", "complain about a file, without a gateway", "", over_file<run_check>},
    {"plan", "plan FILE", "show what of a file the gateway has not accepted yet",
     "Compares the file with the journal of what was accepted; sends nothing. Ends with 11 where there is\n"
     "something to make. Nearly nothing can be read back from a gateway: what it holds is not known.\n",
     over_file<run_plan>, "plan FILE [--journal JOURNAL]"},
    {"apply", "apply FILE", "make what the gateway has not accepted yet",
     "In the file's order. Each call is in the journal before it is sent and its verdict after, so that\n"
     "applying again goes on where the last time ended. With --confirm, all of it is taken back unless it\n"
     "is confirmed in time.\n",
     over_file<run_apply>, "apply FILE [--journal JOURNAL]"},
    {"confirm", "confirm JOURNAL", "keep what a confirmed apply has changed", "", over_file<run_confirm>},
    {"revert", "revert JOURNAL", "take back at once what a confirmed apply has changed", "", over_file<run_revert>},
    {"report", "report JOURNAL", "print the hand-over sheet: what was accepted, by family and object", "",
     over_file<run_report>},
    {"list", "list [FAMILY]", "show every call",
     "With --json, all that is known of each: ranges, lengths, words, marks.\n", run_list},
    {"search", "search WORD", "show the calls that a word leads to",
     "Looks at the calls' names, their arguments and what the contract says of them.\n", run_search},
    {"help", "help [FAMILY [CALL]]", "show a family's calls, a call's arguments; also --help behind them", "",
     run_help},
    {"manual", "manual [PAGE]", "print a manual page, or name them all",
     "To read it: vorcfg manual vorcfg-gpio.1 | man -l -\n", run_manual},
    {"completion", "completion SHELL", "print the completion for bash or zsh",
     "For the session: source <(vorcfg completion bash)\n", run_completion},
};

const Command& command_for(std::span<const Word> words)
{
    const Command& call = table[0];
    const Command& lines = table[1];
    if (words.empty()) {
        return lines;
    }
    const Command* const named = command_named(words[0].text);
    return named != nullptr ? *named : call;
}

} // namespace

std::span<const Command> commands()
{
    return table;
}

const Command* command_named(std::string_view name)
{
    const auto found = std::ranges::find(table, name, &Command::name);
    return name.empty() || found == std::end(table) ? nullptr : found;
}

int run(const Options& options)
{
    if (options.version) {
        return print("vorcfg " VORCFG_VERSION "\n");
    }
    if (options.help) {
        return print_help(options.words);
    }
    const Command& command = command_for(options.words);
    if (!options.words.empty()) {
        check_given(options, command.name.empty() ? "a call" : command.name);
        if (options.words[0].text == "complete") { // asked by the completion scripts
            return print(completions(std::span(options.words).subspan(1)));
        }
    }
    return command.run(options);
}

} // namespace vorcfg
