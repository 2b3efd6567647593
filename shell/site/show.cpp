#include "site/show.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "call/verdict.hpp"
#include "output/output.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

using vor::Json;

namespace {

// "ip_address 192.168.1.10 -> 192.168.1.11, dns_server[0] 9.9.9.9 -> 1.1.1.1"
std::string changes_of(const PlanLine& line)
{
    std::vector<std::string> changes;
    const auto add = [&](const std::string& name, const std::string& before, const std::string& now) {
        if (before != now) {
            changes.push_back(fmt::format("{} {} -> {}", name, before, now));
        }
    };
    const auto arguments = line.key.row->arguments();
    for (std::size_t i = 0; i < arguments.size(); i++) {
        const call::KeptValues& now = line.key.values[i];
        const call::KeptValues& before = line.before->begun.key.values[i];
        const std::string name(arguments[i].name);
        if (arguments[i].is_list && now.size() == before.size()) {
            for (std::size_t item = 0; item < now.size(); item++) {
                add(fmt::format("{}[{}]", name, item), call::shown(arguments[i], before[item]),
                    call::shown(arguments[i], now[item]));
            }
        } else if (!arguments[i].is_count) {
            const bool hexadecimal = line.hexadecimal[i];
            add(name, call::shown(arguments[i], before, hexadecimal), call::shown(arguments[i], now, hexadecimal));
        }
    }
    for (const auto& [name, value] : line.before->begun.key.unknown) { // of another version's journal
        changes.push_back(fmt::format("{} no longer given", name));
    }
    return vor::joined(changes, ", ");
}

std::string open_text(const Entry& open)
{
    const std::string verdict = open.ended.verdict.empty() ? "no verdict" : open.ended.verdict;
    return fmt::format("begun {}, {}", minute_of(open.begun.at), verdict);
}

std::string again_text(const PlanLine& line)
{
    if (line.follows != 0) {
        return fmt::format("follows line {}", line.follows);
    }
    return line.precedes != 0 ? fmt::format("precedes line {}", line.precedes) : "its secret is sent again";
}

std::string state_text(const PlanLine& line)
{
    switch (line.state) {
    case LineState::fresh:
        return values_of(line.key, line.hexadecimal);
    case LineState::changed:
        return changes_of(line);
    case LineState::again:
        return again_text(line);
    case LineState::unknown:
        return open_text(*line.open);
    case LineState::removed:
        return "the gateway keeps it";
    default:
        return "";
    }
}

std::string failure_text(const Entry& failed)
{
    return fmt::format("{} on {}", failed.ended.verdict, minute_of(failed.ended.at));
}

// What there is to say of a line besides its state.
std::string detail_of(const PlanLine& line)
{
    std::vector<std::string> parts;
    if (std::string text = state_text(line); !text.empty()) {
        parts.push_back(std::move(text));
    }
    if (line.failed != nullptr) {
        parts.push_back(failure_text(*line.failed));
    }
    if (line.key.secret && (line.state == LineState::changed || line.state == LineState::unknown)) {
        parts.emplace_back("secret not compared");
    }
    return vor::joined(parts, "; ");
}

const LineStateName& name_of(LineState state)
{
    return states[static_cast<std::size_t>(state)];
}

// A mark stands for the state; of new and changed lines the values say the rest.
vor::Cells cells_of(const PlanLine& line)
{
    const bool values = line.state == LineState::fresh || line.state == LineState::changed;
    const std::string detail = detail_of(line);
    const std::string state = values && !detail.empty() ? "" : std::string(name_of(line.state).total);
    const bool stands_out =
        line.failed != nullptr || line.state == LineState::unknown || line.state == LineState::changed;
    return {{line.line != 0 ? fmt::format("{:>5}", line.line) : "     "},
            {fmt::format("{} {}", line.failed != nullptr ? '!' : name_of(line.state).mark,
                         call::name_of(line.key, line.hexadecimal)),
             stands_out ? vor::Color::yellow : vor::Color::plain},
            {state + (state.empty() || detail.empty() ? "" : ", ") + detail}};
}

// ", of which 1 secret not compared", after those that are up to date
std::string not_compared_text(const PlanTally& tally)
{
    return tally.not_compared != 0
               ? fmt::format(", of which {} not compared", vor::counted(tally.not_compared, "secret"))
               : "";
}

std::string json_of(const PlanLine& line, const std::string& file)
{
    Json json = output::record("plan_line", {file});
    json.add("line", line.line);
    json["call"] = line.key.row->full_name();
    json["arguments"] = values_json(line.key);
    if (line.key.secret) {
        json["secret"] = "not compared";
    }
    json["state"] = name_of(line.state).name;
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
    Json json = output::record("plan", {to.file});
    json["journal"] = to.journal;
    json["due"] = tally.due;
    for (const LineStateName& each : states) {
        json[each.name] = tally[each.state];
    }
    json["secrets_not_compared"] = tally.not_compared;
    json["left_to_batch"] = plan.asking;
    json["exit"] = tally.due != 0 ? input::exit_due : input::exit_ok;
    return vor::dump(json) + '\n';
}

std::string json_of(const Plan& plan, const call::Tally& calls, std::size_t left, const Shown& to)
{
    const PlanTally tally = plan.tally();
    const Json json{{"schema", output::schema},
                    {"type", "apply"},
                    {"file", to.file},
                    {"journal", to.journal},
                    {"accepted", calls.successes(call::Outcome::accepted)},
                    {"sent", calls.successes(call::Outcome::sent)},
                    {"unread", calls.successes(call::Outcome::unread)},
                    {"unknown", calls.failures(call::Outcome::unknown)},
                    {"refused", calls.failures(call::Outcome::refused)},
                    {"failed_lines", Json::array(calls.failed_lines())},
                    {"not_made", left},
                    {"left_unknown", tally.left_unknown},
                    {"before", tally[LineState::accepted] + tally[LineState::sent]},
                    {"secrets_not_compared", tally.not_compared},
                    {"exit", calls.worst}};
    return vor::dump(json) + '\n';
}

} // namespace

