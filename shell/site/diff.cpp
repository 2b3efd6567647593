#include "site/diff.hpp"

#include <algorithm>
#include <map>
#include <set>

#include "call/verdict.hpp"

namespace vorcfg {

bool Due::stands() const
{
    return state == State::accepted || state == State::sent || state == State::overtaken;
}

bool Due::is_not_compared() const
{
    return key.secret && (state == State::accepted || state == State::sent);
}

PlanTally Plan::tally() const
{
    PlanTally tally;
    for (const auto* const some : {&lines, &removed}) {
        for (const Due& line : *some) {
            tally.lines[static_cast<std::size_t>(line.state)]++;
            tally.due += line.due ? 1 : 0;
            tally.left_unknown += line.state == State::unknown && !line.due ? 1 : 0;
            tally.not_compared += line.is_not_compared() ? 1 : 0;
        }
    }
    return tally;
}

void Planner::add(const Planned& planned)
{
    if (changes_nothing(planned)) {
        plan_.asking++;
        return;
    }
    Due line;
    line.line = planned.place.line;
    line.key = key_of(planned);
    std::size_t secrets = 0;
    for (const Value& value : planned.values) {
        secrets = value.secret ? secrets * 31 + std::hash<std::string>()(value.text) : secrets;
    }
    plan_.lines.push_back(std::move(line));
    secrets_.push_back(secrets);
}

// From the last line to the first: which later line is about the same thing, or undoes this one.
void Planner::find_overtaken()
{
    std::map<Subject, std::size_t> next;
    overtaken_by_.resize(plan_.lines.size());
    for (std::size_t i = plan_.lines.size(); i-- > 0;) {
        Due& line = plan_.lines[i];
        const Subject subject = subject_of(line.key);
        std::size_t by = i;
        const auto look = [&](const Subject& wanted) {
            const auto later = next.find(wanted);
            by = later != next.end() && (by == i || later->second < by) ? later->second : by;
        };
        look(subject);
        if (by != i && !line.key.row->has(acts) && (line.key != plan_.lines[by].key || secrets_[i] != secrets_[by])) {
            line.differs_from = plan_.lines[by].line;
        }
        for (const Row& other : line.key.row->family->rows) {
            if (line.key.row->undoes(other)) {
                look(subject_of(line.key, other));
            }
        }
        overtaken_by_[i] = by;
        next[subject] = i;
    }
}

namespace {

State state_of(const Entry& entry)
{
    return entry.ended.outcome == name_of(Outcome::sent) || entry.ended.outcome == name_of(Outcome::unread)
               ? State::sent
               : State::accepted;
}

} // namespace

void Planner::judge(Due& line, const History& history) const
{
    const Known& known = history.of(subject_of(line.key));
    line.before = known.standing;
    line.open = known.open;
    line.replaced = history.replaced_by(line.key);
    if (known.open != nullptr) {
        line.state = State::unknown;
    } else if (known.standing == nullptr) {
        line.state = State::fresh;
    } else if (known.standing->begun.key != line.key) {
        line.state = State::changed;
    } else if (line.key.secret && selection_.resend_secrets) {
        line.state = State::again;
    } else {
        line.state = state_of(*known.standing);
    }
}

// Acts follow from what is made now, or has been made since they were done
// last, of their family and before them in the file.
bool Planner::find_following(const History& history)
{
    std::map<const Family*, std::uint64_t> last; // by the lines so far: their last entries
    constexpr std::uint64_t now = UINT64_MAX;
    bool found = false;
    for (std::size_t i = 0; i < plan_.lines.size(); i++) {
        Due& line = plan_.lines[i];
        const Known& known = history.of(subject_of(line.key));
        std::uint64_t& before = last[line.key.row->family];
        if (line.key.row->has(acts) && known.last_done != nullptr && before > known.last_done->begun.number) {
            found = found || line.state == State::accepted || line.state == State::sent;
            line.state = line.state == State::accepted || line.state == State::sent ? State::again : line.state;
        }
        line.due = selection_.holds(line) && !line.stands();
        if (line.due) {
            before = now;
        } else if (line.state != State::overtaken && known.last_done != nullptr) {
            before = std::max(before, known.last_done->begun.number);
        }
    }
    return found;
}

Plan Planner::against(const History& history)
{
    std::vector<Due>& lines = plan_.lines;
    find_overtaken();
    for (std::size_t i = lines.size(); i-- > 0;) {
        judge(lines[i], history);
        if (overtaken_by_[i] != i && lines[overtaken_by_[i]].stands() && lines[i].state != State::unknown) {
            lines[i].state = State::overtaken;
        }
    }
    // what undoes an act that is done again goes before it again
    while (find_following(history)) {
        for (std::size_t i = lines.size(); i-- > 0;) {
            Due& line = lines[i];
            const Due& later = lines[overtaken_by_[i]];
            if (line.state == State::overtaken && later.state == State::again && line.key.row != later.key.row) {
                line.state = State::again;
            }
        }
    }
    find_removed(history);
    const auto is_left_out = [this](const Due& line) { return !selection_.holds(line); };
    std::erase_if(lines, is_left_out);
    std::erase_if(plan_.removed, is_left_out);
    return std::move(plan_);
}

void Planner::find_removed(const History& history)
{
    std::set<Subject> subjects;
    for (const Due& line : plan_.lines) {
        subjects.insert(subject_of(line.key));
    }
    for (const Known* const known : history.known()) {
        const CallKey& key = known->latest()->begun.key;
        if (!subjects.contains(subject_of(key))) {
            plan_.removed.push_back(
                {.key = key, .state = State::removed, .before = known->standing, .open = known->open});
        }
    }
    const auto number = [](const Due& line) {
        return (line.before != nullptr ? line.before : line.open)->begun.number;
    };
    std::ranges::sort(plan_.removed, {}, number);
}

} // namespace vorcfg
