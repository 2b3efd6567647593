#include "site/history.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

namespace vorcfg {

bool can_be_taken_back(const CallKey& key, const Entry* before)
{
    return before != nullptr && !key.secret && !before->begun.key.secret && !key.row->has(acts) &&
           !before->begun.key.row->has(acts);
}

namespace {

[[noreturn]] void complain_not_begun(std::uint64_t number)
{
    throw Complaint{fmt::format("call {} has not begun", number)};
}

// The other calls of the family that undo this one, or are undone by it.
template <class Action>
void for_opposites(const CallKey& key, Action action)
{
    for (const Row& other : key.row->family->rows) {
        if (key.row->undoes(other)) {
            action(subject_of(key, other));
        }
    }
}

} // namespace

void History::take(const Record& record)
{
    std::visit([this](const auto& each) { add(each); }, record);
}

void History::add(const CallBegun& record)
{
    if (record.number != entries_.size() + 1) {
        throw Complaint{fmt::format("call {} is missing", entries_.size() + 1)};
    }
    for (const auto& before : {record.replaces, record.takes_back}) {
        if (before && (*before == 0 || *before >= record.number)) {
            complain_not_begun(*before);
        }
    }
    note(entries_.emplace_back(Entry{record, {}}));
}

void History::add(const CallEnded& record)
{
    if (record.number != entries_.size() || record.number == 0 || entries_.back().ended.number != 0) {
        complain_not_begun(record.number);
    }
    entries_.back().ended = record;
    note(entries_.back());
}

// While a call has no verdict it may have been done, and what stood before it
// may not stand any more.
void History::note(const Entry& entry)
{
    Known& known = known_[subject_of(entry.begun.key)];
    if (entry.ended.done.value_or(true) == false) {
        const auto forget = [&](Known& each) { each.open = each.open == &entry ? nullptr : each.open; };
        forget(known);
        for_opposites(entry.begun.key, [&](const Subject& subject) { forget(known_[subject]); });
        return;
    }
    const bool done = entry.ended.done.has_value();
    if (done) {
        known = {.standing = &entry, .open = nullptr, .last_done = &entry};
    } else if (known.open == nullptr) {
        known.open = &entry;
    }
    for_opposites(entry.begun.key, [&](const Subject& subject) {
        Known& other = known_[subject];
        if (done) {
            other.standing = nullptr;
            other.open = nullptr;
        } else if (other.standing != nullptr && other.open == nullptr) {
            other.open = &entry;
        }
    });
}

const Known& History::of(const Subject& subject) const
{
    static const Known nothing;
    const auto known = known_.find(subject);
    return known != known_.end() ? known->second : nothing;
}

std::vector<const Known*> History::known() const
{
    std::vector<const Known*> all;
    for (const auto& [subject, known] : known_) {
        if (known.latest() != nullptr && subject_of(known.latest()->begun.key) == subject) {
            all.push_back(&known);
        }
    }
    return all;
}

const Entry* History::replaced_by(const CallKey& key) const
{
    const Entry* standing = of(subject_of(key)).standing;
    for_opposites(key, [&](const Subject& subject) {
        const Entry* const other = of(subject).standing;
        standing = standing == nullptr ? other : standing;
    });
    return standing;
}

std::vector<History::Undo> History::undos() const
{
    std::vector<Undo> undos;
    std::set<std::uint64_t> undone;
    for (auto entry = entries_.rbegin(); pending_ && entry != entries_.rend() && entry->begun.number >= pending_->first;
         ++entry) {
        if (entry->begun.takes_back) {
            if (entry->ended.done == true) {
                undone.insert(*entry->begun.takes_back);
            }
        } else if (entry->ended.done.value_or(true) && !undone.contains(entry->begun.number)) {
            const Entry* const before =
                entry->begun.replaces ? &entries_[static_cast<std::size_t>(*entry->begun.replaces - 1)] : nullptr;
            undos.push_back({&*entry, can_be_taken_back(entry->begun.key, before) ? before : nullptr});
        }
    }
    return undos;
}

} // namespace vorcfg