std::string values_of(const call::CallKey& key, const std::vector<bool>& hexadecimal)
{
    std::string text;
    const auto add = [&](std::string_view name, std::string_view value) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, value);
    };
    for (std::size_t i = 0; i < key.values.size(); i++) {
        const rows::Argument& argument = key.row->arguments()[i];
        if (argument.is_secret && key.secret) {
            add(argument.name, vor::mask);
        } else if (!argument.is_object && !argument.is_count && (argument.is_list || !key.values[i].empty())) {
            add(argument.name, call::shown(argument, key.values[i], i < hexadecimal.size() && hexadecimal[i]));
        }
    }
    return text;
}

std::string heading_of(const History& history, const Shown& to)
{
    const std::string gateway = history.gateway().empty() ? "" : vor::printable(history.gateway()) + ": ";
    const std::string journal = to.journal == to.file + ".journal" ? "its journal" : vor::printable(to.journal);
    const auto& entries = history.entries();
    return vor::paragraph(
        fmt::format("{}{} against {}, {}", gateway, vor::printable(to.file), journal,
                    entries.empty() ? "nothing applied yet" : "last applied " + minute_of(entries.back().begun.at)),
        to.screen);
}

std::string line_of(const PlanLine& line, const Shown& to)
{
    if (to.json) {
        return json_of(line, to.file);
    }
    const std::string place =
        line.line != 0 ? fmt::format("{}:{}", vor::printable(to.file), line.line) : vor::printable(to.journal);
    const std::string detail = detail_of(line);
    return fmt::format("{}: {}: {}{}{}\n", place, call::name_of(line.key, line.hexadecimal),
                       line.state == LineState::removed ? name_of(line.state).total : name_of(line.state).name,
                       detail.empty() ? "" : ": ", detail);
}

std::string lines_of(const Plan& plan, const Shown& to)
{
    vor::Table table(to.screen);
    std::vector<const PlanLine*> lines;
    for (const auto* const some : {&plan.lines, &plan.removed}) {
        for (const PlanLine& line : *some) {
            if (to.json || !line.is_up_to_date()) {
                lines.push_back(&line);
                table.fit(cells_of(line));
            }
        }
    }
    std::string text;
    for (const PlanLine* const line : lines) {
        text += to.in_rows() ? table.text_of(cells_of(*line)) : line_of(*line, to);
    }
    return text;
}

