#include "server/commands.hpp"

#include <algorithm>
#include <vector>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "server/operands.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

using Carries = CommandRow::Carries;

constexpr std::size_t longest_line = 4000;

std::vector<std::string> words_of(std::string_view text)
{
    std::vector<std::string> words;
    for (vor::Word& word : vor::words_in(text)) {
        words.push_back(std::move(word.text));
    }
    return words;
}

Command read_show(std::string_view text)
{
    const auto words = words_of(text);
    Show show;
    for (Operands operands(words); !operands.empty();) {
        if (operands.take_option(json_option)) {
            show.json = true;
            continue;
        }
        if (operands.front().starts_with("-") || !show.manager.empty()) {
            throw UsageError(fmt::format("show takes --json and one MANAGER[/OBJECT], not \"{}\"", operands.front()));
        }
        const std::string_view what = operands.take();
        const std::size_t slash = std::min(what.find('/'), what.size());
        show.manager = what.substr(0, slash);
        show.object = what.substr(std::min(slash + 1, what.size()));
    }
    return Request(std::move(show));
}

Command read_watch(std::string_view text)
{
    const auto words = words_of(text);
    Watch watch;
    for (Operands operands(words); !operands.empty();) {
        if (operands.take_option(json_option)) {
            watch.as = Watch::As::json;
        } else if (!operands.take_filter(watch.filter)) {
            throw UsageError(fmt::format("watch takes --json and {}, not \"{}\"", filter_help(), operands.front()));
        }
    }
    return watch;
}

Command read_events(std::string_view text)
{
    const auto words = words_of(text);
    Operands(words).end();
    return Watch{.as = Watch::As::event, .filter = {}};
}

std::chrono::milliseconds time_within(std::string_view text)
{
    const auto time = vor::time_in(text);
    if (!time) {
        throw UsageError(fmt::format("--within is \"{}\": must be a time such as 500ms, 10s or 2m", text));
    }
    return *time;
}

Command read_wait(std::string_view text)
{
    const auto words = words_of(text);
    Wait wait;
    for (Operands operands(words); !operands.empty();) {
        if (const auto call = operands.take_option({"--call", "NAME", ""})) {
            wait.call = *call;
        } else if (const auto object = operands.take_option({"--object", "O", ""})) {
            wait.object = *object;
        } else if (const auto within = operands.take_option({"--within", "T", ""})) {
            wait.within = time_within(*within);
        } else {
            throw UsageError(fmt::format("wait takes --call, --object and --within, not \"{}\"", operands.front()));
        }
    }
    if (wait.call.empty()) {
        throw UsageError("wait needs --call NAME");
    }
    return wait;
}

template <class Plain>
Command read_plain(std::string_view text)
{
    const auto words = words_of(text);
    Operands(words).end();
    return Request(Plain());
}

Command read_load(std::string_view text)
{
    const auto words = words_of(text);
    Operands operands(words);
    Load load{.file = std::string(operands.take("FILE")), .document = {}};
    operands.end();
    return Request(std::move(load));
}

// "fault add RULE, fault list or fault clear [N]"
[[noreturn]] void expect_form(std::string_view command)
{
    std::vector<std::string> forms;
    for (const CommandRow& row : command_rows()) {
        if (first_word(row.name) == command) {
            forms.push_back(fmt::format("{}{}{}", row.name, row.operands.empty() ? "" : " ", row.operands));
        }
    }
    std::string text = forms.front();
    for (std::size_t at = 1; at < forms.size(); ++at) {
        text += (at + 1 < forms.size() ? ", " : " or ") + forms[at];
    }
    throw UsageError(fmt::format("expected {}", text));
}

Command read_add_fault(std::string_view text)
{
    try {
        return Request(Switch(AddFault{faults::parse_rule(text)}));
    } catch (const faults::Complaint& complaint) {
        throw UsageError(fmt::format("fault add: column {} of the rule: {}", complaint.column, complaint.what()));
    }
}

Command read_list_faults(std::string_view text)
{
    if (!text.empty()) {
        expect_form("fault");
    }
    return Request(Switch(ListFaults()));
}

Command read_clear_faults(std::string_view text)
{
    const auto number = vor::number_in<unsigned>(text);
    if (!number && !text.empty()) {
        expect_form("fault");
    }
    return Request(Switch(ClearFaults{number}));
}

