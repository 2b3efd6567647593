// history.hpp: what the records of a journal come to.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "call/call_key.hpp"

namespace vorcfg {

// One call: begun, and where it came to that, its verdict.
struct Entry {
    std::uint64_t number = 0;
    Said said;
    std::string file;
    std::size_t line = 0;
    std::string begun;                       // a stamp
    std::optional<std::uint64_t> replaces;   // the entry that stood before
    std::optional<std::uint64_t> takes_back; // the entry whose call is undone by this one
    std::string ended;
    std::string outcome;
    std::string verdict;
    std::optional<bool> done; // nothing: nobody knows
};

// Neither an act nor what has a secret can be made as it was before.
bool can_be_taken_back(const Said& said, const Entry* before);

// What is known of one subject.
struct Known {
    const Entry* standing = nullptr; // done last, and not undone since
    const Entry* open = nullptr;     // begun since, with no verdict that says whether it was done
    const Entry* last_done = nullptr;
};

// A confirmed apply that is neither confirmed nor taken back.
struct Pending {
    std::uint64_t first = 0; // its entries from this number on
    std::string until;       // empty while it is being made
};

class History {
public:
    // One record, as it stands in the journal. Throws a Complaint or what the JSON throws.
    void take(const vor::Json& record);

    const Known& of(const std::string& subject) const;
    // What a call takes the place of: what stands of its subject, or of a call that it undoes.
    const Entry* replaced_by(const Said& said) const;
    const std::deque<Entry>& entries() const { return entries_; }
    const std::map<std::string, Known>& subjects() const { return known_; }
    const std::string& gateway() const { return gateway_; }
    const std::optional<Pending>& pending() const { return pending_; }

    // What of a confirmed apply is to be made again to undo it, the last first: the entry, and what stood before it.
    struct Undo {
        const Entry* entry;
        const Entry* before; // null: it cannot be taken back
    };
    std::vector<Undo> undos() const;

private:
    void begin(const vor::Json& record);
    void end(const vor::Json& record);
    void note(const Entry& entry);

    std::deque<Entry> entries_;
    std::map<std::string, Known> known_;
    std::string gateway_;
    std::optional<Pending> pending_;
};

} // namespace vorcfg
