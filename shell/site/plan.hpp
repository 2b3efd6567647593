// plan.hpp: a file against the ledger of a gateway: the calls that are left to make.
#pragma once

#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <vector>

#include "call/batch.hpp"
#include "rows/rule.hpp"
#include "site/ledger.hpp"

namespace vorcfg::site {

enum class LineState {
    fresh,         // nothing is known of what it sets
    changed,       // something else is in effect
    again,         // up to date, but made again: it follows from what is made before it, or as requested
    unknown,       // it may have been made, or what is in effect may have been overwritten
    refused,       // tried last, by its manager
    not_delivered, // tried last
    accepted,      // up to date, as the next three
    sent,          // no verdict will come
    unread,        // the call does not read its verdict
    overtaken,     // a later line about the same setting is
    removed,       // no longer in the file
};

struct LineStateName {
    std::string_view name;  // in JSON and in lines
    std::string_view total; // in totals
    char mark;
};

inline constexpr LineStateName line_states[] = {{"new", "new", '+'},
                                                {"changed", "changed", '~'},
                                                {"again", "again", '>'},
                                                {"unknown", "unknown", '?'},
                                                {"refused", "refused before", '!'},
                                                {"not delivered", "not delivered before", '!'},
                                                {"accepted", "up to date", '='},
                                                {"sent", "up to date", '='},
                                                {"unread", "up to date", '='},
                                                {"overtaken", "up to date", '='},
                                                {"removed", "no longer in the file", '-'}};
static_assert(std::size(line_states) == static_cast<std::size_t>(LineState::removed) + 1);

constexpr const LineStateName& name_of(LineState state)
{
    return line_states[static_cast<std::size_t>(state)];
}

enum class SecretState { not_compared, same, changed };

struct PlanLine {
    input::Place place{}; // its line is 0 where it is not in the file
    call::CallKey key;
    std::vector<bool> hexadecimal{}; // per argument: how the file has the number
    LineState state{};
    bool due = false;              // to be made
    const Entry* before = nullptr; // the call in effect instead
    const Entry* open = nullptr;   // may have been made since, without a verdict
    const Entry* failed = nullptr; // the same call, tried last
    bool can_be_reverted = false;
    std::size_t follows = 0;               // of one made again: the line of its family before it that was made since
    std::size_t precedes = 0;              // or the act after it that is made again
    std::vector<rows::Finding> findings{}; // to warn about

    bool is_up_to_date() const { return LineState::accepted <= state && state <= LineState::overtaken; }
    // Its secret beside that of the call in effect, or of the one without a verdict.
    SecretState secret() const;
    bool has_secret_in_effect() const { return key.secret && is_up_to_date() && state != LineState::overtaken; }
    // Up to date, but its secret may have changed since.
    bool is_not_compared() const { return has_secret_in_effect() && secret() == SecretState::not_compared; }
};

struct Selection {
    std::size_t from = 0;
    const rows::Family* only = nullptr;

    bool holds(const PlanLine& line) const
    {
        return line.place.line >= from && (only == nullptr || line.key.row->family == only);
    }
};

// Which lines that are up to date are made again.
enum class Again : std::uint8_t { none, secrets, all };

struct PlanTally {
    std::array<std::size_t, std::size(line_states)> lines{}; // of those in the file
    std::size_t due = 0;
    std::size_t left_unknown = 0; // and not due
    std::size_t not_compared = 0;
    std::size_t removed = 0;
    std::size_t removed_unknown = 0; // among them

    std::size_t operator[](LineState state) const { return lines[static_cast<std::size_t>(state)]; }
    std::size_t up_to_date() const;
    std::size_t size() const; // of the lines in the file
};

struct Plan {
    std::vector<PlanLine> lines;   // those selected, in the file's order
    std::vector<PlanLine> removed; // in the journal's
    std::size_t asking = 0;        // lines that change nothing, which only batch makes

    PlanTally tally() const;
    bool is_due(std::size_t line) const;
};

// Takes the lines of a file one by one.
class Planner {
public:
    explicit Planner(Selection selection) : selection_(selection) {}

    void add(const call::PreparedCall& call) { add(call, call::key_of(call)); }
    void add(const call::PreparedCall& call, call::CallKey key);
    Plan against(const Ledger& ledger, Again again = Again::none) const;

private:
    // A line as it is judged: with what it changes, and a fingerprint of its secrets within this process.
    struct Line {
        PlanLine shown;
        std::vector<call::Setting> settings;
        std::size_t secrets = 0;
        const Line* overtaken_by = nullptr;
    };

    void judge(Line& line, const Ledger& ledger, Again again) const;
    void find_returning(std::vector<Line>& lines, const Ledger& ledger) const;
    void find_overtaken(std::vector<Line>& lines, const Ledger& ledger) const;
    bool find_following(std::vector<Line>& lines, const Ledger& ledger) const;
    void find_removed(Plan& plan, const Ledger& ledger) const;
    static void find_contradictions(std::vector<Line>& lines);
    void find_doubts(std::vector<Line>& lines) const;

    const Selection selection_;
    std::vector<Line> lines_;
    std::vector<rows::SiteLine> site_; // those of families with rules
    std::size_t asking_ = 0;
};

} // namespace vorcfg::site
