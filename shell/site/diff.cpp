#include "site/diff.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace vorcfg::site {

bool PlanLine::is_up_to_date() const
{
    return state == LineState::accepted || state == LineState::sent || state == LineState::overtaken;
}

bool PlanLine::can_be_reverted() const
{
    return vorcfg::site::can_be_reverted(key, replaced);
}

bool PlanLine::is_not_compared() const
{
    return key.secret && (state == LineState::accepted || state == LineState::sent);
}

std::size_t PlanTally::up_to_date() const
{
    return (*this)[LineState::accepted] + (*this)[LineState::sent] + (*this)[LineState::overtaken];
}

PlanTally Plan::tally() const
{
    PlanTally tally;
    for (const auto* const some : {&lines, &removed}) {
        for (const PlanLine& line : *some) {
            tally.lines[static_cast<std::size_t>(line.state)]++;
            tally.due += line.due ? 1 : 0;
            tally.left_unknown += line.state == LineState::unknown && !line.due ? 1 : 0;
            tally.not_compared += line.is_not_compared() ? 1 : 0;
        }
    }
    return tally;
}

void Planner::add(const call::PreparedCall& call)
{
    if (call::changes_nothing(call)) {
        plan_.asking++;
        return;
    }
    std::size_t secrets = 0;
    for (const rows::Value& value : call.values) {
        secrets = value.secret ? secrets * 31 + std::hash<std::string>()(value.text) : secrets;
    }
    plan_.lines.push_back(
        {.line = call.place.line, .key = call::key_of(call), .hexadecimal = call::hexadecimal_of(call)});
    secrets_.push_back(secrets);
}

std::vector<const PlanLine*> Planner::find_overtaken()
{
    std::vector<PlanLine>& lines = plan_.lines;
    std::map<call::Subject, std::size_t> next; // among the lines behind
    std::vector<const PlanLine*> overtaken_by(lines.size());
    for (std::size_t i = lines.size(); i-- > 0;) {
        std::size_t by = lines.size();
        for (const call::Subject& opposite : call::opposites_of(lines[i].key)) {
            const auto later = next.find(opposite);
            by = later != next.end() ? std::min(by, later->second) : by;
        }
        const auto [same, is_last] = next.try_emplace(call::subject_of(lines[i].key), i);
        if (!is_last) {
            const PlanLine& other = lines[same->second];
            if (!other.key.row->has(rows::acts) &&
                (lines[i].key != other.key || secrets_[i] != secrets_[same->second])) {
                lines[i].differs_from = other.line;
            }
            by = std::min(by, std::exchange(same->second, i));
        }
        overtaken_by[i] = by < lines.size() ? &lines[by] : nullptr;
    }
    return overtaken_by;
}

void Planner::judge(PlanLine& line, const History& history) const
{
    const Known& known = history.of(call::subject_of(line.key));
    line.before = known.standing;
    line.open = known.open;
    line.failed = known.failed != nullptr && known.failed->begun.key == line.key ? known.failed : nullptr;
    line.replaced = history.replaced_by(line.key);
    if (known.open != nullptr) {
        line.state = LineState::unknown;
    } else if (known.standing == nullptr) {
        line.state = LineState::fresh;
    } else if (known.standing->begun.key != line.key) {
        line.state = LineState::changed;
    } else if (line.key.secret && selection_.resend_secrets) {
        line.state = LineState::again;
    } else {
        line.state = known.standing->is_sent() ? LineState::sent : LineState::accepted;
    }
}

// Acts follow from what is made now, or has been made since they were done
// last, of their family and before them in the file.
bool Planner::find_following(const History& history)
{
    struct Made {
        std::uint64_t entry = 0;
        std::size_t line = 0;
    };
    std::map<const rows::Family*, Made> last; // of the lines so far
    constexpr std::uint64_t now = UINT64_MAX;
    bool found = false;
    for (PlanLine& line : plan_.lines) {
        const Entry* const done = history.of(call::subject_of(line.key)).last_done;
        Made& before = last[line.key.row->family];
        if (line.key.row->has(rows::acts) && done != nullptr && before.entry > done->begun.number &&
            line.is_up_to_date() && line.state != LineState::overtaken) {
            found = true;
            line.state = LineState::again;
            line.follows = before.line;
        }
        line.due = selection_.holds(line) && !line.is_up_to_date();
        const bool was_made = line.state != LineState::overtaken && done != nullptr;
        const std::uint64_t last_made = was_made ? done->begun.number : 0;
        const std::uint64_t made = line.due ? now : last_made;
        if (made > before.entry) {
            before = {made, line.line};
        }
    }
    return found;
}

Plan Planner::against(const History& history)
{
    std::vector<PlanLine>& lines = plan_.lines;
    const auto overtaken_by = find_overtaken();
    for (std::size_t i = lines.size(); i-- > 0;) {
        judge(lines[i], history);
        if (overtaken_by[i] != nullptr && overtaken_by[i]->is_up_to_date() && lines[i].state != LineState::unknown) {
            lines[i].state = LineState::overtaken;
        }
    }
    // what undoes an act that is done again goes before it again
    while (find_following(history)) {
        for (std::size_t i = lines.size(); i-- > 0;) {
            PlanLine& line = lines[i];
            if (line.state == LineState::overtaken && overtaken_by[i]->state == LineState::again &&
                line.key.row != overtaken_by[i]->key.row) {
                line.state = LineState::again;
                line.precedes = overtaken_by[i]->line;
            }
        }
    }
    find_removed(history);
    const auto is_left_out = [this](const PlanLine& line) { return !selection_.holds(line); };
    std::erase_if(lines, is_left_out);
    std::erase_if(plan_.removed, is_left_out);
    return std::move(plan_);
}

void Planner::find_removed(const History& history)
{
    std::set<call::Subject> subjects;
    for (const PlanLine& line : plan_.lines) {
        subjects.insert(call::subject_of(line.key));
    }
    for (const Known* const known : history.known()) {
        const call::CallKey& key = known->latest()->begun.key;
        if (!subjects.contains(call::subject_of(key))) {
            plan_.removed.push_back(
                {.key = key, .state = LineState::removed, .before = known->standing, .open = known->open});
        }
    }
    const auto number = [](const PlanLine& line) {
        return (line.before != nullptr ? line.before : line.open)->begun.number;
    };
    std::ranges::sort(plan_.removed, {}, number);
}

} // namespace vorcfg::site
