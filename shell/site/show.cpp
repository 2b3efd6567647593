#include "site/show.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "call/verdict.hpp"
#include "output/output.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg {

using vor::Json;

namespace {

std::string when_done(const Entry& entry)
{
    return fmt::format("{} {}", entry.ended.outcome == name_of(Outcome::unread) ? "delivered" : entry.ended.outcome,
                       minute_of(entry.ended.at));
}

// "ip_address 192.168.1.11 (was 192.168.1.10), config_option 0 (was 1)"
std::string changes_of(const PlanLine& line)
{
    const auto arguments = line.key.row->arguments();
    std::string text;
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const std::string now = shown(arguments[i], line.key.values[i]);
        const std::string before = shown(arguments[i], line.before->begun.key.values[i]);
        if (!arguments[i].is_count && now != before) {
            text += fmt::format("{}{} {} (was {})", text.empty() ? "" : ", ", arguments[i].name, now, before);
        }
    }
    return text;
}

std::string open_text(const Entry& open)
{
    const std::string verdict = open.ended.verdict.empty() ? "no verdict" : open.ended.verdict;
    return fmt::format("begun {}, {}", minute_of(open.begun.at), verdict);
}

std::string state_text(const PlanLine& line)
{
    switch (line.state) {
    case LineState::fresh:
        return "new";
    case LineState::changed:
        return fmt::format("changed: {}; {}", changes_of(line), when_done(*line.before));
    case LineState::again:
        return fmt::format("again: {}; {}",
                           line.key.row->has(acts) ? "follows from what is made before it" : "its secret is sent again",
                           when_done(*line.before));
    case LineState::unknown:
        return fmt::format("unknown: {}", open_text(*line.open));
    case LineState::accepted:
        return fmt::format("accepted already, {}", minute_of(line.before->ended.at));
    case LineState::sent:
        return fmt::format("sent, no verdict comes, {}", minute_of(line.before->ended.at));
    case LineState::overtaken:
        return "overtaken by a later line";
    case LineState::removed:
        return fmt::format("no longer in the file; {}",
                           line.before != nullptr ? when_done(*line.before) : open_text(*line.open));
    }
    return {};
}

std::string secret_text(const PlanLine& line)
{
    if (line.is_not_compared()) {
        return "; secret not compared, --resend-secrets sends it again";
    }
    return line.key.secret && (line.state == LineState::changed || line.state == LineState::unknown)
               ? "; secret not compared"
               : "";
}

std::string not_compared_text(const PlanTally& tally)
{
    return tally.not_compared != 0
               ? fmt::format("; {} not compared, --resend-secrets sends {} again",
                             vor::counted(tally.not_compared, "secret"), tally.not_compared == 1 ? "it" : "them")
               : "";
}

std::string json_of(const PlanLine& line, const std::string& file)
{
    Json json{{"schema", schema}, {"file", file}};
    json.add("line", line.line);
    json["call"] = line.key.row->full_name();
    json["arguments"] = values_json(line.key);
    if (line.key.secret) {
        json["secret"] = "not compared";
    }
    json["state"] = states[static_cast<std::size_t>(line.state)].name;
    json["due"] = line.due;
    if (line.before != nullptr) {
        json["was"] = {{"arguments", values_json(line.before->begun.key)},
                       {"outcome", line.before->ended.outcome},
                       {"at", line.before->ended.at}};
    }
    if (line.open != nullptr) {
        json["begun"] = {{"arguments", values_json(line.open->begun.key)}, {"at", line.open->begun.at}};
    }
    return vor::dump(json) + '\n';
}

std::string json_of(const Plan& plan, const Shown& to)
{
    const PlanTally tally = plan.tally();
    Json json{{"schema", schema}, {"plan", to.file}, {"journal", to.journal}, {"due", tally.due}};
    for (const LineStateName& each : states) {
        json[each.name] = tally[each.state];
    }
    json["secrets_not_compared"] = tally.not_compared;
    json["left_to_batch"] = plan.asking;
    json["exit"] = tally.due != 0 ? exit_due : exit_ok;
    return vor::dump(json) + '\n';
}

