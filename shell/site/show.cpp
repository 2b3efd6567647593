#include "site/show.hpp"

#include <algorithm>
#include <filesystem>
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

// The verdict without its state: "by gsmmgr: status 7"
std::string_view reason_of(const Entry& entry)
{
    std::string_view verdict = entry.ended.verdict;
    for (const std::string_view lead : {call::name_of(entry.state()), std::string_view(": "), std::string_view(" ")}) {
        verdict.remove_prefix(verdict.starts_with(lead) ? lead.size() : 0);
    }
    return verdict.empty() ? "no verdict" : verdict;
}

std::string open_text(const PlanLine& line)
{
    const Entry& open = *line.open;
    const std::string call = open.begun.key.row == line.key.row ? "" : call::name_of(open.begun.key) + ' ';
    const std::string values = values_of(open.begun.key);
    const std::string other =
        open.begun.key == line.key ? "" : fmt::format("{}{}{}", call, values, values.empty() ? "" : ", ");
    const bool has_ended = open.state() != call::State::unknown; // and is being reverted, without a record of that
    return fmt::format("{}begun {}, {}{}", other, minute_of(open.begun.at),
                       has_ended ? "may be reverted already" : reason_of(open),
                       line.place.line == 0 ? "; no longer in the file" : "");
}

std::string again_text(const PlanLine& line)
{
    if (line.follows != 0) {
        return fmt::format("follows line {}", line.follows);
    }
    if (line.precedes != 0) {
        return fmt::format("precedes line {}", line.precedes);
    }
    return line.key.secret ? "its secret is sent again" : "as requested";
}

// "refused by gsmmgr: status 7, 2026-05-12 10:04 UTC"
std::string failure_text(const Entry& failed)
{
    return fmt::format("{}, {}", failed.ended.verdict, minute_of(failed.ended.at));
}

std::string_view name_of(SecretState secret)
{
    static constexpr std::string_view names[] = {"not compared", "same", "changed"};
    return names[static_cast<std::size_t>(secret)];
}

bool is_failed(const PlanLine& line)
{
    return line.state == LineState::refused || line.state == LineState::not_delivered;
}

// Of another call that changes the same setting, or of this one with other values.
std::string values_text(const PlanLine& line)
{
    if (line.before == nullptr || line.before->begun.key == line.key) {
        return values_of(line.key, line.hexadecimal);
    }
    if (line.before->begun.key.row == line.key.row) {
        return changes_of(line);
    }
    const std::string values = values_of(line.key, line.hexadecimal);
    const std::string before = values_of(line.before->begun.key);
    return fmt::format("{}{}instead of {}{}{}", values, values.empty() ? "" : ", ",
                       call::name_of(line.before->begun.key), before.empty() ? "" : ", ", before);
}

std::string state_text(const PlanLine& line)
{
    switch (line.state) {
    case LineState::fresh:
        return values_of(line.key, line.hexadecimal);
    case LineState::changed:
    case LineState::refused:
    case LineState::not_delivered:
        return values_text(line);
    case LineState::again:
        return again_text(line);
    case LineState::unknown:
        return open_text(line);
    case LineState::removed:
        return "the gateway keeps it";
    default:
        return "";
    }
}

// What there is to say of a line besides its state.
std::string detail_of(const PlanLine& line)
{
    std::vector<std::string> parts;
    if (line.failed != nullptr) {
        parts.push_back(failure_text(*line.failed));
    }
    if (std::string text = state_text(line); !text.empty()) {
        parts.push_back(std::move(text));
    }
    const SecretState secret = line.secret();
    const bool compares = line.state == LineState::changed || line.state == LineState::unknown;
    if (line.key.secret && (compares ? secret != SecretState::same : secret == SecretState::changed)) {
        parts.push_back(fmt::format("secret {}", name_of(secret)));
    }
    return vor::joined(parts, "; ");
}

