#include "site/history.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "rows/families.hpp"

namespace vorcfg {

using vor::Json;

namespace {

bool is_value(const Json& value)
{
    return value.is_integer() || value.is_string() ||
           (value.is_object() && value.size() == 1 && value.contains("bytes") && value["bytes"].is_string());
}

Said said_in(const Json& record)
{
    const auto call = record.at("call").string();
    const std::size_t blank = std::min(call.find(' '), call.size());
    const Row* const row =
        row_named(call.substr(0, blank), std::string_view{call}.substr(std::min(blank + 1, call.size())));
    if (row == nullptr) {
        throw Complaint{fmt::format("no call \"{}\" is known", call)};
    }
    if (!record.at("arguments").is_object()) {
        throw Complaint{"its arguments have no names"};
    }
    for (const auto& [name, value] : record["arguments"].members()) {
        if (!(value.is_array() ? std::ranges::all_of(value.elements(), is_value) : is_value(value))) {
            throw Complaint{fmt::format("{} is {}, which is no value", name, vor::dump(value))};
        }
    }
    return said(*row, record["arguments"], record.contains("secret"));
}

} // namespace

bool can_be_taken_back(const Said& said, const Entry* before)
{
    return before != nullptr && !said.secret && !before->said.secret && !said.row->has(acts) &&
           !before->said.row->has(acts);
}

namespace {

// The number of a call that began before.
std::optional<std::uint64_t> number_in(const Json& record, const char* name, std::uint64_t own)
{
    if (!record.contains(name)) {
        return {};
    }
    const auto number = record[name].number<std::uint64_t>();
    if (number == 0 || number >= own) {
        throw Complaint{fmt::format("call {} has not begun", number)};
    }
    return number;
}

// The other calls of the family that undo this one, or are undone by it.
template <class Action>
void for_opposites(const Said& said, Action action)
{
    for (const Row& other : said.row->family->rows) {
        if (said.row->undoes(other)) {
            action(subject_of(said, other));
        }
    }
}

} // namespace

void History::begin(const Json& record)
{
    Entry entry;
    entry.number = record.at("begin").number<std::uint64_t>();
    if (entry.number != entries_.size() + 1) {
        throw Complaint{fmt::format("call {} is missing", entries_.size() + 1)};
    }
    entry.said = said_in(record);
    entry.file = record.value("file", "");
    entry.line = record.value("line", static_cast<std::size_t>(0));
    entry.begun = record.at("at").string();
    entry.replaces = number_in(record, "replaces", entry.number);
    entry.takes_back = number_in(record, "takes_back", entry.number);
    note(entries_.emplace_back(std::move(entry)));
}

void History::end(const Json& record)
{
    const auto number = record.at("end").number<std::uint64_t>();
    if (number != entries_.size() || number == 0 || !entries_.back().outcome.empty()) {
        throw Complaint{fmt::format("call {} has not begun", number)};
    }
    Entry& entry = entries_.back();
    entry.ended = record.at("at").string();
    entry.outcome = record.at("outcome").string();
    entry.verdict = record.at("verdict").string();
    entry.done = record.at("done").is_null() ? std::nullopt : std::optional(record["done"].boolean());
    note(entry);
}

// While a call has no verdict it may have been done, and what stood before it
// may not stand any more.
void History::note(const Entry& entry)
{
    Known& known = known_[subject_of(entry.said)];
    if (entry.done.value_or(true) == false) {
        const auto forget = [&](Known& each) { each.open = each.open == &entry ? nullptr : each.open; };
        forget(known);
        for_opposites(entry.said, [&](const std::string& subject) { forget(known_[subject]); });
        return;
    }
    const bool done = entry.done.has_value();
    known.open = done ? nullptr : known.open == nullptr ? &entry : known.open;
    known.standing = done ? &entry : known.standing;
    known.last_done = done ? &entry : known.last_done;
    for_opposites(entry.said, [&](const std::string& subject) {
        Known& other = known_[subject];
        if (done) {
            other.standing = nullptr;
            other.open = nullptr;
        } else if (other.standing != nullptr && other.open == nullptr) {
            other.open = &entry;
        }
    });
}

void History::take(const Json& record)
{
    if (record.contains("begin")) {
        begin(record);
    } else if (record.contains("end")) {
        end(record);
    } else if (record.contains("pending")) {
        pending_ = Pending{record.at("pending").number<std::uint64_t>(), record.value("until", "")};
    } else if (record.contains("confirmed") || record.contains("taken_back")) {
        pending_.reset();
    } else if (record.contains("gateway")) {
        gateway_ = record["gateway"].string();
    } else {
        throw Complaint{"no record of this version"};
    }
}

const Known& History::of(const std::string& subject) const
{
    static const Known nothing;
    const auto known = known_.find(subject);
    return known != known_.end() ? known->second : nothing;
}

const Entry* History::replaced_by(const Said& said) const
{
    const Entry* standing = of(subject_of(said)).standing;
    for_opposites(said, [&](const std::string& subject) {
        const Entry* const other = of(subject).standing;
        standing = standing == nullptr ? other : standing;
    });
    return standing;
}

std::vector<History::Undo> History::undos() const
{
    std::vector<Undo> undos;
    std::set<std::uint64_t> undone;
    for (auto entry = entries_.rbegin(); pending_ && entry != entries_.rend() && entry->number >= pending_->first;
         ++entry) {
        if (entry->takes_back) {
            if (entry->done == true) {
                undone.insert(*entry->takes_back);
            }
        } else if (entry->done.value_or(true) && !undone.contains(entry->number)) {
            const Entry* const before =
                entry->replaces ? &entries_[static_cast<std::size_t>(*entry->replaces - 1)] : nullptr;
            undos.push_back({&*entry, can_be_taken_back(entry->said, before) ? before : nullptr});
        }
    }
    return undos;
}

} // namespace vorcfg
