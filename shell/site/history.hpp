// history.hpp: the state that the records of a journal add up to.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "site/record.hpp"

namespace vorcfg::site {

struct Entry {
    CallBegun begun;
    CallEnded ended; // its number is 0 while there is no verdict

    bool is_sent() const; // one-way, or its verdict is never read
};

// Not an act, nor where a secret would have to be sent again.
bool can_be_reverted(const call::CallKey& key, const Entry* before);

// What is known of one subject.
struct Known {
    const Entry* standing = nullptr; // done last, and not undone since
    const Entry* open = nullptr;     // begun since, with no verdict that says whether it was done
    const Entry* last_done = nullptr;
    const Entry* failed = nullptr; // the last attempt since, known not to have been done

    const Entry* latest() const { return standing != nullptr ? standing : open; }
};

class History {
public:
    // Throws an InputError about a record that does not follow from those before it.
    void take(const Record& record);

    const Known& of(const call::Subject& subject) const;
    // What a call replaces: the last one done about its subject, or about that of a call that it undoes.
    const Entry* replaced_by(const call::CallKey& key) const;
    const std::deque<Entry>& entries() const { return entries_; }
    // Of every subject, in their order, with the last call about it itself, not about one that undoes it.
    std::vector<const Known*> known() const;
    const std::string& gateway() const { return gateway_; }
    const std::optional<ApplyPending>& pending() const { return pending_; }

    // The calls of a confirmed apply, the last first, each with the one that it replaced, to be made again.
    struct Undo {
        const Entry* entry;
        const Entry* before; // null: it cannot be reverted
    };
    std::vector<Undo> undos() const;

private:
    void add(const GatewayNamed& record) { gateway_ = record.gateway; }
    void add(const CallBegun& record);
    void add(const CallEnded& record);
    void add(const ApplyPending& record) { pending_ = record; }
    void add(const ApplyDecided&) { pending_.reset(); }
    void note(const Entry& entry);

    std::deque<Entry> entries_;
    std::map<call::Subject, Known> known_;
    std::string gateway_;
    std::optional<ApplyPending> pending_;
};

} // namespace vorcfg::site