// A mark stands for the state; of new and changed lines the values say the rest.
vor::Cells cells_of(const PlanLine& line)
{
    const std::string detail = detail_of(line);
    const bool says_all = line.state == LineState::fresh || line.state == LineState::changed || is_failed(line);
    const std::string state = says_all && !detail.empty() ? "" : std::string(name_of(line.state).total);
    const bool stands_out = is_failed(line) || line.state == LineState::unknown || line.state == LineState::changed;
    return {{line.place.line != 0 ? fmt::format("{:>5}", line.place.line) : "     "},
            {fmt::format("{} {}", name_of(line.state).mark, call::name_of(line.key, line.hexadecimal)),
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

// The name as a name of a field.
std::string field_of(std::string_view name)
{
    std::string field(name);
    std::ranges::replace(field, ' ', '_');
    return field;
}

Json json_of(const Entry& entry)
{
    Json json{{"call", entry.begun.key.row->full_name()},
              {"arguments", values_json(entry.begun.key)},
              {"state", call::name_of(entry.state())},
              {"at", entry.ended.number != 0 ? entry.ended.at : entry.begun.at}};
    json.add("verdict", entry.ended.verdict);
    json.add("status", entry.ended.status);
    return json;
}

std::string json_of(const PlanLine& line, const Shown& to)
{
    Json json = output::record("plan_line", {to.file, line.place.line, line.place.column});
    json["call"] = line.key.row->full_name();
    json["arguments"] = values_json(line.key);
    if (line.key.secret) {
        json["secret"] = name_of(line.secret());
    }
    json["state"] = name_of(line.state).name;
    json["in_file"] = line.place.line != 0;
    json["due"] = line.due;
    json.add("cannot_be_reverted", line.due && !line.can_be_reverted);
    for (const auto& [name, entry] :
         {std::pair{"current", line.before}, {"open", line.open}, {"failed", line.failed}}) {
        if (entry != nullptr) {
            json[name] = json_of(*entry);
        }
    }
    json.add("follows", line.follows);
    json.add("precedes", line.precedes);
    return output::line_of(json);
}

// "journal" and the gateway, of a file
Json summary_record(std::string_view type, const Shown& to)
{
    Json json = output::record(type, {to.file});
    json["journal"] = to.journal;
    json.add("gateway", to.gateway);
    return json;
}

std::string json_of(const Plan& plan, int exit, const Shown& to)
{
    const PlanTally tally = plan.tally();
    Json json = summary_record("plan", to);
    json["lines"] = plan.lines.size();
    for (std::size_t i = 0; i < tally.lines.size(); i++) {
        if (static_cast<LineState>(i) != LineState::removed) {
            json[field_of(line_states[i].name)] = tally.lines[i];
        }
    }
    json["due"] = tally.due;
    json["left_unknown"] = tally.left_unknown;
    json["secrets_not_compared"] = tally.not_compared;
    json["removed"] = tally.removed;
    json["removed_unknown"] = tally.removed_unknown;
    json["left_to_batch"] = plan.asking;
    json["exit"] = exit;
    return output::line_of(json);
}

constexpr call::State all_states[] = {call::State::accepted, call::State::sent,          call::State::unread,
                                      call::State::refused,  call::State::not_delivered, call::State::unknown};

std::size_t calls_in(const Applied& applied, call::State state)
{
    const auto found = applied.calls.find(state);
    return found != applied.calls.end() ? found->second : 0;
}

std::string json_of(const Applied& applied, const Shown& to)
{
    Json json = summary_record("apply", to);
    json["lines"] = applied.before.size();
    for (const call::State state : all_states) {
        json[field_of(call::name_of(state))] = calls_in(applied, state);
    }
    json["not_made"] = applied.left;
    json["failed_lines"] = Json::array(applied.failed);
    json["up_to_date"] = applied.before.up_to_date();
    json["left_unknown"] = applied.before.left_unknown;
    json["secrets_not_compared"] = applied.before.not_compared;
    json["left_to_batch"] = applied.asking;
    json["due"] = applied.after.tally().due;
    Json& after = json["after"] = Json::object();
    for (const PlanLine& line : applied.after.lines) {
        after[field_of(name_of(line.state).name)].push_back(line.place.line);
    }
    json["exit"] = applied.exit;
    return output::line_of(json);
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

std::string heading_of(const Ledger& ledger, const Shown& to)
{
    const std::string gateway = ledger.gateway().empty() ? "" : vor::printable(ledger.gateway()) + ": ";
    const std::filesystem::path file(to.file);
    const std::string own = to.gateway.empty() ? to.file : (file.parent_path() / to.gateway).string();
    const std::string journal = to.journal == own + ".journal" ? "its journal" : vor::printable(to.journal);
    const auto& entries = ledger.entries();
    return vor::paragraph(
        fmt::format("{}{} against {}, {}", gateway, vor::printable(to.file), journal,
                    entries.empty() ? "nothing applied yet" : "last applied " + minute_of(entries.back().begun.at)),
        to.screen);
}

std::string line_of(const PlanLine& line, const Shown& to)
{
    if (to.json) {
        return json_of(line, to);
    }
    const std::string place = line.place.line != 0 ? fmt::format("{}:{}", vor::printable(to.file), line.place.line)
                                                   : vor::printable(to.journal);
    const std::string detail = detail_of(line);
    const std::string_view state =
        line.state == LineState::removed ? name_of(line.state).total : name_of(line.state).name;
    return fmt::format("{}: {}: {}{}{}\n", place, call::name_of(line.key, line.hexadecimal),
                       is_failed(line) ? "" : state, is_failed(line) || detail.empty() ? "" : ": ", detail);
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
                lines.push_back(line.place.line);
            }
        }
        if (!lines.empty()) {
            notes.push_back(output::lines_text(lines).append(note));
        }
    };
    add([](const PlanLine& line) { return line.due && line.key.row->has(rows::cuts_link); },
        " may drop your connection");
    if (to.may_revert) {
        add([](const PlanLine& line) { return line.due && !line.can_be_reverted; }, " cannot be reverted");
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

std::string summary_of(const Plan& plan, int exit, const Shown& to)
{
    if (to.json) {
        return json_of(plan, exit, to);
    }
    output::Counts due;
    for (const PlanLine& line : plan.lines) {
        if (line.due) {
            due.add(name_of(line.state).total);
        }
    }
    const PlanTally tally = plan.tally();
    output::Counts others;
    others.add("to make" + (tally.due != 0 ? fmt::format(" ({})", due.text()) : ""), tally.due);
    others.add("left unknown", tally.left_unknown);
    others.add("left to batch", plan.asking);
    others.add(std::string(name_of(LineState::removed).total) +
                   (tally.removed_unknown != 0 ? fmt::format(" ({} unknown)", tally.removed_unknown) : ""),
               tally.removed);
    others.add(name_of(LineState::accepted).total, tally.up_to_date());
    const std::string nothing = tally.due == 0 ? fmt::format("{}, ", output::Counts().text()) : "";
    return vor::paragraph(fmt::format("{}: {}{}{}", to.in_rows() ? "Plan" : vor::printable(to.file), nothing,
                                      others.text("no calls are selected"), not_compared_text(tally)),
                          to.screen);
}

std::string text_of(const Applied& applied, const Shown& to)
{
    if (to.json) {
        return json_of(applied, to);
    }
    output::Counts counts;
    for (const call::State state : all_states) {
        counts.add(call::name_of(state), calls_in(applied, state));
    }
    counts.add("not made", applied.left);
    counts.add("left unknown", applied.before.left_unknown);
    std::string text;
    if (to.in_rows()) { // below the plan, which has the others
        text = counts.text() + (applied.continues ? ". Run apply again to go on." : "");
    } else {
        counts.add(name_of(LineState::accepted).total, applied.before.up_to_date());
        text = counts.text() + not_compared_text(applied.before);
    }
    return vor::paragraph(
        fmt::format("{}: {}", output::end_of_run(to.file, "Applied", applied.stopped, applied.failed, to.screen), text),
        to.screen);
}

std::vector<Warning> warnings_of(const Plan& plan, const Shown& to)
{
    std::set<std::string> said;
    std::vector<Warning> warnings;
    for (const PlanLine& line : plan.lines) {
        for (const rows::Finding& finding : line.findings) {
            const std::string text = fmt::format("{}: {}", call::name_of(line.key, line.hexadecimal), finding.text);
            if (said.insert(text).second) {
                warnings.push_back(
                    {text, {to.file, line.place.line, to.json ? line.place.column : 0}, finding.other_line});
            }
        }
    }
    return warnings;
}

void print_warnings(const Plan& plan, const Shown& to)
{
    for (const Warning& warning : warnings_of(plan, to)) {
        output::print_warning(warning.text, warning.place, to.json, warning.other_line);
    }
}

} // namespace vorcfg::site
