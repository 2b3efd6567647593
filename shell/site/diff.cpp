#include "site/diff.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>

#include "call/verdict.hpp"

namespace vorcfg {

std::string_view name_of(State state)
{
    static constexpr std::string_view names[] = {"new",      "changed", "again",     "unknown",
                                                 "accepted", "sent",    "overtaken", "removed"};
    return names[static_cast<std::size_t>(state)];
}

std::size_t Plan::count(State state) const
{
    const auto is = [&](const Due& line) { return line.state == state; };
    return static_cast<std::size_t>(std::ranges::count_if(lines, is) + std::ranges::count_if(removed, is));
}

std::size_t Plan::due() const
{
    return static_cast<std::size_t>(std::ranges::count_if(lines, &Due::due));
}

void Planner::add(const Planned& planned)
{
    if (changes_nothing(planned)) {
        plan_.asking++;
        return;
    }
    Due line;
    line.line = planned.place.line;
    line.said = said(planned);
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
    std::unordered_map<std::string, std::size_t> next;
    overtaken_by_.resize(plan_.lines.size());
    for (std::size_t i = plan_.lines.size(); i-- > 0;) {
        Due& line = plan_.lines[i];
        const std::string subject = subject_of(line.said);
        std::size_t by = i;
        const auto look = [&](const std::string& wanted) {
            const auto later = next.find(wanted);
            by = later != next.end() && (by == i || later->second < by) ? later->second : by;
        };
        look(subject);
        if (by != i && !line.said.row->has(acts) &&
            (line.said != plan_.lines[by].said || secrets_[i] != secrets_[by])) {
            line.differs_from = plan_.lines[by].line;
        }
        for (const Row& other : line.said.row->family->rows) {
            if (line.said.row->undoes(other)) {
                look(subject_of(line.said, other));
            }
        }
        overtaken_by_[i] = by;
        next[subject] = i;
    }
}

namespace {

State state_of(const Entry& entry)
{
    return entry.outcome == name_of(Outcome::sent) || entry.outcome == name_of(Outcome::unread) ? State::sent
                                                                                                : State::accepted;
}

} // namespace

void Planner::judge(Due& line, const History& history) const
{
    const Known& known = history.of(subject_of(line.said));
    line.before = known.standing;
    line.open = known.open;
    line.replaced = history.replaced_by(line.said);
    if (known.open != nullptr) {
        line.state = State::unknown;
    } else if (known.standing == nullptr) {
        line.state = State::fresh;
    } else if (known.standing->said != line.said) {
        line.state = State::changed;
    } else if (line.said.secret && selection_.resend_secrets) {
        line.state = State::again;
    } else {
        line.state = state_of(*known.standing);
    }
}

namespace {

bool stands(const Due& line)
{
    return line.state == State::accepted || line.state == State::sent || line.state == State::overtaken;
}

} // namespace

// Acts follow from what is made now, or has been made since they were done
// last, of their family and before them in the file.
bool Planner::find_following(const History& history)
{
    std::map<const Family*, std::uint64_t> last; // by the lines so far: their last entries
    constexpr std::uint64_t now = UINT64_MAX;
    bool found = false;
    for (std::size_t i = 0; i < plan_.lines.size(); i++) {
        Due& line = plan_.lines[i];
        const Known& known = history.of(subject_of(line.said));
        std::uint64_t& before = last[line.said.row->family];
        if (line.said.row->has(acts) && known.last_done != nullptr && before > known.last_done->number) {
            found = found || line.state == State::accepted || line.state == State::sent;
            line.state = line.state == State::accepted || line.state == State::sent ? State::again : line.state;
        }
        line.due = selection_.holds(line) && !stands(line);
        if (line.due) {
            before = now;
        } else if (line.state != State::overtaken && known.last_done != nullptr) {
            before = std::max(before, known.last_done->number);
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
        if (overtaken_by_[i] != i && stands(lines[overtaken_by_[i]]) && lines[i].state != State::unknown) {
            lines[i].state = State::overtaken;
        }
    }
    // what undoes an act that is done again goes before it again
    while (find_following(history)) {
        for (std::size_t i = lines.size(); i-- > 0;) {
            Due& line = lines[i];
            const Due& later = lines[overtaken_by_[i]];
            if (line.state == State::overtaken && later.state == State::again && line.said.row != later.said.row) {
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
    std::set<std::string> subjects;
    for (const Due& line : plan_.lines) {
        subjects.insert(subject_of(line.said));
    }
    for (const auto& [subject, known] : history.subjects()) {
        const Entry* const entry = known.standing != nullptr ? known.standing : known.open;
        if (entry != nullptr && subject == subject_of(entry->said) && !subjects.contains(subject)) {
            plan_.removed.push_back(
                {.said = entry->said, .state = State::removed, .before = known.standing, .open = known.open});
        }
    }
    const auto number = [](const Due& line) { return (line.before != nullptr ? line.before : line.open)->number; };
    std::ranges::sort(plan_.removed, {}, number);
}

} // namespace vorcfg
