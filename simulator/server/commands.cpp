#include "server/commands.hpp"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include <fmt/core.h>

#include "faults/parse.hpp"
#include "gateway/readings.hpp"
#include "record/stored.hpp"
#include "server/control.hpp"
#include "server/memory.hpp"
#include "server/messages.hpp"
#include "server/options.hpp"
#include "tables/managers.hpp"
#include "tables/names.hpp"
#include "text/json.hpp"
#include "text/parse.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

using vor::Json;

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

// The lines of one manager, or of one of its objects.
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
            in_manager = line.substr(0, line.size() - 1) == manager;
        } else if (in_manager && !line.starts_with("   ") && !object.empty()) {
            in_object = line.substr(2, line.size() - 3) == object;
        }
        found += in_manager && (in_object || !line.starts_with(" ")) ? line : "";
    }
    return found;
}

Json state_of(const Running& running)
{
    const World& world = running.world;
    return record::json_of(world.counters, running.recorder.lines_dropped(), world.gateway.state(), world.konfd);
}

// "left to another program: gpiomgr, canmgr"; empty: none is.
std::string left_out(const Managers& managers)
{
    std::vector<std::string> names;
    for (const std::uint16_t sap : managers.left()) {
        names.push_back(tables::manager_key(sap));
    }
    return names.empty() ? "" : fmt::format("left to another program: {}\n", vor::joined(names, ", "));
}

struct Show {
    bool json = false;
    std::string manager; // empty: all
    std::string object;

    void check(); // throws a UsageError about an unknown name
    std::runtime_error not_found(const Running& running) const
    {
        if (const auto sap = tables::sap_named(manager)) {
            running.messages.managers().expect_own(*sap);
        }
        return std::runtime_error(fmt::format("no settings of {}{}{}", manager, object.empty() ? "" : "/", object));
    }
    std::string text(const Running& running) const;
    std::string document(const Running& running) const;
};

void Show::check()
try {
    if (manager.empty() || (manager == "konfd" && object.empty())) {
        return;
    }
    if (manager == "konfd") {
        throw UsageError("konfd has no objects");
    }
    constexpr std::string_view others[] = {"konfd"};
    const std::uint16_t sap = tables::checked_sap(manager, others);
    manager = tables::manager_key(sap);
    if (!object.empty()) {
        tables::Selection rows;
        rows.of(sap);
        rows.object(object);
    }
} catch (const tables::NameError& error) {
    throw UsageError(error.what());
}

std::string Show::text(const Running& running) const
{
    const World& world = running.world;
    const std::string lines = world.konfd.text({}, 1);
    const std::string all = world.gateway.state().text() + (lines.empty() ? "" : "konfd\n" + lines);
    if (manager.empty()) {
        const std::uint64_t dropped = running.recorder.lines_dropped();
        return fmt::format("vorsim: {}{}\n{}{}", world.counters.text(),
                           dropped > 0 ? fmt::format(", {} dropped", vor::counted(dropped, "line")) : "",
                           left_out(running.messages.managers()), all);
    }
    std::string part = section(all, manager, object);
    return std::ranges::count(part, '\n') >= 2 ? part : throw not_found(running);
}

