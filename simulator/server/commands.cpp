#include "server/commands.hpp"

#include <algorithm>
#include <map>
#include <vector>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "gateway/readings.hpp"
#include "record/stored.hpp"
#include "server/control.hpp"
#include "server/messages.hpp"
#include "server/options.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

using vor::Json;
using Carries = CommandRow::Carries;

constexpr std::size_t longest_line = 4000;

vor::Operands operands_in(std::string_view text)
{
    std::vector<std::string> words;
    for (vor::Word& word : vor::words_in(text)) {
        words.push_back(std::move(word.text));
    }
    return vor::Operands(std::move(words));
}

void expect_none(std::string_view text)
{
    operands_in(text).end();
}

// The lines that concern one manager, or one of its objects.
std::string section(const std::string& text, const std::string& manager, const std::string& object)
{
    std::string found;
    bool in_manager = false;
    bool in_object = object.empty();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin) + 1;
        const std::string_view line(text.data() + begin, end - begin);
        begin = end;
        if (!line.starts_with(" ")) {
            in_manager = line.substr(0, line.find_first_of("(\n")) == manager;
        } else if (in_manager && !line.starts_with("   ") && !object.empty()) {
            in_object = line.substr(2, line.size() - 3) == object;
        }
        found += in_manager && (in_object || !line.starts_with(" ")) ? line : "";
    }
    return found;
}

Json held_by(const Running& running)
{
    const World& world = running.world;
    return json_of(world.counters, running.recorder.lines_lost(), world.gateway.state(), world.konfd);
}

struct Show {
    bool json = false;
    std::string manager; // empty: all
    std::string object;

    std::runtime_error nothing_held() const
    {
        return std::runtime_error(
            fmt::format("nothing is held for {}{}{}", manager, object.empty() ? "" : "/", object));
    }
    std::string text(const Running& running) const;
    std::string document(const Running& running) const;
};

std::string Show::text(const Running& running) const
{
    const World& world = running.world;
    const std::string lines = world.konfd.text({}, 1);
    const std::string all = world.gateway.state().text() + (lines.empty() ? "" : "konfd\n" + lines);
    if (manager.empty()) {
        const std::uint64_t lost = running.recorder.lines_lost();
        return fmt::format("vorsim: {}{}\n{}", world.counters.text(),
                           lost > 0 ? fmt::format(", {} lost", vor::counted(lost, "line")) : "", all);
    }
    std::string part = section(all, manager, object);
    return std::ranges::count(part, '\n') >= 2 ? part : throw nothing_held();
}

std::string Show::document(const Running& running) const
{
    Json shown = held_by(running);
    if (manager == "konfd") {
        shown = Json(shown["konfd"]);
    } else if (!manager.empty()) {
        const Json held = shown["managers"];
        if (!held.contains(manager) || (!object.empty() && !held[manager]["objects"].contains(object))) {
            throw nothing_held();
        }
        shown = object.empty() ? held[manager] : held[manager]["objects"][object];
    }
    return fmt::format("{}\n", vor::dump(shown, 2));
}

Command read_show(std::string_view text)
{
    static constexpr vor::OptionOf<Show> options[] = {{{"--json", "", ""}, vor::taken_as<&Show::json>}};
    Show show;
    for (vor::Operands operands = operands_in(text); !operands.empty();) {
        if (operands.take_option(options, show)) {
            continue;
        }
        if (operands.front().starts_with("-") || !show.manager.empty()) {
            throw UsageError(fmt::format("show takes --json and one MANAGER[/OBJECT], not \"{}\"", operands.front()));
        }
        const std::string what = operands.take();
        const std::size_t slash = std::min(what.find('/'), what.size());
        show.manager = what.substr(0, slash);
        show.object = what.substr(std::min(slash + 1, what.size()));
    }
    return [show](Running& running) { return show.json ? show.document(running) : show.text(running); };
}

