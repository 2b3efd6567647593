// rule_list.hpp: the rules in force, and which of them is due for a message.
#pragma once

#include <map>
#include <vector>

#include "faults/rule.hpp"
#include "values/random.hpp"

namespace vorsim::faults {

using Time = std::chrono::steady_clock::time_point;

// A rule that is due.
struct DueRule {
    unsigned number{}; // as listed
    Rule rule;

    // "fault 2: status 7"
    std::string text() const;
};

class RuleList {
public:
    explicit RuleList(std::uint64_t seed) : seed_(seed) {}

    // Returns the rule's number. Throws when there are too many.
    unsigned add(Rule rule, Time now);
    bool clear(unsigned number) { return entries_.erase(number) != 0; }
    void clear() { entries_.clear(); }

    // Every rule counts the messages that match it; the first that is due acts.
    std::optional<DueRule> due(const Subject& subject, Time now);

    struct Listed {
        unsigned number{};
        std::string rule{};
        std::uint64_t acted{};
        std::uint64_t matched{};
        bool over{};
    };
    std::vector<Listed> list(Time now) const;
    // One line a rule, with how often it acted.
    std::string text(Time now) const;

private:
    struct Entry {
        Rule rule;
        values::Random random;
        Time since;
        std::uint64_t matched = 0;
        std::uint64_t acted = 0;

        bool over(Time now) const;
        bool is_due();
    };

    std::uint64_t seed_;
    unsigned last_ = 0;
    std::map<unsigned, Entry> entries_;
};

} // namespace vorsim::faults
