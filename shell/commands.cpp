#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "call/call_key.hpp"
#include "call/runner.hpp"
#include "help/help.hpp"
#include "input/options.hpp"
#include "output/output.hpp"
#include "prompt/prompt.hpp"
#include "rows/families.hpp"
#include "serve/serve.hpp"
#include "site/commands.hpp"
#include "site/show.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

int print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return input::exit_ok;
}

// What is for people, on several lines.
int print_text(std::string_view text, const input::Options& options, bool paged = false)
{
    if (options.json) {
        return print(output::text_json(text));
    }
    if (paged) {
        help::show_in_pager(text);
        return input::exit_ok;
    }
    return print(text);
}

// --- The operand of a command -----------------------------------------------------

[[noreturn]] void fail_usage(const input::Options& options, std::string text)
{
    const input::Command& command = *input::command_named(options.words[0].text);
    const std::string_view more = command.options;
    throw input::InputError{.text = std::move(text),
                            .excerpt = fmt::format("usage: {}{}{}\n", command.usage, more.empty() ? "" : " ", more)};
}

// Null where there is none.
const std::string* operand(const input::Options& options)
{
    if (options.words.size() > 2) {
        fail_usage(options, fmt::format("unexpected argument {}", vor::quoted(options.words[2].text)));
    }
    return options.words.size() == 2 ? &options.words[1].text : nullptr;
}

const std::string& required_operand(const input::Options& options)
{
    const std::string* const word = operand(options);
    if (word == nullptr) {
        const input::Command& command = *input::command_named(options.words[0].text);
        fail_usage(options, fmt::format("{} needs {}", command.name, command.usage.substr(command.name.size() + 1)));
    }
    return *word;
}

template <int (*Run)(const std::string& file, const input::Options& options)>
int over_file(const input::Options& options)
{
    return Run(required_operand(options), options);
}

// --- Calls --------------------------------------------------------------------------

void pause_for(unsigned milliseconds)
{
    const auto before = std::signal(SIGINT, SIG_DFL); // the prompt ignores it
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    std::signal(SIGINT, before);
}

call::PreparedCall prepared(const input::Options& options, input::Secrets& secrets)
try {
    call::PreparedCall call = call::prepare(options.words, secrets);
    call::check_confirmed(call, options);
    call::rehearse(call);
    return call;
} catch (input::InputError& error) {
    help::point_out(error, options.words);
    throw;
}

int run_call(const input::Options& options)
{
    if (options.words.size() < 2) {
        const rows::Family& family = rows::require_family(options.words[0].text, rows::Expected::command_or_family);
        if (options.json) {
            throw input::InputError{.text = fmt::format("{} needs a call", family.name),
                                    .hint = fmt::format("vorcfg help {}", family.name)};
        }
        vor::print(stderr, help::help(family));
        return input::exit_usage;
    }
    input::Secrets secrets({.literals = options.in_session,
                            .standard_input = !options.in_session,
                            .left_out = options.password.value_or(input::Word{{"?"}})});
    call::PreparedCall call = prepared(options, secrets);
    if (call.row->has(rows::cuts_link) && !call::agreed_to({call::named(call)}, "Make this call?", options)) {
        return output::print_declined(options.json);
    }
    call::Session session({options.dry_run, options.trace, options.json}, options.sap);
    const call::CallResult result = session.make(call);
    vor::print(stdout, options.json ? output::json_of(call, result)
                                    : output::text_of(call, result, output::screen_of(options)));
    if (!options.json && !result.verdict.hint.empty()) {
        vor::print_line(stderr, fmt::format("hint: {}", result.verdict.hint));
    }
    if (const auto milliseconds = call::time_to_wait(*call.row, result)) {
        output::print_wait(*milliseconds, options.json);
        pause_for(*milliseconds);
    }
    return call::exit_of(result.verdict.outcome);
}

int run_batch(const std::string& path, const input::Options& options)
{
    call::Batch batch = call::batch_of(path, options);
    std::vector<std::string> cutting;
    output::ConsoleReporter account(options, output::screen_of(options),
                                    [&](const call::Tally& tally, std::size_t left) {
                                        return options.json ? output::json_of(tally, batch.name(), left)
                                                            : output::text_of(tally, batch.name(), left, options);
                                    });
    const auto count = [&](const call::PreparedCall& call) {
        call::check_confirmed(call, options);
        account.expect(call::name_of(call));
        if (call.row->has(rows::cuts_link)) {
            cutting.push_back(call::named(call));
        }
    };
    if (const int exit = call::check(batch, count, output::error_printer(options.json), !options.json);
        exit != input::exit_ok) {
        return exit;
    }
    if (!call::agreed_to(cutting, fmt::format("Make {}?", vor::counted(account.calls(), "call")), options)) {
        return output::print_declined(options.json);
    }
    batch.ask();
    batch.rewind();
    call::BatchRunner runner(options, account.calls(), account, {});
    for (bool more = true; more;) {
        auto call = batch.next();
        more = call && runner.make(*call);
    }
    return runner.finish();
}

