#include "record/comparison.hpp"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace vorsim::record {
namespace {

constexpr std::size_t most_cells = 4'000'000;  // of the table of differences
constexpr std::size_t most_pairs = 16'000'000; // of expectations and messages
constexpr std::size_t most_units = 20'000;
constexpr std::size_t most_steps = 50'000'000; // of assigning in any order

// The line, and the texts that it has cut.
std::string key_of(const values::Record& record)
{
    std::string key = record.line;
    const auto add = [&key](const values::Scalar& scalar) {
        const auto* const text = std::get_if<std::string>(&scalar);
        if (text != nullptr && text->size() > values::longest_in_line) {
            key += '\0' + *text;
        }
    };
    for (const values::Value& value : record.values) {
        if (const auto* const list = std::get_if<values::List>(&value.data)) {
            std::ranges::for_each(*list, add);
        } else {
            add(std::get<values::Scalar>(value.data));
        }
    }
    return key;
}

// Whether an expectation matches a record: found out once for all records that are alike.
class Matches {
public:
    Matches(std::span<const Expectation> expected, std::span<const values::Record> arrived)
        : expected_(expected), arrived_(arrived)
    {
        std::map<std::string, std::size_t> keys;
        for (std::size_t at = 0; at < arrived.size(); ++at) {
            const auto [found, is_new] = keys.emplace(key_of(arrived[at]), firsts_.size());
            if (is_new) {
                firsts_.push_back(at);
            }
            groups_.push_back(found->second);
        }
        known_.resize(expected.size());
    }

    std::size_t groups() const { return firsts_.size(); }
    std::size_t group_of(std::size_t arrived) const { return groups_[arrived]; }
    bool group(std::size_t expected, std::size_t group)
    {
        std::vector<std::uint8_t>& known = known_[expected];
        known.resize(firsts_.size());
        if (known[group] == 0) {
            known[group] = expected_[expected].matches(arrived_[firsts_[group]]) ? 2 : 1;
        }
        return known[group] == 2;
    }

private:
    std::span<const Expectation> expected_;
    std::span<const values::Record> arrived_;
    std::vector<std::size_t> groups_; // of each record
    std::vector<std::size_t> firsts_; // the first record of each group
    std::vector<std::vector<std::uint8_t>> known_;
};

// One message that is expected, or any number more of it.
struct Unit {
    std::size_t expected;
    bool repeats;
};

class Comparing {
public:
    Comparing(std::span<const Expectation> expected, std::span<const values::Record> arrived, const Manner& manner)
        : expected_(expected), arrived_(arrived), manner_(manner), matches_(expected, arrived)
    {
        for (std::size_t at = 0; at < expected.size(); ++at) {
            (expected[at].count.is_never() ? never_ : wanted_).push_back(at);
        }
    }

    Comparison run()
    {
        std::uint64_t units = 0;
        for (const std::size_t at : wanted_) {
            units += expected_[at].count.least;
        }
        result_.cut = units > most_units || never_.size() * arrived_.size() > most_pairs;
        if (result_.cut) {
            return std::move(result_);
        }
        for (std::size_t at = 0; at < arrived_.size(); ++at) {
            never_arrived_.push_back(is_never(at));
        }
        align();
        if (manner_.any_order && !result_.holds()) { // in order is in any order
            result_ = {};
            assign();
        }
        return std::move(result_);
    }

private:
    using Kind = Step::Kind;

    void add(Kind kind, std::size_t expected, std::size_t arrived)
    {
        result_.steps.push_back({kind, expected, arrived});
        result_.missing += kind == Kind::missing ? 1 : 0;
        result_.unexpected += kind == Kind::unexpected ? 1 : 0;
    }

    // What becomes of a message that no expectation wants.
    Kind fate_of(std::size_t arrived) const
    {
        if (never_arrived_[arrived]) {
            return Kind::unexpected;
        }
        const bool complaint = is_complaint(arrived_[arrived]);
        return (complaint ? manner_.allow_complaints : manner_.subset) ? Kind::ignored : Kind::unexpected;
    }

    // Such a message fits nothing else.
    bool is_never(std::size_t arrived) const
    {
        return std::ranges::any_of(never_,
                                   [&](std::size_t never) { return expected_[never].matches(arrived_[arrived]); });
    }

    bool fits(const Unit& unit, std::size_t arrived) const
    {
        return !never_arrived_[arrived] && expected_[unit.expected].matches(arrived_[arrived]);
    }

