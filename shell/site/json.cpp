#include "text/json.hpp"
#include "output/output.hpp"
#include "site/sheet.hpp"
#include "site/show.hpp"

namespace vorcfg {

using vor::Json;

namespace {

std::string line_of(const Json& json)
{
    return vor::dump(json) + '\n';
}

} // namespace

std::string json_of(const Due& line, const Shown& to)
{
    Json json{{"schema", schema}, {"file", to.file}};
    if (line.line != 0) {
        json["line"] = line.line;
    }
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
    return line_of(json);
}

std::string json_of(const Plan& plan, const Shown& to)
{
    const PlanTally tally = plan.tally();
    Json json{{"schema", schema}, {"plan", to.file}, {"journal", to.journal}, {"due", tally.due}};
    for (const StateName& each : states) {
        json[each.name] = tally[each.state];
    }
    json["secrets_not_compared"] = tally.not_compared;
    json["left_to_batch"] = plan.asking;
    json["exit"] = tally.due != 0 ? exit_due : exit_ok;
    return line_of(json);
}

std::string json_of(const Plan& plan, const Tally& calls, std::size_t left, const Shown& to)
{
    const PlanTally tally = plan.tally();
    return line_of({{"schema", schema},
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
                    {"before", tally[State::accepted] + tally[State::sent]},
                    {"secrets_not_compared", tally.not_compared},
                    {"exit", calls.worst}});
}

std::string json_of(const Sheet& sheet)
{
    Json lines = Json::array();
    for (const SheetSection& section : sheet.sections) {
        for (const SheetLine& line : section.lines) {
            lines.push_back({{"family", section.family->name},
                             {"name", line.name},
                             {"values", line.values},
                             {"verdict", line.verdict},
                             {"when", line.when}});
        }
    }
    return line_of({{"schema", schema},
                    {"report", sheet.title},
                    {"settled", sheet.settled},
                    {"unknown", sheet.open},
                    {"pending", !sheet.note.empty()},
                    {"lines", std::move(lines)}});
}

} // namespace vorcfg
