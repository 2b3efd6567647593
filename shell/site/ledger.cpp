#include "site/ledger.hpp"

#include <algorithm>

#include <fmt/core.h>

namespace vorcfg::site {

using call::State;

State Entry::state() const
{
    if (!ended.done) {
        return State::unknown;
    }
    if (!*ended.done) {
        return ended.outcome == call::name_of(State::refused) ? State::refused : State::not_delivered;
    }
    for (const State state : {State::sent, State::unread}) {
        if (ended.outcome == call::name_of(state)) {
            return state;
        }
    }
    return State::accepted;
}

bool can_be_reverted(const call::CallKey& key, const Entry* before)
{
    return before != nullptr && !key.secret && !before->begun.key.secret && !key.row->has(rows::acts) &&
           !before->begun.key.row->has(rows::acts);
}

bool Undo::is_reverted() const
{
    return revert != nullptr && call::is_made(revert->state());
}

bool Undo::may_be_reverted() const
{
    return revert != nullptr && (is_reverted() || revert->state() == State::unknown);
}

bool Undo::can_still_be_reverted() const
{
    return before != nullptr && !is_reverted() && (revert == nullptr || revert->state() != State::refused);
}

std::string_view name_of(Confirmation confirmation)
{
    static constexpr std::string_view names[] = {"waiting", "expired", "confirmed", "reverted", "partly reverted"};
    return names[static_cast<std::size_t>(confirmation)];
}

namespace {

[[noreturn]] void fail_not_begun(std::uint64_t number)
{
    throw input::InputError{fmt::format("call {} has not begun", number)};
}

} // namespace

void Ledger::take(const Record& record)
{
    std::visit([this](const auto& each) { add(each); }, record);
}

void Ledger::add(const CallBegun& record)
{
    if (record.number != entries_.size() + 1) {
        throw input::InputError{fmt::format("call {} is missing", entries_.size() + 1)};
    }
    for (const auto& before : {record.replaces, record.takes_back}) {
        if (before && (*before == 0 || *before >= record.number)) {
            fail_not_begun(*before);
        }
    }
    if (decided_) {
        pending_.reset();
        decided_.reset();
    }
    const Entry& entry = entries_.emplace_back(Entry{record, {}, call::settings_of(record.key)});
    note(entry, State::unknown);
}

void Ledger::add(const CallEnded& record)
{
    if (record.number != entries_.size() || record.number == 0 || entries_.back().ended.number != 0) {
        fail_not_begun(record.number);
    }
    Entry& entry = entries_.back();
    entry.ended = record;
    const bool may_be_reverted = pending_ && pending_->reverting && !entry.begun.takes_back;
    note(entry, may_be_reverted ? State::unknown : entry.state());
}

void Ledger::add(const ApplyPending& record)
{
    pending_ = record;
    decided_.reset();
    for (const Entry& entry : entries_) { // nobody knows how far that went
        if (record.reverting && entry.begun.number >= record.first) {
            note(entry, State::unknown);
        }
    }
}

void Ledger::add(const ApplyDecided& record)
{
    decided_ = record;
    if (!pending_ || !pending_->reverting || record.confirmed) {
        return;
    }
    std::set<const Entry*> untouched; // by the reverting
    for (const Undo& undo : undos()) {
        untouched.insert(undo.calls.begin(), undo.revert == nullptr ? undo.calls.end() : undo.calls.begin());
    }
    for (const Entry& entry : entries_) {
        if (untouched.contains(&entry)) {
            note(entry, entry.state());
        }
    }
}

void Ledger::add(const CallsVoided& record)
{
    for (const std::uint64_t number : record.numbers) {
        if (number == 0 || number > entries_.size()) {
            fail_not_begun(number);
        }
        const Entry& entry = entries_[static_cast<std::size_t>(number - 1)];
        for (const call::Setting& setting : entry.settings) {
            Known& known = known_[setting];
            known.current = known.current == &entry ? nullptr : known.current;
        }
    }
}

// A call without a verdict may have overwritten the one before.
void Ledger::note(const Entry& entry, State state)
{
    for (const call::Setting& setting : entry.settings) {
        Known& known = known_[setting];
        if (state == State::unknown) {
            known.open = known.open == nullptr ? &entry : known.open;
        } else if (call::is_made(state)) {
            known = {.current = &entry};
        } else {
            known.open = known.open == &entry ? nullptr : known.open;
            known.failed.push_back(&entry);
        }
    }
}

const Known& Ledger::of(const call::Setting& setting) const
{
    static const Known nothing;
    const auto known = known_.find(setting);
    return known != known_.end() ? known->second : nothing;
}

const Entry* Ledger::replaced_by(const call::CallKey& key) const
{
    const std::vector<call::Setting> settings = call::settings_of(key);
    const Entry* const current = of(settings.front()).current;
    const bool by_all =
        std::ranges::all_of(settings, [&](const auto& setting) { return of(setting).current == current; });
    return by_all && current != nullptr && current->settings == settings ? current : nullptr;
}

std::vector<const Entry*> Ledger::latest(const std::set<call::Setting>& except) const
{
    std::set<std::uint64_t> numbers;
    for (const auto& [setting, known] : known_) {
        if (known.latest() != nullptr && !except.contains(setting)) {
            numbers.insert(known.latest()->begun.number);
        }
    }
    std::vector<const Entry*> all;
    for (const std::uint64_t number : numbers) {
        all.push_back(&entries_[static_cast<std::size_t>(number - 1)]);
    }
    return all;
}

bool Ledger::is_open(const Entry& entry) const
{
    return std::ranges::any_of(entry.settings, [&](const auto& setting) { return of(setting).open == &entry; });
}

std::chrono::milliseconds Ledger::time_left(const Moment& now) const
{
    return pending_ && now.boot == pending_->boot ? pending_->deadline - now.since_boot : std::chrono::milliseconds{};
}

std::optional<Confirmation> Ledger::confirmation(const Moment& now) const
{
    if (!pending_) {
        return std::nullopt;
    }
    if (!decided_) {
        const bool in_time = pending_->boot.empty() ? now.stamp < pending_->until : time_left(now).count() > 0;
        return in_time ? Confirmation::waiting : Confirmation::expired;
    }
    const std::vector<Undo> all = undos();
    const auto reverted = static_cast<std::size_t>(std::ranges::count_if(all, &Undo::is_reverted));
    if (decided_->confirmed) {
        return std::ranges::none_of(all, &Undo::may_be_reverted) ? Confirmation::confirmed
                                                                 : Confirmation::partly_reverted;
    }
    return reverted == all.size() ? Confirmation::reverted : Confirmation::partly_reverted;
}

std::vector<Undo> Ledger::undos() const
{
    std::vector<Undo> undos;
    std::map<std::vector<call::Setting>, std::size_t> of_settings;
    const auto at = [this](std::uint64_t number) { return &entries_[static_cast<std::size_t>(number - 1)]; };
    for (const Entry& entry : entries_) {
        if (!pending_ || entry.begun.number < pending_->first) {
            continue;
        }
        const State state = entry.state();
        if (entry.begun.takes_back) {
            const auto undone = of_settings.find(at(*entry.begun.takes_back)->settings);
            if (undone != of_settings.end() && !undos[undone->second].is_reverted()) {
                undos[undone->second].revert = &entry;
            }
        } else if (call::is_made(state) || state == State::unknown) {
            const auto [undo, is_first] = of_settings.try_emplace(entry.settings, undos.size());
            if (is_first) {
                const Entry* const before = entry.begun.replaces ? at(*entry.begun.replaces) : nullptr;
                undos.push_back({{}, can_be_reverted(entry.begun.key, before) ? before : nullptr});
            }
            undos[undo->second].calls.push_back(&entry);
        }
    }
    std::ranges::reverse(undos);
    return undos;
}

} // namespace vorcfg::site
