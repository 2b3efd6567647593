#include "site/plan.hpp"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

#include <fmt/core.h>

namespace vorcfg::site {

std::size_t PlanTally::up_to_date() const
{
    return (*this)[LineState::accepted] + (*this)[LineState::sent] + (*this)[LineState::unread] +
           (*this)[LineState::overtaken];
}

std::size_t PlanTally::size() const
{
    return std::accumulate(lines.begin(), lines.end(), std::size_t{0});
}

PlanTally Plan::tally() const
{
    PlanTally tally;
    for (const PlanLine& line : lines) {
        tally.lines[static_cast<std::size_t>(line.state)]++;
        tally.due += line.due ? 1 : 0;
        tally.left_unknown += line.state == LineState::unknown && !line.due ? 1 : 0;
        tally.not_compared += line.is_not_compared() ? 1 : 0;
    }
    tally.removed = removed.size();
    tally.removed_unknown = static_cast<std::size_t>(std::ranges::count(removed, LineState::unknown, &PlanLine::state));
    return tally;
}

bool Plan::is_due(std::size_t line) const
{
    const auto at = [](const PlanLine& each) { return each.place.line; };
    const auto found = std::ranges::lower_bound(lines, line, {}, at);
    return found != lines.end() && found->place.line == line && found->due;
}

SecretState PlanLine::secret() const
{
    const Entry* const other = state == LineState::unknown ? open : before;
    if (!key.secret || other == nullptr || !key.can_compare_secret(other->begun.key)) {
        return SecretState::not_compared;
    }
    return key.fingerprint == other->begun.key.fingerprint ? SecretState::same : SecretState::changed;
}

void Planner::add(const call::PreparedCall& call, call::CallKey key)
{
    if (call::changes_nothing(call)) {
        asking_++;
        return;
    }
    std::size_t secrets = 0;
    for (const rows::Value& value : call.values) {
        secrets = value.secret ? secrets * 31 + std::hash<std::string>()(value.text) : secrets;
    }
    std::vector<call::Setting> settings = call::settings_of(key);
    lines_.push_back({{.place = call.place, .key = std::move(key), .hexadecimal = call::hexadecimal_of(call)},
                      std::move(settings),
                      secrets});
    lines_.back().shown.findings = rows::findings_about(*call.row, call.values);
    if (rows::has_rules(*call.row->family)) {
        site_.push_back({call.row, call.values, call.place.line});
        for (rows::Value& value : site_.back().values) {
            value.text = value.secret ? "" : value.text;
        }
    }
}

namespace {

LineState settled_state(call::State state)
{
    switch (state) {
    case call::State::sent:
        return LineState::sent;
    case call::State::unread:
        return LineState::unread;
    default:
        return LineState::accepted;
    }
}

LineState failed_state(const Entry& entry)
{
    return entry.state() == call::State::refused ? LineState::refused : LineState::not_delivered;
}

} // namespace

// By the call in effect, and those that may have overwritten it.
void Planner::judge(Line& line, const Ledger& ledger, Again again) const
{
    PlanLine& shown = line.shown;
    bool has_something = true;
    for (const call::Setting& setting : line.settings) {
        const Known& known = ledger.of(setting);
        shown.open = shown.open == nullptr ? known.open : shown.open;
        const bool is_current = known.current != nullptr && known.current->begun.key == shown.key;
        has_something = has_something && known.current != nullptr;
        if (known.current != nullptr && (shown.before == nullptr || !is_current)) {
            shown.before = known.current;
        }
        for (const Entry* const failed : known.failed) {
            shown.failed = failed->begun.key == shown.key ? failed : shown.failed;
        }
    }
    if (shown.open != nullptr) {
        shown.state = LineState::unknown;
    } else if (!has_something) {
        shown.state = LineState::fresh;
    } else if (shown.before->begun.key != shown.key) {
        shown.state = LineState::changed;
    } else if (shown.key.secret && shown.failed != nullptr) { // perhaps with another secret
        shown.state = failed_state(*shown.failed);
    } else {
        shown.state = settled_state(shown.before->state());
    }
    shown.can_be_reverted = again != Again::all && can_be_reverted(shown.key, ledger.replaced_by(shown.key));
}

// Where a setting returns to a value that it has had before in the file, the call in effect may have been made for the
// earlier line: then what is between the two has not been made.
void Planner::find_returning(std::vector<Line>& lines, const Ledger& ledger) const
{
    std::map<std::vector<call::Setting>, std::vector<Line*>> all;
    for (Line& line : lines) {
        all[line.settings].push_back(&line);
    }
    for (const auto& each : all) {
        const std::vector<Line*>& same = each.second;
        PlanLine& last = same.back()->shown;
        const auto is_earlier = [&](const Line* line) { return line != same.back() && line->shown.key == last.key; };
        if (!last.is_up_to_date() || std::ranges::none_of(same, is_earlier)) {
            continue;
        }
        const PlanLine& before = same[same.size() - 2]->shown;
        const auto& replaced = ledger.of(each.first.front()).current->begun.replaces;
        const auto& entries = ledger.entries();
        if (before.key != last.key &&
            (!replaced || entries[static_cast<std::size_t>(*replaced - 1)].begun.key != before.key)) {
            last.state = LineState::again;
            last.follows = before.place.line;
        }
    }
}

// A line that is not in effect may have been overwritten by lines after it, as the file has it.
void Planner::find_overtaken(std::vector<Line>& lines, const Ledger& ledger) const
{
    std::map<call::Setting, const Line*> up_to_date;
    for (std::size_t i = lines.size(); i-- > 0;) {
        Line& line = lines[i];
        const auto is_overtaken = [&](const call::Setting& setting) {
            const Entry* const current = ledger.of(setting).current;
            const auto later = up_to_date.find(setting);
            const bool is_current = current != nullptr && current->begun.key == line.shown.key;
            line.overtaken_by = is_current || later == up_to_date.end() ? line.overtaken_by : later->second;
            return is_current || later != up_to_date.end();
        };
        if ((line.shown.state == LineState::fresh || line.shown.state == LineState::changed) &&
            std::ranges::all_of(line.settings, is_overtaken)) {
            line.shown.state = LineState::overtaken;
        }
        for (const call::Setting& setting : line.settings) {
            if (line.shown.is_up_to_date()) {
                up_to_date[setting] = &line;
            }
        }
    }
}

namespace {

// The line that was made last, and when.
struct Latest {
    std::uint64_t entry = 0;
    std::size_t line = 0;