int run_serve(const input::Options& options)
{
    if (options.words.size() > 1) {
        fail_usage(options, fmt::format("unexpected argument {}", vor::quoted(options.words[1].text)));
    }
    return serve::serve(VORCFG_VERSION, options);
}

int run_check(const std::string& path, const input::Options& options)
{
    if (const auto sheet = call::spreadsheet_of(options); sheet && options.rows.empty()) {
        return site::check_rows(path, *sheet, options);
    }
    call::Batch batch = call::batch_of(path, options);
    batch.leave_input();
    std::size_t calls = 0;
    site::Planner planner({});
    const auto count = [&](const call::PreparedCall& call) {
        calls++;
        planner.add(call);
    };
    if (call::check(batch, count, output::error_printer(options.json), !options.json) != input::exit_ok) {
        return input::exit_usage;
    }
    site::print_warnings(planner.against(site::Ledger()), {batch.name(), {}, {}, options.json});
    vor::print(stdout, options.json ? output::checked_json(batch.name(), calls)
                                    : fmt::format("{}: {}, no errors\n", vor::printable(batch.name()),
                                                  vor::counted(calls, "call")));
    return input::exit_ok;
}

std::vector<std::string> operands(const input::Options& options)
{
    std::vector<std::string> texts;
    for (const input::Word& word : std::span(options.words).subspan(1)) {
        texts.push_back(word.text);
    }
    return texts;
}

int run_revert(const input::Options& options)
{
    if (!options.expired) {
        return site::run_revert(required_operand(options), options);
    }
    const std::vector<std::string> paths = operands(options);
    return site::run_revert_expired(paths.empty() ? std::vector<std::string>{"."} : paths, options);
}

int run_report(const input::Options& options)
{
    if (options.words.size() < 2) {
        required_operand(options);
    }
    return site::run_report(operands(options), options);
}

// --- Looking up ---------------------------------------------------------------------

int print_help(std::span<const input::Word> words, const input::Options& options)
{
    const bool brief = options.brief;
    if (words.empty()) {
        return brief ? print_text(help::brief_help(), options) : print_text(help::help(), options, true);
    }
    if (const input::Command* const command = input::command_named(words[0].text)) {
        return brief ? print_text(help::brief_help(*command), options)
                     : print_text(help::help(*command), options, true);
    }
    if (words.size() == 1) {
        const rows::Family& family = rows::require_family(words[0].text, rows::Expected::command_or_family);
        return brief ? print_text(help::brief_help(family), options) : print_text(help::help(family), options, true);
    }
    const rows::Row& row = rows::require_row(words[0].text, words[1].text, rows::Expected::command_or_family);
    return brief ? print_text(help::brief_help(row), options) : print_text(help::help(row), options, true);
}

int run_help(const input::Options& options)
{
    return print_help(std::span(options.words).subspan(1), options);
}

int run_list(const input::Options& options)
{
    const std::string* const family = operand(options);
    return print(help::list(family != nullptr ? &rows::require_family(*family) : nullptr, options.json));
}

int run_describe(const input::Options& options)
{
    if (options.words.size() > 3) {
        fail_usage(options, fmt::format("unexpected argument {}", vor::quoted(options.words[3].text)));
    }
    if (options.words.size() == 1 && options.json) {
        return print(output::description_json());
    }
    const bool one_family = options.words.size() > 1;
    const rows::Row* const only =
        options.words.size() > 2 ? &rows::require_row(options.words[1].text, options.words[2].text) : nullptr;
    const rows::Family* const family = one_family ? &rows::require_family(options.words[1].text) : nullptr;
    std::string text;
    for (const rows::Family* const each : rows::families()) {
        for (const rows::Row& row : each->rows) {
            const bool selected = (family == nullptr || family == each) && (only == nullptr || only == &row);
            if (selected && options.json) {
                text += output::json_of(row);
            } else if (selected) {
                text += (text.empty() ? "" : "\n") + output::description_text(row, output::screen_of(options));
            }
        }
    }
    return options.json ? print(text) : print_text(text, options, true);
}

int run_search(const input::Options& options)
{
    std::string query;
    for (const input::Word& word : std::span(options.words).subspan(1)) {
        query += word.text + ' ';
    }
    if (query.find_first_not_of(" \t\n") == std::string::npos) {
        fail_usage(options, "search needs a word");
    }
    return print(help::search(query, options.json, output::screen_of(options)));
}

int run_manual(const input::Options& options)
{
    const std::string* const name = operand(options);
    if (name == nullptr || options.json) {
        return print_text(name != nullptr ? help::manual(*name) : vor::joined(help::manual_pages(), "\n") + "\n",
                          options);
    }
    help::show_page(help::manual(*name));
    return input::exit_ok;
}

int run_completion(const input::Options& options)
{
    return print_text(help::completion_script(required_operand(options)), options);
}

// --- The table ----------------------------------------------------------------------

using enum input::CommandGroup;