    // ---- In order ---------------------------------------------------------------

    void align()
    {
        std::vector<Unit> units;
        for (const std::size_t at : wanted_) {
            units.insert(units.end(), expected_[at].count.least, Unit{at, false});
            if (!expected_[at].count.most) {
                units.push_back({at, true});
            }
        }
        // What agrees at either end is a part of some best alignment.
        std::size_t begin = 0;
        std::size_t first = 0;
        for (; begin < units.size() && first < arrived_.size(); ++begin, ++first) {
            if (units[begin].repeats || !fits(units[begin], first)) {
                break;
            }
            add(Kind::same, units[begin].expected, first);
        }
        std::size_t end = units.size();
        std::size_t last = arrived_.size();
        while (end > begin && last > first && !units[end - 1].repeats && fits(units[end - 1], last - 1)) {
            --end;
            --last;
        }
        const std::span<const Unit> middle(units.data() + begin, end - begin);
        result_.cut = (middle.size() + 1) * (last - first + 1) > (manner_.any_order ? 1 : most_cells);
        if (result_.cut && manner_.any_order) {
            return;
        }
        if (result_.cut) {
            result_.steps.push_back({Kind::missing, middle.front().expected, 0});
            result_.steps.push_back({Kind::unexpected, 0, first});
            return;
        }
        align_middle(middle, first, last);
        for (; end < units.size(); ++end, ++last) {
            add(Kind::same, units[end].expected, last);
        }
    }

    // The least costs of every rest of the units against every rest of the messages.
    void align_middle(std::span<const Unit> units, std::size_t first, std::size_t last)
    {
        const std::size_t width = last - first + 1;
        enum Move : std::uint8_t { done, take, skip_unit, skip_message };
        std::vector<std::uint8_t> moves((units.size() + 1) * width, done);
        std::vector<std::uint32_t> below(width);
        std::vector<std::uint32_t> costs(width);
        std::vector<std::uint8_t> fates;
        for (std::size_t at = first; at < last; ++at) {
            fates.push_back(fate_of(at) == Kind::unexpected ? 1 : 0);
        }
        for (std::size_t row = units.size() + 1; row-- > 0; below.swap(costs)) {
            for (std::size_t column = width; column-- > 0;) {
                std::uint32_t best =
                    row == units.size() && column + 1 == width ? 0 : std::numeric_limits<std::uint32_t>::max();
                std::uint8_t move = done;
                const auto consider = [&](std::uint32_t cost, std::uint8_t by) {
                    if (cost < best) {
                        best = cost;
                        move = by;
                    }
                };
                const bool has_unit = row < units.size();
                if (has_unit && column + 1 < width && !never_arrived_[first + column] &&
                    matches_.group(units[row].expected, matches_.group_of(first + column))) {
                    consider(units[row].repeats ? costs[column + 1] : below[column + 1], take);
                }
                if (has_unit) {
                    consider(below[column] + (units[row].repeats ? 0 : 1), skip_unit);
                }
                if (column + 1 < width) {
                    consider(costs[column + 1] + fates[column], skip_message);
                }
                costs[column] = best;
                moves[row * width + column] = move;
            }
        }
        for (std::size_t row = 0, column = 0; row < units.size() || column + 1 < width;) {
            switch (moves[row * width + column]) {
            case take:
                add(Kind::same, units[row].expected, first + column);
                row += units[row].repeats ? 0 : 1;
                ++column;
                break;
            case skip_unit:
                if (!units[row].repeats) {
                    add(Kind::missing, units[row].expected, 0);
                }
                ++row;
                break;
            default:
                add(fates[column] != 0 ? Kind::unexpected : Kind::ignored, 0, first + column);
                ++column;
            }
        }
    }

    // ---- In any order -----------------------------------------------------------