// The state, and beside it who is served and the faults in force.
Command read_overview(std::string_view text)
{
    expect_none(text);
    return [](Running& running) {
        Json all = held_by(running);
        std::map<std::uint16_t, bool> served;
        for (const Manager& manager : managers) {
            served[manager.sap] = false;
        }
        for (const auto& [sap, inlet] : running.messages.served()) {
            served[sap] = true;
        }
        for (const auto& [sap, is_served] : served) {
            all["served"].push_back({{"name", manager_key(sap)}, {"sap", sap}, {"served", is_served}});
        }
        all["konfd_served"] = running.konfd_served;
        all["faults"] = json_of(running.world.faults.list(std::chrono::steady_clock::now()));
        return vor::dump(all);
    };
}

Command read_watch(std::string_view text)
{
    static constexpr vor::OptionOf<WatchRequest> options[] = {
        {{"--json", "", ""}, [](WatchRequest& watch, std::string_view) { watch.as = WatchRequest::As::json; }}};
    WatchRequest watch;
    for (vor::Operands operands = operands_in(text); !operands.empty();) {
        if (!operands.take_option(options, watch) && !operands.take_option(filter_options, watch.filter)) {
            throw UsageError(fmt::format("watch takes --json and {}, not \"{}\"", filter_help(), operands.front()));
        }
    }
    return watch;
}

Command read_events(std::string_view text)
{
    expect_none(text);
    return WatchRequest{.as = WatchRequest::As::event, .filter = {}};
}

void take_within(Wait& wait, std::string_view text)
{
    const auto time = vor::time_in(text);
    if (!time) {
        throw UsageError(fmt::format("--within is \"{}\": must be a time such as 500ms, 10s or 2m", text));
    }
    wait.within = *time;
}

Command read_wait(std::string_view text)
{
    static constexpr vor::OptionOf<Wait> options[] = {{{"--call", "NAME", ""}, vor::taken_as<&Wait::call>},
                                                      {{"--object", "O", ""}, vor::taken_as<&Wait::object>},
                                                      {{"--within", "T", ""}, take_within}};
    Wait wait;
    for (vor::Operands operands = operands_in(text); !operands.empty();) {
        if (!operands.take_option(options, wait)) {
            throw UsageError(fmt::format("wait takes --call, --object and --within, not \"{}\"", operands.front()));
        }
    }
    return !wait.call.empty() ? wait : throw UsageError("wait needs --call NAME");
}

Command read_reset(std::string_view text)
{
    expect_none(text);
    return [](Running& running) {
        running.world.reset();
        running.control.forget_past();
        return std::string();
    };
}

void load(World& world, const std::string& file, const std::string& text)
{
    const Json document = Json::read(text).value_or(Json());
    if (!document.is_object() || document.value("schema", 0) != 1) {
        throw std::runtime_error(fmt::format("{} is no state of a schema that is known (1)", file));
    }
    State state = stored_state(document.at("managers"));
    konfd::Konfd konfd(world.settings_of_konfd);
    if (const Json* const lines = document.find("konfd")) {
        store_konfd(konfd, *lines);
    }
    world.gateway.hold(std::move(state));
    world.konfd = std::move(konfd);
}

// Without the document, the file could not be read.
Command read_load(std::string_view text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    vor::Operands operands = operands_in(text.substr(0, end));
    const std::string file = operands.take("FILE");
    operands.end();
    return [file, document = std::string(text.substr(end))](Running& running) {
        if (document.empty()) {
            throw std::runtime_error(fmt::format("cannot read the state {}", file));
        }
        load(running.world, file, document.substr(1));
        return std::string();
    };
}

Command read_quit(std::string_view text)
{
    expect_none(text);
    return Quit();
}

// How the gateway behaves from now on.
Command switching(Request act)
{
    return [act = std::move(act)](Running& running) {
        try {
            return act(running);
        } catch (const std::exception& error) {
            throw std::runtime_error(fmt::format("not done: {}", error.what()));
        }
    };
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
        return switching([rule = faults::parse_rule(text)](Running& running) {
            return fmt::format("fault {} is in force\n",
                               running.world.faults.add(rule, std::chrono::steady_clock::now()));
        });
    } catch (const faults::RuleError& complaint) {
        throw UsageError(fmt::format("fault add: column {} of the rule: {}", complaint.column, complaint.what()));
    }
}

