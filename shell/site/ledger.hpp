// ledger.hpp: what the records of a journal add up to: for each setting the call in effect and those that may have
// overwritten it since, and what of a confirmed apply can still be reverted.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "call/call_key.hpp"
#include "call/verdict.hpp"
#include "site/machine.hpp"
#include "site/record.hpp"

namespace vorcfg::site {

struct Entry {
    CallBegun begun;
    CallEnded ended; // its number is 0 while there is no verdict
    std::vector<call::Setting> settings;

    call::State state() const; // unknown while there is no verdict
};

// What is known of a setting.
struct Known {
    const Entry* current = nullptr;     // made last, as far as is known
    const Entry* open = nullptr;        // the first since then that may have been made
    std::vector<const Entry*> failed{}; // since then, known not to have been made

    const Entry* latest() const
    {
        if (open != nullptr || current != nullptr) {
            return open != nullptr ? open : current;
        }
        return failed.empty() ? nullptr : failed.back();
    }
};

// The calls of a confirmed apply that changed the same settings, and the one before them.
struct Undo {
    std::vector<const Entry*> calls; // the first one first
    const Entry* before = nullptr;   // null: they cannot be reverted
    const Entry* revert = nullptr;   // the last attempt

    bool is_reverted() const;
    bool may_be_reverted() const;       // it is, or its last attempt has no verdict
    bool can_still_be_reverted() const; // and was not refused
};

// What became of a confirmed apply.
enum class Confirmation { waiting, expired, confirmed, reverted, partly_reverted };

std::string_view name_of(Confirmation confirmation); // "partly reverted"

class Ledger {
public:
    // Throws an InputError about a record that does not follow from those before it.
    void take(const Record& record);

    const Known& of(const call::Setting& setting) const;
    // What a call replaces: the call in effect for all that it changes and nothing else. Null: there is none.
    const Entry* replaced_by(const call::CallKey& key) const;
    const std::deque<Entry>& entries() const { return entries_; }
    // The latest calls of all settings but some, each once, in the order in which they were begun.
    std::vector<const Entry*> latest(const std::set<call::Setting>& except = {}) const;
    bool is_open(const Entry& entry) const; // it may have been made, or not
    const std::string& gateway() const { return gateway_; }

    // Of the last apply --confirm, until something else is applied.
    const std::optional<ApplyPending>& pending() const { return pending_; }
    std::optional<Confirmation> confirmation(const Moment& now) const;
    std::chrono::milliseconds time_left(const Moment& now) const;
    bool is_undecided() const { return pending_ && !decided_; }
    std::vector<Undo> undos() const; // in the order in which they are to be reverted

private:
    void add(const GatewayNamed& record) { gateway_ = record.gateway; }
    void add(const CallBegun& record);
    void add(const CallEnded& record);
    void add(const ApplyPending& record);
    void add(const ApplyDecided& record);
    void add(const CallsVoided& record);
    void note(const Entry& entry, call::State state);

    std::deque<Entry> entries_;
    std::map<call::Setting, Known> known_;
    std::string gateway_;
    std::optional<ApplyPending> pending_;
    std::optional<ApplyDecided> decided_;
};

// Not an act, nor where a secret would have to be sent again.
bool can_be_reverted(const call::CallKey& key, const Entry* before);

} // namespace vorcfg::site