std::uint16_t manager_in(std::string_view command, std::string_view name)
{
    const auto sap = faults::sap_named(name);
    if (!sap) {
        throw UsageError(fmt::format("{} takes a manager's name or its SAP, not \"{}\"", command, vor::escaped(name)));
    }
    return *sap;
}

Command read_setting(std::string_view text)
{
    try {
        return Request(Switch(parse_setting(text)));
    } catch (const std::exception& error) {
        throw UsageError(fmt::format("set: {}", error.what()));
    }
}

Command read_stop(std::string_view text)
{
    return Request(Switch(StopManager{manager_in("stop", text)}));
}

Command read_start(std::string_view text)
{
    return Request(Switch(StartManager{manager_in("start", text)}));
}

constexpr CommandRow rows[] = {
    {"show", "[--json] [MANAGER[/OBJECT]]", "print what the running gateway has been told", read_show},
    {"overview", "", "", read_plain<Overview>},
    {"watch", "[--json] [FILTER]...", "print its messages as they come", read_watch, Carries::stream},
    {"events", "", "", read_events, Carries::stream},
    {"wait", "--call NAME [--object O] [--within T]", "until such a message came (T: 500ms, 10s, 2m; default 10s)",
     read_wait},
    {"reset", "", "let it forget everything, counters included", read_plain<Reset>, Carries::line, true},
    {"load", "FILE", "let it hold what a state file holds", read_load, Carries::document},
    {"quit", "", "stop it, and wait for its end", read_plain<Quit>},
    {"fault add", "RULE", "have it fail, as in \"canmgr: status 7, twice\"", read_add_fault, Carries::line, true, true},
    {"fault list", "", "its rules, with how often each acted", read_list_faults, Carries::line, true, true},
    {"fault clear", "[N]", "take one away, or all", read_clear_faults, Carries::line, true, true},
    {"stop", "MANAGER", "the manager is gone, until it is started", read_stop, Carries::line, true, true},
    {"start", "MANAGER", "it is there again", read_start, Carries::line, true, true},
    {"set", "READING VALUE",
     "as in \"temperature 850\", \"port 3 polling_count 0\"; \"temperature wander\"\n"
     "           lets it go, \"counting 100\" has all counters count so many times as fast",
     read_setting, Carries::line, true, true},
};

// Whether the line is of that name, which is then taken off.
bool take_name(std::string_view& line, std::string_view name)
{
    const bool begins = line.starts_with(name) && (line.size() == name.size() || line[name.size()] == ' ');
    line.remove_prefix(begins ? std::min(name.size() + 1, line.size()) : 0);
    return begins;
}

Command parse_line(std::string_view line)
{
    std::string_view operands = line;
    for (const CommandRow& row : rows) {
        if (take_name(operands, row.name)) {
            return row.read(operands);
        }
    }
    if (command_named(first_word(line)) != nullptr) {
        expect_form(first_word(line));
    }
    throw UsageError(fmt::format("\"{}\" is nothing that can be asked for", vor::escaped(first_word(line))));
}

} // namespace

std::string_view first_word(std::string_view line)
{
    return line.substr(0, line.find(' '));
}

std::span<const CommandRow> command_rows()
{
    return rows;
}

const CommandRow* command_named(std::string_view word)
{
    const auto* const row = std::ranges::find(rows, word, [](const auto& one) { return first_word(one.name); });
    return row != std::end(rows) ? row : nullptr;
}

Command parse_command(std::string_view request)
{
    const UsageError unreadable(fmt::format("a command has at most {} bytes and no control characters", longest_line));
    const std::string_view line = request.substr(0, request.find('\n'));
    if (line.size() > longest_line || std::ranges::any_of(line, [](unsigned char c) { return c < 0x20; })) {
        throw unreadable;
    }
    try {
        Command command = parse_line(line);
        if (line.size() < request.size()) {
            auto* const one = std::get_if<Request>(&command);
            auto* const load = one != nullptr ? std::get_if<Load>(one) : nullptr;
            if (load == nullptr) {
                throw unreadable;
            }
            load->document = request.substr(line.size() + 1);
        }
        return command;
    } catch (const vor::WordError& error) {
        throw UsageError(fmt::format("column {}: {}", error.column, error.what()));
    }
}

} // namespace vorsim
