#include "faults/rule_list.hpp"

#include <algorithm>
#include <stdexcept>

#include <fmt/core.h>

#include "tables/names.hpp"
#include "text/text.hpp"

namespace vorsim::faults {
namespace {

constexpr std::size_t most_rules = 1000;

} // namespace

bool Condition::matches(const Subject& subject) const
{
    if (subject.konfd || who == Who::konfd) {
        return subject.konfd && who == Who::konfd && subject.object.find(object) != subject.object.npos;
    }
    return (who == Who::any || sap == subject.sap) && id.value_or(subject.id) == subject.id &&
           (call.empty() || tables::same_call(call, std::string(subject.call))) &&
           (object.empty() || object == subject.object) && client.value_or(subject.client) == subject.client;
}

std::string DueRule::text() const
{
    return fmt::format("fault {}: {}", number, vor::printable(rule.action_text));
}

unsigned RuleList::add(Rule rule, Time now)
{
    if (entries_.size() == most_rules) {
        throw std::runtime_error(fmt::format("at most {} faults can be in force", most_rules));
    }
    ++last_;
    values::Random random(seed_, fmt::format("fault {}", last_));
    entries_.emplace(last_, Entry{std::move(rule), random, now});
    return last_;
}

bool RuleList::Entry::over(Time now) const
{
    return (rule.end.times && acted >= *rule.end.times) || (rule.end.time && now >= since + *rule.end.time);
}

// Whether its turn has come: the Nth, every Nth or by chance.
bool RuleList::Entry::is_due()
{
    switch (rule.condition.when) {
    case Condition::When::nth:
        return matched == rule.condition.number;
    case Condition::When::every_nth:
        return matched % rule.condition.number == 0;
    case Condition::When::chance:
        return random.draw(1'000'000) < rule.condition.number;
    default:
        return true;
    }
}

std::optional<DueRule> RuleList::due(const Subject& subject, Time now)
{
    std::optional<DueRule> due;
    for (auto& [number, entry] : entries_) {
        if (!entry.rule.condition.matches(subject) || entry.over(now) ||
            (!subject.answered && !entry.rule.action.acts_on_one_way())) {
            continue;
        }
        ++entry.matched;
        if (entry.is_due() && !due) {
            due = DueRule{number, entry.rule};
            if (Action& action = due->rule.action; !action.script.empty()) {
                action.number = action.script[static_cast<std::size_t>(
                    std::min<std::uint64_t>(entry.acted, action.script.size() - 1))];
            }
            ++entry.acted;
        }
    }
    return due;
}

std::vector<RuleList::Listed> RuleList::list(Time now) const
{
    std::vector<Listed> rules;
    for (const auto& [number, entry] : entries_) {
        rules.push_back({number, entry.rule.text, entry.acted, entry.matched, entry.over(now)});
    }
    return rules;
}

std::string RuleList::text(Time now) const
{
    std::string text;
    for (const Listed& rule : list(now)) {
        text += fmt::format("{}: {} (acted on {} of {}{})\n", rule.number, vor::printable(rule.rule), rule.acted,
                            vor::counted(rule.matched, "message"), rule.over ? ", ended" : "");
    }
    return text;
}

} // namespace vorsim::faults
