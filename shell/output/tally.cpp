#include "output/tally.hpp"

#include <algorithm>

namespace vorcfg {

ExitCode worse(ExitCode one, ExitCode other)
{
    static constexpr ExitCode order[] = {exit_ok,      exit_unread,  exit_not_sent,      exit_usage,
                                         exit_refused, exit_unknown, exit_not_delivered, exit_contradiction,
                                         exit_unusable};
    return std::ranges::find(order, one) > std::ranges::find(order, other) ? one : other;
}

bool Tally::count(const Planned& planned, Outcome outcome)
{
    if (outcome == Outcome::accepted) {
        accepted++;
    } else if (outcome == Outcome::sent) {
        sent++;
    } else if (outcome == Outcome::unread && planned.row->has(answer_unread)) {
        unread++;
    } else if (outcome == Outcome::dry_run) {
        dry++;
    } else if (exit_of(outcome) == exit_ok) {
        other++;
    } else {
        unknown += outcome == Outcome::unknown ? 1 : 0;
        refused += outcome == Outcome::refused ? 1 : 0;
        failed.push_back(planned.place.line);
        worst = worse(exit_of(outcome), worst);
        return false;
    }
    return true;
}

} // namespace vorcfg
