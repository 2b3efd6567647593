#include "client/commands.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "client/ask.hpp"
#include "record/filter.hpp"
#include "server/commands.hpp"
#include "server/options.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using vor::Json;
using Arguments = std::vector<std::string>;
using std::chrono::milliseconds;

struct Row {
    std::string_view name;
    std::string_view operands;
    std::string_view does;
    int (*run)(Arguments arguments);
};

bool take(Arguments& arguments, std::string_view option)
{
    const bool there = !arguments.empty() && arguments.front() == option;
    if (there) {
        arguments.erase(arguments.begin());
    }
    return there;
}

void nothing_more(const Arguments& arguments)
{
    if (!arguments.empty()) {
        throw UsageError(fmt::format("\"{}\" is too much here", arguments.front()));
    }
}

std::string value_of(Arguments& arguments, std::string_view option)
{
    if (arguments.empty()) {
        throw UsageError(fmt::format("{} needs a value", option));
    }
    const std::string value = arguments.front();
    arguments.erase(arguments.begin());
    return value;
}

// "500ms", "10s", "2m"
milliseconds duration(const std::string& text)
{
    constexpr std::pair<std::string_view, int> units[] = {{"ms", 1}, {"s", 1000}, {"m", 60'000}};
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    const auto* const found = std::ranges::find(units, unit, [](const auto& one) { return one.first; });
    if (error != std::errc{} || number < 0 || number > 10'000 * 60 || found == std::end(units)) {
        throw UsageError(fmt::format("--within is \"{}\": must be a time such as 500ms, 10s or 2m", text));
    }
    return milliseconds(std::int64_t{number} * found->second);
}

int show(Arguments arguments)
{
    Json request = {{"do", "show"}, {"json", false}, {"manager", ""}, {"object", ""}};
    while (!arguments.empty()) {
        if (take(arguments, "--json")) {
            request["json"] = true;
        } else if (arguments.front().starts_with("-") || request["manager"] != "") {
            throw UsageError(fmt::format("show takes --json and one MANAGER[/OBJECT], not \"{}\"", arguments.front()));
        } else {
            const std::string what = operand(arguments, "MANAGER");
            const std::size_t slash = std::min(what.find('/'), what.size());
            request["manager"] = what.substr(0, slash);
            request["object"] = what.substr(std::min(slash + 1, what.size()));
        }
    }
    print(ask(request));
    return 0;
}

void show_watched(const Line& line, const Filter& filter, bool json)
{
    if (line.lost) {
        vor::print_line(stderr,
                        fmt::format("vorsim: {} not shown: not read in time", vor::counted(*line.lost, "message")));
    } else if (filter.passes(line.record)) {
        print((json ? line.text : line.record.line) + "\n");
    }
}

int watch(Arguments arguments)
{
    Filter filter;
    bool json = false;
    while (!arguments.empty()) {
        if (take(arguments, "--json")) {
            json = true;
        } else if (!filter.take(arguments)) {
            throw UsageError(fmt::format("watch takes --json and {}, not \"{}\"", filter_help, arguments.front()));
        }
    }
    Watch watch;
    while (watch.read([&](const Line& line) { show_watched(line, filter, json); })) {}
    return 0;
}

int wait(Arguments arguments)
{
    Json request = {{"do", "wait"}};
    milliseconds within{10'000};
    while (!arguments.empty()) {
        if (take(arguments, "--call")) {
            request["call"] = value_of(arguments, "--call");
        } else if (take(arguments, "--object")) {
            request["object"] = value_of(arguments, "--object");
        } else if (take(arguments, "--within")) {
            within = duration(value_of(arguments, "--within"));
        } else {
            throw UsageError(fmt::format("wait takes --call, --object and --within, not \"{}\"", arguments.front()));
        }
    }
    if (!request.contains("call")) {
        throw UsageError("wait needs --call NAME");
    }
    Asked asked(request);
    std::string answer;
    try {
        answer = asked.receive(milliseconds(10'000));
        if (answer.starts_with("?")) { // none yet
            answer = answer.size() > 2 ? answer.substr(2) : asked.receive(within);
        }
    } catch (const std::runtime_error&) {
        throw std::runtime_error(fmt::format(
            "no {}{} within {} ms", request["call"].string(),
            request.contains("object") ? fmt::format(" of {}", request["object"].string()) : "", within.count()));
    }
    if (!answer.starts_with("+")) {
        throw std::runtime_error(answer.empty() ? "the gateway has ended" : answer.substr(1, answer.find('\n') - 1));
    }
    return 0;
}

int reset(Arguments arguments)
{
    nothing_more(arguments);
    ask(Json({{"do", "reset"}}));
    return 0;
}

int load(Arguments arguments)
{
    const std::string path = operand(arguments, "FILE");
    nothing_more(arguments);
    const std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file || !text) {
        throw std::runtime_error(fmt::format("cannot read the state {}", path));
    }
    const Json state = Json::read(text.str()).value_or(Json());
    if (!state.is_object() || state.value("schema", 0) != 1) {
        throw std::runtime_error(fmt::format("{} is no state of a schema that is known (1)", path));
    }
    ask(Json({{"do", "load"}, {"state", state}}));
    return 0;
}

int quit(Arguments arguments)
{
    nothing_more(arguments);
    ask(Json({{"do", "quit"}}));
    return 0;
}

int command(std::string_view name, const Arguments& words)
{
    const std::string rest = fmt::format("{}", fmt::join(words, " "));
    command_of(fmt::format("{} {}", name, rest)); // what is wrong with it is said here
    print(ask(Json({{"do", name}, {"words", rest}})));
    return 0;
}

int fault(Arguments arguments)
{
    return command("fault", arguments);
}

int stop(Arguments arguments)
{
    return command("stop", arguments);
}

int start(Arguments arguments)
{
    return command("start", arguments);
}

int set(Arguments arguments)
{
    return command("set", arguments);
}

constexpr Row commands[] = {
    {"show", "[--json] [MANAGER[/OBJECT]]", "print what the running gateway has been told", show},
    {"watch", "[--json] [FILTER]...", "print its messages as they come", watch},
    {"wait", "--call NAME [--object O] [--within T]", "until such a message came (T: 500ms, 10s, 2m; default 10s)",
     wait},
    {"reset", "", "let it forget everything, counters included", reset},
    {"load", "FILE", "let it hold what a state file holds", load},
    {"quit", "", "stop it, and wait for its end", quit},
    {"fault", "add RULE", "have it fail, as in \"canmgr: status 7, twice\"", fault},
    {"fault", "list", "its rules, with how often each acted", fault},
    {"fault", "clear [N]", "take one away, or all", fault},
    {"stop", "MANAGER", "the manager is gone, until it is started", stop},
    {"start", "MANAGER", "it is there again", start},
    {"set", "READING VALUE",
     "as in \"temperature 850\", \"port 3 polling_count 0\"; \"temperature wander\"\n"
     "           lets it go, \"counting 100\" has all counters count so many times as fast",
     set},
    {"decode", "[--json] [--bytes] [FILTER]... FILE", "print a journal", decode},
    {"replay", "[--state FILE] FILE", "send a journal's requests again and compare", replay},
};

} // namespace

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw std::runtime_error(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
    }
}

std::string operand(Arguments& arguments, const std::string& what)
{
    if (arguments.empty() || arguments.front().starts_with("-")) {
        throw UsageError(arguments.empty() ? fmt::format("{} is missing", what)
                                           : fmt::format("unknown option \"{}\"", arguments.front()));
    }
    const std::string word = arguments.front();
    arguments.erase(arguments.begin());
    return word;
}

std::string help()
{
    std::string text;
    for (const Row& command : commands) {
        text += fmt::format("       vorsim {}{}{}\n           {}\n", command.name, command.operands.empty() ? "" : " ",
                            command.operands, command.does);
    }
    return text + fmt::format("FILTER is one of {}\n", filter_help);
}

std::optional<int> run(const Arguments& arguments)
{
    if (arguments.empty()) {
        return {};
    }
    const auto* const found = std::ranges::find(commands, arguments.front(), &Row::name);
    if (found == std::end(commands)) {
        return {};
    }
    return found->run({arguments.begin() + 1, arguments.end()});
}

} // namespace vorsim::client