std::string notes_of(const Plan& plan, const Shown& to)
{
    std::vector<std::string> notes;
    const auto add = [&](bool (*applies)(const PlanLine&), std::string_view note) {
        std::vector<std::size_t> lines;
        for (const PlanLine& line : plan.lines) {
            if (applies(line)) {
                lines.push_back(line.line);
            }
        }
        if (!lines.empty()) {
            notes.push_back(output::lines_text(lines).append(note));
        }
    };
    add([](const PlanLine& line) { return line.due && line.key.row->has(rows::cuts_link); },
        " may drop your connection");
    if (to.may_revert) {
        add([](const PlanLine& line) { return line.due && !line.can_be_reverted(); }, " cannot be reverted");
    }
    if (to.in_rows()) {
        add([](const PlanLine& line) { return line.due && line.state == LineState::unknown; },
            " may have been made already (--skip-unknown to leave out)");
    }
    add([](const PlanLine& line) { return line.is_not_compared(); },
        ": secret not compared (--resend-secrets to send again)");
    if (to.json || notes.empty()) {
        return "";
    }
    return vor::paragraph(vor::joined(notes, "; "), to.screen,
                          to.in_rows() ? "  " : fmt::format("{}: ", vor::printable(to.file)));
}

std::string summary_of(const Plan& plan, const Shown& to)
{
    if (to.json) {
        return json_of(plan, to);
    }
    output::Counts due;
    for (const PlanLine& line : plan.lines) {
        if (line.due) {
            due.add(line.failed != nullptr ? line.failed->ended.outcome + " before"
                                           : std::string(name_of(line.state).total));
        }
    }
    const PlanTally tally = plan.tally();
    output::Counts others;
    others.add("to make" + (tally.due != 0 ? fmt::format(" ({})", due.text()) : ""), tally.due);
    others.add("left unknown", tally.left_unknown);
    others.add("left to batch", plan.asking);
    others.add(name_of(LineState::removed).total, tally[LineState::removed]);
    others.add(name_of(LineState::accepted).total, tally.up_to_date());
    const std::string nothing = tally.due == 0 ? fmt::format("{}, ", output::Counts().text()) : "";
    return vor::paragraph(fmt::format("{}: {}{}{}", to.in_rows() ? "Plan" : vor::printable(to.file), nothing,
                                      others.text("the file has no calls"), not_compared_text(tally)),
                          to.screen);
}

std::string applied_text(const Plan& plan, const call::Tally& calls, std::size_t left, const input::Options& options,
                         const Shown& to)
{
    if (to.json) {
        return json_of(plan, calls, left, to);
    }
    const PlanTally tally = plan.tally();
    const bool stopped = left != 0 || (!options.keep_going && !calls.failed.empty());
    output::Counts counts = output::counts_of(calls, left);
    counts.add("left unknown", tally.left_unknown);
    std::string text;
    if (to.in_rows()) { // below the plan, which has the others
        text = counts.text() + (stopped && !options.confirm ? ". Run apply again to go on." : "");
    } else {
        counts.add(name_of(LineState::accepted).total, tally.up_to_date());
        text = counts.text() + not_compared_text(tally);
    }
    return vor::paragraph(
        fmt::format("{}: {}", output::end_of_run(to.file, "Applied", stopped, calls, to.screen), text), to.screen);
}

void print_warnings(const Plan& plan, const Shown& to)
{
    std::set<std::string> said;
    for (const PlanLine& line : plan.lines) {
        const std::string name = call::name_of(line.key, line.hexadecimal);
        if (line.differs_from != 0 && said.insert(name).second) {
            output::print_warning(fmt::format("{}: line {} sets it differently", name, line.differs_from),
                                  {to.file, line.line}, to.json, line.differs_from);
        }
    }
}

} // namespace vorcfg::site
