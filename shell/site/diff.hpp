// diff.hpp: a file against a journal: the calls that the gateway has not accepted yet.
#pragma once

#include <array>
#include <iterator>
#include <string_view>
#include <vector>

#include "call/batch.hpp"
#include "site/history.hpp"

namespace vorcfg::site {

enum class LineState {
    fresh,     // nothing of it was ever accepted
    changed,   // something else was
    again,     // accepted; an act that follows from what is made before it, or a secret that is to be sent again
    unknown,   // begun, no verdict
    accepted,  // or needed no verdict
    sent,      // one-way, or its verdict is never read
    overtaken, // a later line about the same thing was accepted
    removed,   // accepted, and not in the file any more
};

struct LineStateName {
    LineState state;
    std::string_view name;  // in JSON and in lines
    std::string_view total; // in totals
    char mark;
};

inline constexpr LineStateName states[] = {{LineState::fresh, "new", "new", '+'},
                                           {LineState::changed, "changed", "changed", '~'},
                                           {LineState::again, "again", "again", '>'},
                                           {LineState::unknown, "unknown", "unknown", '?'},
                                           {LineState::accepted, "accepted", "up to date", '='},
                                           {LineState::sent, "sent", "up to date", '='},
                                           {LineState::overtaken, "overtaken", "up to date", '='},
                                           {LineState::removed, "removed", "no longer in the file", '-'}};

struct PlanLine {
    std::size_t line = 0; // 0: not in the file
    call::CallKey key;
    std::vector<bool> hexadecimal{}; // per argument: how the file has the number
    LineState state{};
    bool due = false;                // to be made
    const Entry* before = nullptr;   // done last about the same thing
    const Entry* open = nullptr;     // begun since, without a verdict
    const Entry* failed = nullptr;   // the same call, tried since
    const Entry* replaced = nullptr; // done last, this call or one that it undoes
    std::size_t differs_from = 0;    // a line that says something else about the same thing
    std::size_t follows = 0;         // of one made again: the line of its family before it that was made since
    std::size_t precedes = 0;        // or the act after it that is made again

    bool is_up_to_date() const;
    bool can_be_reverted() const;
    // Up to date, but its secret may have changed since.
    bool is_not_compared() const;
};

struct Selection {
    std::size_t from = 0;
    const rows::Family* only = nullptr;
    bool resend_secrets = false;

    bool holds(const PlanLine& line) const
    {
        return line.line >= from && (only == nullptr || line.key.row->family == only);
    }
};

struct PlanTally {
    std::array<std::size_t, std::size(states)> lines{}; // by their states, those removed among them
    std::size_t due = 0;
    std::size_t left_unknown = 0; // and not due
    std::size_t not_compared = 0;

    std::size_t operator[](LineState state) const { return lines[static_cast<std::size_t>(state)]; }
    std::size_t up_to_date() const;
};

struct Plan {
    std::vector<PlanLine> lines;   // those selected, in the file's order
    std::vector<PlanLine> removed; // in the journal's
    std::size_t asking = 0;        // lines that change nothing, which only batch makes

    PlanTally tally() const;
};

// Takes the lines of a file one by one.
class Planner {
public:
    explicit Planner(Selection selection) : selection_(selection) {}

    void add(const call::PreparedCall& call);
    Plan against(const History& history);

private:
    // Per line: the next that is about the same thing, or undoes it; none.
    std::vector<const PlanLine*> find_overtaken();
    void judge(PlanLine& line, const History& history) const;
    bool find_following(const History& history);
    void find_removed(const History& history);

    const Selection selection_;
    Plan plan_;
    std::vector<std::size_t> secrets_; // per line: a fingerprint of its secrets, within this process
};

} // namespace vorcfg::site