std::string Show::document(const Running& running) const
{
    Json shown = state_of(running);
    if (manager == "konfd") {
        shown = Json(shown["konfd"]);
    } else if (!manager.empty()) {
        const Json held = shown["managers"];
        if (!held.contains(manager) || (!object.empty() && !held[manager]["objects"].contains(object))) {
            throw not_found(running);
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
        if (!show.manager.empty()) {
            operands.end();
        }
        const std::string what = operands.take("MANAGER");
        const std::size_t slash = std::min(what.find('/'), what.size());
        show.manager = what.substr(0, slash);
        show.object = what.substr(std::min(slash + 1, what.size()));
    }
    show.check();
    return [show](Running& running) { return show.json ? show.document(running) : show.text(running); };
}

// The state, who is served, what is in force, and which messages came before the last reset.
Command read_overview(std::string_view text)
{
    expect_none(text);
    return [](Running& running) {
        Json all = state_of(running);
        std::map<std::uint16_t, bool> served;
        for (const tables::Manager& manager : tables::managers) {
            served[manager.sap] = false;
        }
        const Managers& managers = running.messages.managers();
        for (const auto& [sap, endpoint] : managers.endpoints()) {
            served[sap] = true;
        }
        for (const auto& [sap, is_served] : served) {
            Json& manager =
                all["served"].push_back({{"name", tables::manager_key(sap)}, {"sap", sap}, {"served", is_served}});
            if (managers.left().contains(sap)) {
                manager["without"] = true;
            }
            if (const std::string* const directory = running.messages.relay().directory(sap)) {
                manager["via"] = *directory;
            }
        }
        all["konfd_served"] = running.konfd_served;
        all["faults"] = record::json_of(running.world.faults.list(std::chrono::steady_clock::now()));
        all["readings"] = Json::array();
        for (const gateway::HeldReading& held : gateway::held_readings(running.world.gateway.measurements())) {
            all["readings"].push_back({{"text", held.text}, {"release", held.release}});
        }
        all["reset"] = running.memory.first() - 1;
        return vor::dump(all);
    };
}

Command read_watch(std::string_view text)
{
    static constexpr vor::OptionOf<WatchRequest> options[] = {{{"--json", "", ""}, vor::taken_as<&WatchRequest::json>}};
    WatchRequest watch;
    for (vor::Operands operands = operands_in(text); !operands.empty();) {
        if (!operands.take_option(options, watch) && !operands.take_option(record::filter_options, watch.filter)) {
            operands.refuse();
        }
    }
    watch.filter.check();
    return watch;
}

Command read_received(std::string_view text)
{
    using vor::OptionOf;
    static constexpr OptionOf<ReceivedRequest> options[] = {
        {{"--after", "SEQ", ""},
         [](ReceivedRequest& request, std::string_view value) {
             const auto after = vor::number_in<std::uint64_t>(value);
             request.after = after ? *after : throw UsageError("--after must be a message's number");
         }},
        {{"--within", "T", ""},
         [](ReceivedRequest& request, std::string_view value) { request.within = time_of("--within", value); }}};
    ReceivedRequest request;
    for (vor::Operands operands = operands_in(text); !operands.empty();) {
        if (!operands.take_option(options, request) && !operands.take_option(record::filter_options, request.filter)) {
            operands.refuse();
        }
    }
    request.filter.check();
    return request;
}

Command read_reset(std::string_view text)
{
    expect_none(text);
    return [](Running& running) {
        running.world.reset();
        running.memory.forget();
        return std::string();
    };
}

// Settings that replace those of the gateway once all of them have been read.
class Loading {
public:
    Loading(std::string file, std::string_view lines) : file_(std::move(file)), lines_(lines) {}

    // Reads some of the lines; whether that were the last.
    bool go_on(World& world)
    {
        constexpr int lines_in_a_turn = 20;
        record::Storing& stored = stored_ ? *stored_ : stored_.emplace(world.settings_of_konfd);
        for (int left = lines_in_a_turn; begin_ < lines_.size(); --left) {
            if (left == 0) {
                return false;
            }
            const std::size_t end = std::min(lines_.find('\n', begin_), lines_.size());
            try {
                stored.take(std::string_view(lines_).substr(begin_, end - begin_));
            } catch (const vor::JsonError&) {
                throw; // not a request of vorsim's
            } catch (const std::exception& error) {
                throw std::runtime_error(fmt::format("{}: {}", vor::escaped(file_), error.what()));
            }
            begin_ = end + 1;
        }
        world.gateway.hold(std::move(stored.state));
        world.konfd = std::move(stored.konfd);
        return true;
    }

private:
    std::string file_;
    std::string lines_;
    std::size_t begin_ = 0; // of the next
    std::optional<record::Storing> stored_;
};

Command read_load(std::string_view text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    vor::Operands operands = operands_in(text.substr(0, end));
    std::string file = operands.take("FILE");
    operands.end();
    if (end == text.size()) {
        throw UsageError("load without settings");
    }
    const auto loading = std::make_shared<Loading>(std::move(file), text.substr(end + 1));
    return [loading](Running& running) { return loading->go_on(running.world) ? std::optional("") : std::nullopt; };
}

Command read_quit(std::string_view text)
{
    expect_none(text);
    return Quit();
}

// Lists the commands that begin with the word.
[[noreturn]] void expect_form(std::string_view word)
{
    std::vector<std::string> forms;
    for (const CommandRow& row : command_rows()) {
        if (first_word(row.name) == word) {
            forms.push_back(fmt::format("{}{}{}", row.name, row.operands.empty() ? "" : " ", row.operands));
        }
    }
    throw UsageError(fmt::format("expected {}", vor::alternatives(forms)));
}

Command read_add_fault(std::string_view text)
{
    try {
        return [rule = faults::parse_rule(text)](Running& running) {
            running.messages.managers().expect_own(rule);
            return fmt::format("fault {} added\n", running.world.faults.add(rule, std::chrono::steady_clock::now()));
        };
    } catch (const faults::RuleError& error) {
        refuse_at(text, error);
    }
}

Command read_list_faults(std::string_view text)
{
    if (!text.empty()) {
        expect_form("fault");
    }
    return [](Running& running) {
        const std::string faults = running.world.faults.text(std::chrono::steady_clock::now());
        return faults.empty() ? "no faults\n" : faults;
    };
}

Command read_clear_faults(std::string_view text)
{
    const auto number = vor::number_in<unsigned>(text);
    if (!number && !text.empty()) {
        expect_form("fault");
    }
    return [number](Running& running) -> std::string {
        if (!number) {
            running.world.faults.clear();
            return "no faults\n";
        }
        return running.world.faults.clear(*number) ? fmt::format("fault {} cleared\n", *number)
                                                   : throw std::runtime_error(fmt::format("no fault {}", *number));
    };
}

Command read_stop(std::string_view text)
{
    return [sap = manager_of("stop", text)](Running& running) {
        running.messages.stop(sap);
        return fmt::format("{} stopped\n", tables::manager_key(sap));
    };
}

Command read_start(std::string_view text)
{
    return [sap = manager_of("start", text)](Running& running) {
        running.messages.start(sap);
        return fmt::format("{} started\n", tables::manager_key(sap));
    };
}

Command read_setting(std::string_view text)
{
    try {
        return [setting = gateway::parse_setting(text)](Running& running) {
            setting.apply(running.world.gateway.measurements());
            return fmt::format("{}\n", setting.result);
        };
    } catch (const std::exception& error) {
        throw UsageError(error.what());
    }
}

constexpr CommandRow rows[] = {
    {"show", "[--json] [MANAGER[/OBJECT]]", "print the settings that the managers hold", read_show},
    {"watch", "", "", read_watch},
    {"received", "", "", read_received},
    {"overview", "", "", read_overview},
    {"fault add", "RULE", "add a fault rule such as \"canmgr: status 7, twice\"", read_add_fault, true, true},
    {"fault list", "", "list the rules and how often each one acted", read_list_faults, true, true},
    {"fault clear", "[N]", "remove rule N, or all rules", read_clear_faults, true, true},
    {"stop", "MANAGER", "take a manager down", read_stop, true, true},
    {"start", "MANAGER", "bring a manager back", read_start, true, true},
    {"set", "READING VALUE",
     "set a reading: temperature 850, port 3 polling_count 0\n"
     "\"temperature wander\" releases it, \"temperature 850, 860,\n"
     "then wander\" sets it for one query each, \"counting 100\"\n"
     "makes counters run 100 times as fast",
     read_setting, true, true},
    {"reset", "", "clear all settings, readings and counters", read_reset, true},
    {"load", "FILE", "replace the settings by those of a state file", read_load, false, false, true},
    {"quit", "", "stop the gateway and wait for its end", read_quit},
};

// Removes the name from the line, where it begins with it.
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
    throw UsageError(fmt::format("a command must not exceed {} bytes or hold control characters", longest_line));
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
            const bool carries = row.carries_document;
            if ((row.raw && (line.size() > longest_line || std::ranges::any_of(line, is_control))) ||
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
    throw UsageError(fmt::format("unknown request \"{}\"", vor::escaped(first_word(line))));
}

} // namespace vorsim::server