constexpr input::Command table[] = {
    {make, "", "FAMILY CALL ARGUMENT...", "make a call", "", run_call},
    {make, "", "", "read lines from standard input; prompt at a terminal", "", prompt::run_prompt},
    {make, "batch", "batch FILE", "make every call in FILE; - is standard input",
     "Each line is a call, written as after vorcfg. A # begins a comment; text with spaces is put in double quotes, in "
     "which \\\" and \\\\ are a double quote and a backslash. Before the first message, the whole file is checked and "
     "each call is tried on a platform that sends nothing. The batch ends at the first failure, unless --keep-going is "
     "given; the exit code is that of the worst failure.",
     over_file<run_batch>},
    {make, "serve", "serve", "answer requests in JSON, one per line",
     "For programs in other languages: calls, describe, and plan, apply, confirm, revert and report of a site whose "
     "text, variables and secrets are in the request. Each answer is one line, in the order of the requests. "
     "vorcfg-serve(7) describes them.",
     run_serve},
    {set_up, "check", "check FILE", "validate a file; needs no gateway", "", over_file<run_check>},
    {set_up, "plan", "plan FILE", "list the calls in FILE that are not accepted yet",
     "Compares the file with the journal of the gateway and sends nothing. The settings of a gateway cannot be read "
     "back, so they are not compared. The exit code is 11 if calls are left to make, or if an apply waits for its "
     "confirmation or was not confirmed in time. vorcfg-site(7) explains the states of the lines.",
     over_file<site::run_plan>, "[--journal JOURNAL]"},
    {set_up, "apply", "apply FILE", "make the calls that the gateway has not accepted yet",
     "Makes them in the order of the file. The journal gets each call before it is sent and its verdict afterwards, so "
     "that applying again continues where the last apply ended. With --confirm, all changes are reverted unless they "
     "are confirmed in time; vorcfg-site(7) says what cannot be reverted, and what survives a closed terminal, a kill "
     "and a restart.",
     over_file<site::run_apply>, "[--journal JOURNAL]"},
    {set_up, "confirm", "confirm JOURNAL", "keep the changes of apply --confirm", "", over_file<site::run_confirm>},
    {set_up, "revert", "revert JOURNAL", "revert the changes of apply --confirm now",
     "With --expired [JOURNAL|FOLDER]..., reverts what nobody confirmed in time, in these journals and in all "
     "journals of these folders; the default is this folder. It goes on until their managers answer. Run by root, it "
     "becomes the owner of each journal.",
     run_revert},
    {set_up, "report", "report JOURNAL...", "print a site's accepted settings, or the state of several",
     "One journal is the sheet for the hand-over; several, or a folder of journals, are a line for each site. The exit "
     "code is 11 if an apply waits for its confirmation or was not confirmed in time, and of several also if anything "
     "is unknown, refused or not delivered, or a site has no settings.",
     run_report},
    {look_up, "list", "list [FAMILY]", "list all calls", "With --json, lists what describe knows of each.", run_list},
    {look_up, "describe", "describe [FAMILY [CALL]]", "print all that is known of the calls",
     "For each call: its C declaration, its arguments, what becomes of each in the message, the answers that are "
     "accepted, its codes and outcomes. The messages are observed: its example is tried on a platform that sends "
     "nothing, with other values for one argument at a time. With --json, a line for each call, as list prints it; "
     "without FAMILY, one object with all calls, managers, records and codes, which is installed as device_mgmt.json.",
     run_describe},
    {look_up, "search", "search WORD...", "find calls by what they do",
     "Lists the calls that all the words are about, the likeliest first, by their names and descriptions, those of "
     "their arguments and families, and by common other words: clock, apn, sim, alarm.",
     run_search},
    {look_up, "help", "help [COMMAND|FAMILY [CALL]]", "describe a command, a family or a call", "", run_help},
    {look_up, "manual", "manual [PAGE]", "show a manual page, or list them",
     "Shows the page in a pager at a terminal; elsewhere it prints its source, for man -l - or mandoc. With its "
     "section as in vorcfg-gpio.1, or without.",
     run_manual},
    {look_up, "completion", "completion SHELL", "print the completion script for bash or zsh",
     "To use it now: source <(vorcfg completion bash)", run_completion},
};

const input::Command& command_for(std::span<const input::Word> words)
{
    const input::Command& call = table[0];
    const input::Command& lines = table[1];
    if (words.empty()) {
        return lines;
    }
    const input::Command* const named = input::command_named(words[0].text);
    return named != nullptr ? *named : call;
}

} // namespace

std::span<const input::Command> input::commands()
{
    return table;
}

const input::Command* input::command_named(std::string_view name)
{
    const auto found = std::ranges::find(table, name, &input::Command::name);
    return name.empty() || found == std::end(table) ? nullptr : found;
}

int input::run(const input::Options& options)
{
    if (options.version) {
        return print_text("vorcfg " VORCFG_VERSION "\n", options);
    }
    if (options.help) {
        return print_help(options.words, options);
    }
    const input::Command& command = command_for(options.words);
    if (!options.words.empty()) {
        input::check_given(options, command.name.empty() ? input::a_call : command.name);
        if (options.words[0].text == "complete") { // asked by the completion scripts
            return print_text(help::completions(std::span(options.words).subspan(1)), options);
        }
    }
    return command.run(options);
}

} // namespace vorcfg