std::string json_of(const Plan& plan, const Tally& calls, std::size_t left, const Shown& to)
{
    const PlanTally tally = plan.tally();
    const Json json{{"schema", schema},
                    {"apply", to.file},
                    {"journal", to.journal},
                    {"accepted", calls.accepted},
                    {"sent", calls.sent},
                    {"unread", calls.unread},
                    {"unknown", calls.unknown},
                    {"refused", calls.refused},
                    {"failed_lines", Json::array(calls.failed)},
                    {"not_made", left},
                    {"left_unknown", tally.left_unknown},
                    {"before", tally[LineState::accepted] + tally[LineState::sent]},
                    {"secrets_not_compared", tally.not_compared},
                    {"exit", calls.worst}};
    return vor::dump(json) + '\n';
}

} // namespace

std::string values_of(const CallKey& key)
{
    std::string text;
    const auto add = [&](std::string_view name, std::string_view value) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, value);
    };
    for (std::size_t i = 0; i < key.values.size(); i++) {
        const Argument& argument = key.row->arguments()[i];
        if (argument.is_secret && key.secret) {
            add(argument.name, vor::mask);
        } else if (!argument.is_object && !argument.is_count && (argument.is_list || !key.values[i].empty())) {
            add(argument.name, shown(argument, key.values[i]));
        }
    }
    return text;
}

std::string line_of(const PlanLine& line, const Shown& to)
{
    if (to.json) {
        return json_of(line, to.file);
    }
    const std::string place =
        line.line != 0 ? fmt::format("{}:{}", vor::printable(to.file), line.line) : vor::printable(to.journal);
    return fmt::format("{}: {}: {}{}\n", place, name_of(line.key), state_text(line), secret_text(line));
}

std::string lines_of(const Plan& plan, const Shown& to)
{
    std::string text;
    for (const auto* const lines : {&plan.lines, &plan.removed}) {
        for (const PlanLine& line : *lines) {
            text += to.json || !line.stands() || line.is_not_compared() ? line_of(line, to) : "";
        }
    }
    return text;
}

std::string summary_of(const Plan& plan, const Shown& to)
{
    if (to.json) {
        return json_of(plan, to);
    }
    const PlanTally tally = plan.tally();
    std::string text = fmt::format("{}: {} to make", vor::printable(to.file), tally.due);
    for (const LineStateName& each : states) {
        if (tally[each.state] != 0) {
            text += fmt::format("; {} {}", tally[each.state], each.words);
        }
    }
    text += not_compared_text(tally);
    return text + (plan.asking != 0 ? fmt::format("; {} left to batch\n", plan.asking) : "\n");
}

std::string applied_text(const Plan& plan, const Tally& calls, std::size_t left, const Shown& to)
{
    if (to.json) {
        return json_of(plan, calls, left, to);
    }
    const PlanTally tally = plan.tally();
    const std::size_t other = calls.failed.size() - calls.unknown - calls.refused;
    return fmt::format(
        "{}: {} accepted, {} sent, {} unread, {} unknown, {} refused{}, {} not made; {} done before{}{}\n",
        vor::printable(to.file), calls.accepted, calls.sent, calls.unread, calls.unknown, calls.refused,
        other != 0 ? fmt::format(", {} not delivered or not sent", other) : "", left,
        tally[LineState::accepted] + tally[LineState::sent],
        tally.left_unknown != 0 ? fmt::format("; {} left unknown", tally.left_unknown) : "", not_compared_text(tally));
}

std::string warnings_of(const Plan& plan, const Shown& to)
{
    std::string text;
    std::set<std::string> said;
    for (const PlanLine& line : plan.lines) {
        if (line.differs_from != 0 && said.insert(name_of(line.key)).second) {
            text += fmt::format("{}:{}: warning: {}: line {} says something else about it\n", vor::printable(to.file),
                                line.line, name_of(line.key), line.differs_from);
        }
    }
    return text;
}

} // namespace vorcfg
