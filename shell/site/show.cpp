#include "site/show.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "output/output.hpp"
#include "site/clock.hpp"
#include "text/text.hpp"

namespace vorcfg {

using vor::Json;

namespace {

std::string when_done(const Entry& entry)
{
    return fmt::format("{} {}", entry.outcome == name_of(Outcome::unread) ? "delivered" : entry.outcome,
                       minute_of(entry.ended));
}

// "ip_address 192.168.1.11 (was 192.168.1.10), config_option 0 (was 1)"
std::string changes_of(const Due& line)
{
    const Json now = Json::parse(line.said.arguments);
    const Json before = Json::parse(line.before->said.arguments);
    std::string text;
    for (const Argument& argument : line.said.row->arguments()) {
        const auto value_in = [&](const Json& json) {
            const Json* const value = json.find(argument.name);
            return value != nullptr ? shown(argument, *value) : "not given";
        };
        if (!argument.is_count && value_in(now) != value_in(before)) {
            text += fmt::format("{}{} {} (was {})", text.empty() ? "" : ", ", argument.name, value_in(now),
                                value_in(before));
        }
    }
    return text;
}

std::string open_text(const Entry& open)
{
    const std::string verdict = open.verdict.empty() ? "no verdict" : open.verdict;
    return fmt::format("begun {}, {}", minute_of(open.begun), verdict);
}

std::string state_text(const Due& line)
{
    switch (line.state) {
    case State::fresh:
        return "new";
    case State::changed:
        return fmt::format("changed: {}; {}", changes_of(line), when_done(*line.before));
    case State::again:
        return fmt::format("again: {}; {}",
                           line.said.row->has(acts) ? "follows from what is made before it"
                                                    : "its secret is sent again",
                           when_done(*line.before));
    case State::unknown:
        return fmt::format("unknown: {}", open_text(*line.open));
    case State::accepted:
        return fmt::format("accepted already, {}", minute_of(line.before->ended));
    case State::sent:
        return fmt::format("sent, no verdict comes, {}", minute_of(line.before->ended));
    case State::overtaken:
        return "overtaken by a later line";
    case State::removed:
        return fmt::format("no longer in the file; {}",
                           line.before != nullptr ? when_done(*line.before) : open_text(*line.open));
    }
    return {};
}

std::string json_of(const Due& line, const Shown& to)
{
    Json json{{"schema", schema}, {"file", to.file}};
    if (line.line != 0) {
        json["line"] = line.line;
    }
    json["call"] = line.said.row->full_name();
    json["arguments"] = Json::parse(line.said.arguments);
    if (line.said.secret) {
        json["secret"] = "not compared";
    }
    json["state"] = name_of(line.state);
    json["due"] = line.due;
    if (line.before != nullptr) {
        json["was"] = {{"arguments", Json::parse(line.before->said.arguments)},
                       {"outcome", line.before->outcome},
                       {"at", line.before->ended}};
    }
    if (line.open != nullptr) {
        json["begun"] = {{"arguments", Json::parse(line.open->said.arguments)}, {"at", line.open->begun}};
    }
    return vor::dump(json) + '\n';
}

bool is_settled(const Due& line)
{
    return line.state == State::accepted || line.state == State::sent || line.state == State::overtaken;
}

std::string secret_text(const Due& line)
{
    if (is_not_compared(line)) {
        return "; secret not compared, --resend-secrets sends it again";
    }
    return line.said.secret && (line.state == State::changed || line.state == State::unknown) ? "; secret not compared"
                                                                                              : "";
}

} // namespace

bool is_not_compared(const Due& line)
{
    return line.said.secret && (line.state == State::accepted || line.state == State::sent);
}

std::size_t count_not_compared(const Plan& plan)
{
    return static_cast<std::size_t>(std::ranges::count_if(plan.lines, is_not_compared));
}

std::string not_compared_text(const Plan& plan)
{
    const std::size_t secrets = count_not_compared(plan);
    return secrets != 0 ? fmt::format("; {} not compared, --resend-secrets sends {} again",
                                      vor::counted(secrets, "secret"), secrets == 1 ? "it" : "them")
                        : "";
}

std::string values_of(const Said& said)
{
    const Json arguments = Json::parse(said.arguments);
    std::string text;
    const auto add = [&](std::string_view name, const std::string& value) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, value);
    };
    for (const Argument& argument : said.row->arguments()) {
        const Json* const value = arguments.find(argument.name);
        if (argument.is_secret && said.secret) {
            add(argument.name, std::string(vor::mask));
        } else if (!argument.is_object && !argument.is_count && value != nullptr) {
            add(argument.name, shown(argument, *value));
        }
    }
    return text;
}

std::string line_of(const Due& line, const Shown& to)
{
    if (to.json) {
        return json_of(line, to);
    }
    const std::string place =
        line.line != 0 ? fmt::format("{}:{}", vor::printable(to.file), line.line) : vor::printable(to.journal);
    return fmt::format("{}: {}: {}{}\n", place, name_of(line.said), state_text(line), secret_text(line));
}

std::string lines_of(const Plan& plan, const Shown& to)
{
    std::string text;
    for (const auto* const lines : {&plan.lines, &plan.removed}) {
        for (const Due& line : *lines) {
            text += to.json || !is_settled(line) || is_not_compared(line) ? line_of(line, to) : "";
        }
    }
    return text;
}

std::string summary_of(const Plan& plan, const Shown& to)
{
    static constexpr State states[] = {State::fresh,    State::changed, State::again,     State::unknown,
                                       State::accepted, State::sent,    State::overtaken, State::removed};
    if (to.json) {
        Json json{{"schema", schema}, {"plan", to.file}, {"journal", to.journal}, {"due", plan.due()}};
        for (const State state : states) {
            json[name_of(state)] = plan.count(state);
        }
        json["secrets_not_compared"] = count_not_compared(plan);
        json["left_to_batch"] = plan.asking;
        json["exit"] = plan.due() != 0 ? exit_due : exit_ok;
        return vor::dump(json) + '\n';
    }
    std::string text = fmt::format("{}: {} to make", vor::printable(to.file), plan.due());
    static constexpr std::string_view names[] = {"new",
                                                 "changed",
                                                 "made again",
                                                 "unknown",
                                                 "accepted already",
                                                 "sent, no verdict comes",
                                                 "overtaken",
                                                 "no longer in the file"};
    for (const State state : states) {
        if (const std::size_t count = plan.count(state); count != 0) {
            text += fmt::format("; {} {}", count, names[static_cast<std::size_t>(state)]);
        }
    }
    text += not_compared_text(plan);
    return text + (plan.asking != 0 ? fmt::format("; {} left to batch\n", plan.asking) : "\n");
}

std::string warnings_of(const Plan& plan, const Shown& to)
{
    std::string text;
    std::set<std::string> said;
    for (const Due& line : plan.lines) {
        if (line.differs_from != 0 && said.insert(name_of(line.said)).second) {
            text += fmt::format("{}:{}: warning: {}: line {} says something else about it\n", vor::printable(to.file),
                                line.line, name_of(line.said), line.differs_from);
        }
    }
    return text;
}

} // namespace vorcfg