Command read_list_faults(std::string_view text)
{
    if (!text.empty()) {
        expect_form("fault");
    }
    return switching([](Running& running) {
        const std::string faults = running.world.faults.text(std::chrono::steady_clock::now());
        return faults.empty() ? "no faults\n" : faults;
    });
}

Command read_clear_faults(std::string_view text)
{
    const auto number = vor::number_in<unsigned>(text);
    if (!number && !text.empty()) {
        expect_form("fault");
    }
    return switching([number](Running& running) -> std::string {
        if (!number) {
            running.world.faults.clear();
            return "no faults\n";
        }
        return running.world.faults.clear(*number)
                   ? fmt::format("fault {} is cleared\n", *number)
                   : throw std::runtime_error(fmt::format("there is no fault {}", *number));
    });
}

std::uint16_t manager_in(std::string_view command, std::string_view name)
{
    const auto sap = faults::sap_named(name);
    if (!sap) {
        throw UsageError(fmt::format("{} takes a manager's name or its SAP, not \"{}\"", command, vor::escaped(name)));
    }
    return *sap;
}

Command read_stop(std::string_view text)
{
    return switching([sap = manager_in("stop", text)](Running& running) {
        running.messages.stop(sap);
        return fmt::format("{} is stopped\n", manager_key(sap));
    });
}

Command read_start(std::string_view text)
{
    return switching([sap = manager_in("start", text)](Running& running) {
        running.messages.start(sap);
        return fmt::format("{} is served\n", manager_key(sap));
    });
}

Command read_setting(std::string_view text)
{
    try {
        return switching([setting = parse_setting(text)](Running& running) {
            setting.apply(running.world.gateway.measurements());
            return fmt::format("{}\n", setting.said);
        });
    } catch (const std::exception& error) {
        throw UsageError(fmt::format("set: {}", error.what()));
    }
}

constexpr CommandRow rows[] = {
    {"show", "[--json] [MANAGER[/OBJECT]]", "print what the running gateway has been told", read_show},
    {"overview", "", "", read_overview},
    {"watch", "[--json] [FILTER]...", "print its messages as they come", read_watch, Carries::stream},
    {"events", "", "", read_events, Carries::stream},
    {"wait", "--call NAME [--object O] [--within T]", "until such a message came (T: 500ms, 10s, 2m; default 10s)",
     read_wait},
    {"reset", "", "let it forget everything, counters included", read_reset, Carries::line, true},
    {"load", "FILE", "let it hold what a state file holds", read_load, Carries::document},
    {"quit", "", "stop it, and wait for its end", read_quit},
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

void refuse_line()
{
    throw UsageError(fmt::format("a command has at most {} bytes and no control characters", longest_line));
}

Command parse_command(std::string_view request)
{
    const std::string_view line = request.substr(0, request.find('\n'));
    const auto is_control = [](unsigned char c) { return c < 0x20; };
    try {
        for (const CommandRow& row : rows) {
            std::string_view operands = line;
            if (!take_name(operands, row.name)) {
                continue;
            }
            const bool carries = row.carries == Carries::document;
            if ((row.sentence && (line.size() > longest_line || std::ranges::any_of(line, is_control))) ||
                (!carries && line.size() != request.size())) {
                refuse_line();
            }
            return row.read(carries ? request.substr(line.size() - operands.size()) : operands);
        }
    } catch (const vor::WordError& error) {
        throw UsageError(fmt::format("column {}: {}", error.column, error.what()));
    }
    if (command_named(first_word(line)) != nullptr) {
        expect_form(first_word(line));
    }
    throw UsageError(fmt::format("\"{}\" is nothing that can be asked for", vor::escaped(first_word(line))));
}

} // namespace vorsim
