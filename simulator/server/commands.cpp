#include "server/commands.hpp"

#include <algorithm>
#include <vector>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "text/options.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

using Carries = CommandRow::Carries;

constexpr std::size_t longest_line = 4000;

// The operands of a command, taken one after the other.
class Operands {
public:
    explicit Operands(std::string_view text) : words_(vor::words_in(text))
    {
        for (const vor::Word& word : words_) {
            left_.push_back(word.text);
        }
    }

    bool empty() const { return at_ == left_.size(); }
    std::string_view front() const { return left_[at_]; }
    std::string_view take() { return left_[at_++]; }
    // The option in front, where it is one of these; null where it is not.
    template <class Row>
    const Row* take_option(std::span<const Row> rows, std::string_view& value)
    {
        const auto option = vor::option_in(rows, std::span<const std::string_view>(left_).subspan(at_));
        if (!option) {
            return nullptr;
        }
        at_ += option->used;
        value = option->value;
        return option->row;
    }
    bool take_json()
    {
        static constexpr vor::Option json[] = {{"--json", "", ""}};
        std::string_view none;
        return take_option(std::span<const vor::Option>(json), none) != nullptr;
    }
    void end() const
    {
        if (!empty()) {
            throw UsageError(fmt::format("\"{}\" is too much here", front()));
        }
    }

private:
    std::vector<vor::Word> words_;
    std::vector<std::string_view> left_;
    std::size_t at_ = 0;
};

Command read_show(std::string_view text)
{
    Show show;
    for (Operands operands(text); !operands.empty();) {
        if (operands.take_json()) {
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
    Watch watch;
    for (Operands operands(text); !operands.empty();) {
        std::string_view value;
        if (operands.take_json()) {
            watch.json = true;
        } else if (const auto* const option = operands.take_option(filter_options(), value)) {
            watch.filter.set(*option, value);
        } else {
            throw UsageError(fmt::format("watch takes --json and {}, not \"{}\"", filter_help(), operands.front()));
        }
    }
    return watch;
}

struct WaitOption : vor::Option {
    void (*take)(Wait& wait, std::string_view value);
};

void take_within(Wait& wait, std::string_view value)
{
    const auto time = vor::time_in(value);
    if (!time) {
        throw UsageError(fmt::format("--within is \"{}\": must be a time such as 500ms, 10s or 2m", value));
    }
    wait.within = *time;
}

constexpr WaitOption wait_options[] = {
    {{"--call", "NAME", ""}, [](Wait& wait, std::string_view value) { wait.call = value; }},
    {{"--object", "O", ""}, [](Wait& wait, std::string_view value) { wait.object = value; }},
    {{"--within", "T", ""}, take_within},
};

Command read_wait(std::string_view text)
{
    Wait wait;
    for (Operands operands(text); !operands.empty();) {
        std::string_view value;
        const auto* const option = operands.take_option(std::span<const WaitOption>(wait_options), value);
        if (option == nullptr) {
            throw UsageError(fmt::format("wait takes --call, --object and --within, not \"{}\"", operands.front()));
        }
        option->take(wait, value);
    }
    if (wait.call.empty()) {
        throw UsageError("wait needs --call NAME");
    }
    return wait;
}

template <class Plain>
Command read_plain(std::string_view text)
{
    Operands(text).end();
    return Request(Plain());
}

Command read_load(std::string_view text)
{
    Operands operands(text);
    if (operands.empty() || operands.front().starts_with("-")) {
        throw UsageError(operands.empty() ? "FILE is missing" : fmt::format("unknown option \"{}\"", operands.front()));
    }
    Load load{.file = std::string(operands.take()), .document = {}};
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

constexpr CommandRow rows[] = {
    {.name = "show",
     .operands = "[--json] [MANAGER[/OBJECT]]",
     .about = "print what the running gateway has been told",
     .read = read_show},
    {.name = "overview", .operands = "", .about = "", .read = read_plain<Overview>},
    {.name = "watch",
     .operands = "[--json] [FILTER]...",
     .about = "print its messages as they come",
     .read = read_watch,
     .carries = Carries::stream},
    {.name = "wait",
     .operands = "--call NAME [--object O] [--within T]",
     .about = "until such a message came (T: 500ms, 10s, 2m; default 10s)",
     .read = read_wait},
    {.name = "reset",
     .operands = "",
     .about = "let it forget everything, counters included",
     .read = read_plain<Reset>,
     .on_page = true},
    {.name = "load",
     .operands = "FILE",
     .about = "let it hold what a state file holds",
     .read = read_load,
     .carries = Carries::document},
    {.name = "quit", .operands = "", .about = "stop it, and wait for its end", .read = read_plain<Quit>},
    {.name = "fault add",
     .operands = "RULE",
     .about = "have it fail, as in \"canmgr: status 7, twice\"",
     .read = read_add_fault,
     .sentence = true,
     .on_page = true},
    {.name = "fault list",
     .operands = "",
     .about = "its rules, with how often each acted",
     .read = read_list_faults,
     .sentence = true,
     .on_page = true},
    {.name = "fault clear",
     .operands = "[N]",
     .about = "take one away, or all",
     .read = read_clear_faults,
     .sentence = true,
     .on_page = true},
    {.name = "stop",
     .operands = "MANAGER",
     .about = "the manager is gone, until it is started",
     .read = [](std::string_view text) -> Command { return Request(Switch(StopManager{manager_in("stop", text)})); },
     .sentence = true,
     .on_page = true},
    {.name = "start",
     .operands = "MANAGER",
     .about = "it is there again",
     .read = [](std::string_view text) -> Command { return Request(Switch(StartManager{manager_in("start", text)})); },
     .sentence = true,
     .on_page = true},
    {.name = "set",
     .operands = "READING VALUE",
     .about = "as in \"temperature 850\", \"port 3 polling_count 0\"; \"temperature wander\"\n"
              "           lets it go, \"counting 100\" has all counters count so many times as fast",
     .read = read_setting,
     .sentence = true,
     .on_page = true},
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