    // Messages of one line are assigned together. A message may have to leave the expectation that took it to one that
    // takes no other: a greedy choice would not do.
    void assign()
    {
        result_.cut = expected_.size() * matches_.groups() > most_pairs;
        if (result_.cut) {
            return;
        }
        std::vector<std::vector<std::size_t>> members(matches_.groups());
        for (std::size_t at = 0; at < arrived_.size(); ++at) {
            if (!never_arrived_[at]) {
                members[matches_.group_of(at)].push_back(at);
            }
        }
        for (const auto& group : members) {
            supply_.push_back(group.size());
        }
        taken_.resize(expected_.size());
        used_.assign(expected_.size(), 0);
        std::vector<std::size_t> room(expected_.size());
        for (const std::size_t at : wanted_) {
            room[at] = expected_[at].count.least;
        }
        fill(room);
        for (const std::size_t at : wanted_) {
            room[at] = expected_[at].count.most ? room[at] : std::numeric_limits<std::size_t>::max();
        }
        fill(room);
        result_.cut = steps_ > most_steps;
        if (result_.cut) {
            return;
        }

        std::vector<std::size_t> wanted_by(arrived_.size(), expected_.size());
        for (const std::size_t at : wanted_) {
            for (const auto& [group, number] : taken_[at]) {
                for (std::size_t left = number; left > 0; --left) {
                    wanted_by[members[group].back()] = at;
                    members[group].pop_back();
                }
            }
        }
        for (const std::size_t at : wanted_) {
            for (std::size_t left = expected_[at].count.least; left > used_[at]; --left) {
                add(Kind::missing, at, 0);
            }
        }
        for (std::size_t at = 0; at < arrived_.size(); ++at) {
            wanted_by[at] < expected_.size() ? add(Kind::same, wanted_by[at], at) : add(fate_of(at), 0, at);
        }
    }

    // Assigns as many messages as there is room for.
    void fill(const std::vector<std::size_t>& room)
    {
        dead_.assign(expected_.size(), false);
        for (std::size_t group = 0; group < supply_.size(); ++group) {
            while (supply_[group] > 0 && place(group, room)) {}
        }
    }

    // Places some messages of the group, moving others if need be: along the shortest way to an expectation with room.
    bool place(std::size_t group, const std::vector<std::size_t>& room)
    {
        constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
        std::vector<std::size_t> from(expected_.size(), none); // the group by which it was reached
        std::vector<std::size_t> left(supply_.size(), none);   // the expectation that the group would leave
        std::vector<std::size_t> reached{group};
        for (std::size_t next = 0; next < reached.size(); ++next) {
            const std::size_t here = reached[next];
            for (const std::size_t at : wanted_) {
                if (++steps_ > most_steps) {
                    return false;
                }
                if (from[at] != none || dead_[at] || !matches_.group(at, here)) {
                    continue;
                }
                from[at] = here;
                if (used_[at] < room[at]) {
                    move(group, at, room[at] - used_[at], from, left);
                    return true;
                }
                for (const auto& [other, number] : taken_[at]) {
                    if (number > 0 && other != group && left[other] == none) {
                        left[other] = at;
                        reached.push_back(other);
                    }
                }
            }
        }
        for (std::size_t at = 0; at < from.size(); ++at) { // no way leads on from these, now or later
            dead_[at] = dead_[at] || from[at] != none;
        }
        return false;
    }

    void move(std::size_t group, std::size_t to, std::size_t number, const std::vector<std::size_t>& from,
              const std::vector<std::size_t>& left)
    {
        number = std::min(number, supply_[group]);
        for (std::size_t at = to; from[at] != group; at = left[from[at]]) {
            number = std::min(number, taken_[left[from[at]]].at(from[at]));
        }
        used_[to] += number;
        supply_[group] -= number;
        for (std::size_t at = to;; at = left[from[at]]) {
            taken_[at][from[at]] += number;
            if (from[at] == group) {
                break;
            }
            taken_[left[from[at]]][from[at]] -= number;
        }
    }

    std::span<const Expectation> expected_;
    std::span<const values::Record> arrived_;
    Manner manner_;
    Matches matches_;
    std::vector<std::size_t> never_;
    std::vector<std::size_t> wanted_;
    std::vector<bool> never_arrived_;
    Comparison result_;

    std::vector<std::size_t> supply_;                       // of each group, not yet assigned
    std::vector<std::map<std::size_t, std::size_t>> taken_; // by each expectation, of each group
    std::vector<std::size_t> used_;                         // how many each took
    std::vector<bool> dead_;                                // expectations that can take no more
    std::size_t steps_ = 0;
};

} // namespace

bool is_complaint(const values::Record& record)
{
    return record.complained || record.kind == values::Record::Kind::malformed ||
           record.kind == values::Record::Kind::foreign;
}

Comparison compare(std::span<const Expectation> expected, std::span<const values::Record> arrived, const Manner& manner)
{
    return Comparing(expected, arrived, manner).run();
}

} // namespace vorsim::record
