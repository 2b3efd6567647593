#include "site/history.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "call/verdict.hpp"

namespace vorcfg::site {

bool Entry::is_sent() const
{
    return ended.outcome == call::name_of(call::Outcome::sent) || ended.outcome == call::name_of(call::Outcome::unread);
}

bool can_be_reverted(const call::CallKey& key, const Entry* before)
{
    return before != nullptr && !key.secret && !before->begun.key.secret && !key.row->has(rows::acts) &&
           !before->begun.key.row->has(rows::acts);
}

namespace {

[[noreturn]] void fail_not_begun(std::uint64_t number)
{
    throw input::InputError{fmt::format("call {} has not begun", number)};
}

} // namespace

void History::take(const Record& record)
{
    std::visit([this](const auto& each) { add(each); }, record);
}

void History::add(const CallBegun& record)
{
    if (record.number != entries_.size() + 1) {
        throw input::InputError{fmt::format("call {} is missing", entries_.size() + 1)};
    }
    for (const auto& before : {record.replaces, record.takes_back}) {
        if (before && (*before == 0 || *before >= record.number)) {
            fail_not_begun(*before);
        }
    }
    note(entries_.emplace_back(Entry{record, {}}));
}

void History::add(const CallEnded& record)
{
    if (record.number != entries_.size() || record.number == 0 || entries_.back().ended.number != 0) {
        fail_not_begun(record.number);
    }
    entries_.back().ended = record;
    note(entries_.back());
}

// While a call has no verdict it may have been done, and have replaced what was done before.
void History::note(const Entry& entry)
{
    Known& known = known_[call::subject_of(entry.begun.key)];
    const std::optional<bool>& done = entry.ended.done;
    if (done == true) {
        known = {.standing = &entry, .open = nullptr, .last_done = &entry};
    } else if (!done && known.open == nullptr) {
        known.open = &entry;
    } else if (done) {
        known.open = known.open == &entry ? nullptr : known.open;
        known.failed = &entry;
    }
    for (const call::Subject& subject : call::opposites_of(entry.begun.key)) {
        Known& other = known_[subject];
        if (done == true) {
            other = {.last_done = other.last_done};
        } else if (!done && other.standing != nullptr && other.open == nullptr) {
            other.open = &entry;
        } else if (done && other.open == &entry) {
            other.open = nullptr;
        }
    }
}

const Known& History::of(const call::Subject& subject) const
{
    static const Known nothing;
    const auto known = known_.find(subject);
    return known != known_.end() ? known->second : nothing;
}

std::vector<const Known*> History::known() const
{
    std::vector<const Known*> all;
    for (const auto& [subject, known] : known_) {
        if (known.latest() != nullptr && call::subject_of(known.latest()->begun.key) == subject) {
            all.push_back(&known);
        }
    }
    return all;
}

const Entry* History::replaced_by(const call::CallKey& key) const
{
    const Entry* standing = of(call::subject_of(key)).standing;
    for (const call::Subject& subject : call::opposites_of(key)) {
        standing = standing == nullptr ? of(subject).standing : standing;
    }
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
            undos.push_back({&*entry, can_be_reverted(entry->begun.key, before) ? before : nullptr});
        }
    }
    return undos;
}

} // namespace vorcfg::site