    void take(const Latest& other) { *this = other.entry > entry ? other : *this; }
};

// Of the lines of a family whose first object is the same argument.
struct LatestLines {
    Latest all;
    std::map<call::KeptValues, Latest> about; // one object
};

std::pair<std::string_view, call::KeptValues> object_of(const call::CallKey& key)
{
    const auto arguments = key.row->arguments();
    const auto object = std::ranges::find_if(arguments, &rows::Argument::is_object);
    return object == arguments.end()
               ? std::pair<std::string_view, call::KeptValues>()
               : std::pair{object->name, key.values[static_cast<std::size_t>(object - arguments.begin())]};
}

} // namespace

// Acts follow from what is made now, or has been made since they were, of their family and before them in the file,
// unless it is about another object: a port, a service.
bool Planner::find_following(std::vector<Line>& lines, const Ledger& ledger) const
{
    std::map<const rows::Family*, std::map<std::string_view, LatestLines>> last; // of the lines so far, by argument
    constexpr std::uint64_t now = UINT64_MAX;
    bool found = false;
    for (Line& line : lines) {
        PlanLine& shown = line.shown;
        std::uint64_t made = 0;
        for (const call::Setting& setting : line.settings) {
            const Entry* const current = ledger.of(setting).current;
            const bool counts = current != nullptr && shown.state != LineState::overtaken;
            made = std::max(made, counts ? current->begun.number : 0);
        }
        const auto [argument, object] = object_of(shown.key);
        auto& of_family = last[shown.key.row->family];
        Latest before;
        for (auto& [other, latest] : of_family) {
            before.take(other == argument ? latest.about[object] : latest.all);
        }
        if (shown.key.row->has(rows::acts) && before.entry > made && shown.is_up_to_date() &&
            shown.state != LineState::overtaken) {
            found = true;
            shown.state = LineState::again;
            shown.follows = before.line;
        }
        shown.due = selection_.holds(shown) && !shown.is_up_to_date();
        made = shown.due ? now : made;
        of_family[argument].all.take({made, shown.place.line});
        of_family[argument].about[object].take({made, shown.place.line});
    }
    return found;
}

void Planner::find_contradictions(std::vector<Line>& lines)
{
    std::map<std::pair<const rows::Row*, std::vector<call::Setting>>, const Line*> next;
    for (std::size_t i = lines.size(); i-- > 0;) {
        const auto [same, is_last] = next.try_emplace({lines[i].shown.key.row, lines[i].settings}, &lines[i]);
        const Line& other = *std::exchange(same->second, &lines[i]);
        if (!is_last && !other.shown.key.row->has(rows::acts) &&
            (lines[i].shown.key != other.shown.key || lines[i].secrets != other.secrets)) {
            const std::size_t number = other.shown.place.line;
            lines[i].shown.findings.push_back({fmt::format("line {} sets it differently", number), number});
        }
    }
}

void Planner::find_doubts(std::vector<Line>& lines) const
{
    const rows::SiteLines site(site_);
    auto line = lines.begin();
    for (const rows::SiteLine& one : site_) {
        while (line->shown.place.line != one.number) {
            ++line;
        }
        std::ranges::move(rows::findings_about(one, site), std::back_inserter(line->shown.findings));
    }
}

void Planner::find_removed(Plan& plan, const Ledger& ledger) const
{
    std::set<call::Setting> settings;
    for (const Line& line : lines_) {
        settings.insert(line.settings.begin(), line.settings.end());
    }
    for (const Entry* const entry : ledger.latest(settings)) {
        const bool is_open = ledger.is_open(*entry);
        PlanLine line{.key = entry->begun.key,
                      .state = is_open ? LineState::unknown : LineState::removed,
                      .before = is_open ? nullptr : entry,
                      .open = is_open ? entry : nullptr};
        if (selection_.holds(line) && (is_open || call::is_made(entry->state()))) {
            plan.removed.push_back(std::move(line));
        }
    }
}

Plan Planner::against(const Ledger& ledger, Again again) const
{
    std::vector<Line> lines = lines_;
    for (Line& line : lines) {
        judge(line, ledger, again);
    }
    find_returning(lines, ledger);
    find_overtaken(lines, ledger);
    find_contradictions(lines);
    find_doubts(lines);
    for (Line& line : lines) {
        PlanLine& shown = line.shown;
        const bool is_open = shown.state == LineState::fresh || shown.state == LineState::changed;
        if (is_open && shown.failed != nullptr) {
            shown.state = failed_state(*shown.failed);
        }
        if ((shown.is_up_to_date() && again == Again::all) ||
            (shown.has_secret_in_effect() && again == Again::secrets)) {
            shown.state = LineState::again;
        }
    }
    // what undoes an act that is made again goes before it again
    while (find_following(lines, ledger)) {
        for (std::size_t i = lines.size(); i-- > 0;) {
            Line& line = lines[i];
            if (line.shown.state == LineState::overtaken && line.overtaken_by->shown.state == LineState::again &&
                line.shown.key.row != line.overtaken_by->shown.key.row) {
                line.shown.state = LineState::again;
                line.shown.precedes = line.overtaken_by->shown.place.line;
            }
        }
    }
    Plan plan{{}, {}, asking_};
    for (Line& line : lines) {
        if (selection_.holds(line.shown)) {
            plan.lines.push_back(std::move(line.shown));
        }
    }
    find_removed(plan, ledger);
    return plan;
}

} // namespace vorcfg::site
