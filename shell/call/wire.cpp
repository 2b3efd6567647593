#include "call/wire.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <map>
#include <set>

#include <fmt/core.h>

#include "call/session.hpp"
#include "rows/families.hpp"
#include "text/text.hpp"

namespace vorcfg::call {

namespace {

using Place = WirePart::Place;

CallResult tried(const PreparedCall& call, const Pretence& pretence = {})
{
    PreparedCall copy = call; // the observer tells secrets by where they are
    return Session({.capture = true, .pretence = pretence}, std::nullopt).make(copy);
}

// The ids of all messages that calls send: some wait for the answer to another's.
const std::set<std::uint32_t>& all_ids()
{
    static const std::set<std::uint32_t> ids = [] {
        std::set<std::uint32_t> found;
        for (const rows::Family* const family : rows::families()) {
            for (const rows::Row& row : family->rows) {
                if (row.channel == rows::Channel::manager) {
                    for (const Message& message : tried(prepare_example(row)).seen.messages) {
                        found.insert(message.id);
                    }
                }
            }
        }
        return found;
    }();
    return ids;
}

// --- Other values for an argument ---------------------------------------------------------

rows::Value value_for(const rows::Argument& argument, std::int64_t number)
{
    return {.number = number, .text = argument.kind == rows::Kind::decimal ? std::to_string(number) : ""};
}

std::vector<rows::Value> values_for(const rows::Argument& argument)
{
    std::vector<rows::Value> values;
    if (argument.is_number()) {
        const auto [least, most] = argument.range;
        for (const std::int64_t number : {least, most, least + (most - least) / 3}) {
            values.push_back(value_for(argument, number));
        }
        return values;
    }
    std::vector<std::string> texts{"a", "bcd"};
    if (argument.kind == rows::Kind::ipv4) {
        texts = {"1.2.3.4", "254.253.252.251"};
    } else if (!argument.choices.empty()) {
        texts.clear();
        for (const rows::Choice& choice : argument.choices) {
            texts.emplace_back(choice.name);
        }
    }
    for (std::string& text : texts) {
        values.push_back({.text = std::move(text), .secret = argument.is_secret});
    }
    return values;
}

// A call with other values for one argument; of a list, so many.
struct Probe {
    const rows::Argument* argument;
    std::vector<rows::Value> values;
    Observation seen;
};

std::size_t index_of(const rows::Row& row, const rows::Argument& argument)
{
    return static_cast<std::size_t>(&argument - row.arguments().data());
}

void give(PreparedCall& call, const rows::Argument& argument, const std::vector<rows::Value>& values)
{
    const std::size_t at = index_of(*call.row, argument);
    if (!argument.is_list) {
        call.values[at] = values.front();
        return;
    }
    call.values.resize(at);
    call.values.insert(call.values.end(), values.begin(), values.end());
    const auto count = std::ranges::find_if(call.row->arguments(), &rows::Argument::is_count);
    if (count != call.row->arguments().end()) {
        call.values[index_of(*call.row, *count)].number = static_cast<std::int64_t>(values.size());
    }
}

std::vector<Probe> probes_of(const PreparedCall& base, const rows::Argument& argument)
{
    std::vector<Probe> probes;
    const std::vector<rows::Value> values = values_for(argument);
    for (std::size_t i = 0; i < values.size(); i++) {
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(argument.is_list ? 0 : i);
        Probe probe{&argument, {first, values.begin() + static_cast<std::ptrdiff_t>(i) + 1}, {}};
        PreparedCall call = base;
        give(call, argument, probe.values);
        probe.seen = tried(call).seen;
        probes.push_back(std::move(probe));
    }
    return probes;
}

// --- What is at a place ---------------------------------------------------------------------

std::string content_of(const Element& element)
{
    return element.kind == Element::Kind::text || element.kind == Element::Kind::raw ? element.bytes
                                                                                     : std::to_string(element.number);
}

// Of the element with this index.
std::string found_at(const WirePart& part, const Message& message, std::size_t element)
{
    switch (part.place) {
    case Place::sap:
        return std::to_string(message.sap);
    case Place::option:
        return std::to_string(message.option.value_or(0));
    case Place::flag:
        return std::to_string(message.flag.value_or(0));
    case Place::element:
        return element < message.elements.size() ? content_of(message.elements[element]) : "";
    default:
        return message.record.substr(part.field->offset, part.field->size);
    }
}

std::uint32_t number_of(const rows::Argument& argument, const rows::Value& value)
{
    in_addr address{};
    if (argument.kind == rows::Kind::ipv4) {
        inet_pton(AF_INET, value.text.c_str(), &address);
    }
    return argument.kind == rows::Kind::ipv4 ? address.s_addr : static_cast<std::uint32_t>(value.number);
}

// What is there if it is this value and nothing else.
std::string expected_at(const WirePart& part, const rows::Argument& argument, const rows::Value& value)
{
    const std::uint32_t number = number_of(argument, value);
    switch (part.place) {
    case Place::sap:
        return std::to_string(static_cast<std::uint16_t>(number));
    case Place::option:
    case Place::flag:
        return std::to_string(static_cast<std::uint8_t>(number));
    case Place::field:
        return std::string(reinterpret_cast<const char*>(&number),
                           std::min<std::size_t>(part.field->size, sizeof number));
    default:
        break;
    }
    switch (part.kind) {
    case Element::Kind::int16:
        return std::to_string(static_cast<std::int16_t>(number));
    case Element::Kind::int32:
        return std::to_string(static_cast<std::int32_t>(number));
    case Element::Kind::raw:
        return std::string(1, static_cast<char>(number));
    default:
        return value.text;
    }
}

// The same message but for values.
bool has_shape_of(const Message& message, const Message& base, std::size_t listed)
{
    const auto same = [](const Element& one, const Element& other) {
        return one.tag == other.tag && one.kind == other.kind;
    };
    return message.way == base.way && message.option.has_value() == base.option.has_value() &&
           message.flag.has_value() == base.flag.has_value() && message.chain == base.chain &&
           message.record.size() == base.record.size() && message.elements.size() == base.elements.size() + listed &&
           std::equal(base.elements.begin(), base.elements.end(), message.elements.begin(), same);
}

bool same_messages(const Observation& one, const Observation& other)
{
    const auto same = [](const Message& a, const Message& b) {
        return a.sap == b.sap && a.id == b.id && a.option == b.option && a.flag == b.flag && a.record == b.record &&
               a.command == b.command && has_shape_of(a, b, 0) &&
               std::ranges::equal(a.elements, b.elements, {}, content_of, content_of);
    };
    return std::ranges::equal(one.messages, other.messages, same) && one.trace_switched == other.trace_switched;
}

// --- The measurement ------------------------------------------------------------------------

class Measurement {
public:
    explicit Measurement(const rows::Row& row) : row_(row), base_(prepare_example(row)) {}

    Wire taken()
    {
        wire_.messages = tried(base_).seen.messages;
        if (wire_.messages.empty()) {
            return std::move(wire_);
        }
        const auto arguments = row_.arguments();
        if (!arguments.empty() && arguments.back().is_list && row_.read == nullptr) {
            give(base_, arguments.back(), {});
        }
        seen_ = tried(base_).seen;
        if (row_.read == nullptr) {
            vary();
        }
        find_wire();
        if (wire_.messages.front().way == Way::request) {
            find_answer();
        }
        find_outcomes();
        return std::move(wire_);
    }

private:
    const Message& message() const { return seen_.messages.front(); }

    void vary()
    {
        for (const rows::Argument& argument : row_.arguments()) {
            if (!argument.is_given()) {
                continue;
            }
            std::vector<Probe> probes = probes_of(base_, argument);
            const bool is_seen =
                std::ranges::any_of(probes, [&](const Probe& probe) { return !same_messages(probe.seen, seen_); });
            if (!is_seen && argument.decided_by.empty()) {
                wire_.unsent.push_back(&argument);
            }
            std::ranges::move(probes, std::back_inserter(probes_));
        }
    }

    void find_wire()
    {
        if (row_.channel == rows::Channel::konfd) {
            complain("it is a text of konfd's");
            return;
        }
        if (seen_.messages.size() > 1) {
            complain("it sends more than one message");
        }
        std::erase_if(probes_, [this](const Probe& probe) { return is_otherwise(probe); });
        if (std::ranges::any_of(row_.record, &rows::RecordField::option)) {
            complain(fmt::format("{} decides its fields", row_.record.front().name));
        }
        find_parts();
        find_rest();
    }

    // Not the same message with another value.
    bool is_otherwise(const Probe& probe)
    {
        const std::string_view name = probe.argument->name;
        if (probe.seen.messages.size() != seen_.messages.size()) {
            complain(fmt::format("{} decides whether it is sent", name));
            return true;
        }
        if (!has_shape_of(probe.seen.messages.front(), message(), probe.argument->is_list ? probe.values.size() : 0)) {
            complain(fmt::format("{} decides its elements", name));
            return true;
        }
        if (probe.seen.messages.front().id != message().id) {
            complain(fmt::format("{} decides its id", name));
        }
        return false;
    }

    void find_parts()
    {
        find_part({Place::sap});
        if (message().option) {
            find_part({Place::option});
        }
        if (message().flag) {
            find_part({Place::flag});
        }
        for (std::size_t i = 0; i < message().elements.size(); i++) {
            find_part({Place::element, message().elements[i].tag, message().elements[i].kind}, i);
        }
        for (const rows::RecordField& field : row_.record) {
            find_part({.place = Place::field, .field = &field});
        }
        for (const Probe& probe : probes_) {
            if (probe.argument->is_list) {
                find_list(probe);
            }
        }
    }

    // The argument whose value is at the place of a list's probe.
    const rows::Argument* argument_of(const Probe& probe) const
    {
        const auto count = std::ranges::find_if(row_.arguments(), &rows::Argument::is_count);
        return probe.argument->is_list && count != row_.arguments().end() ? &*count : probe.argument;
    }

    void find_part(WirePart part, std::size_t element = 0)
    {
        std::set<const rows::Argument*> deciding;
        const std::string before = found_at(part, message(), element);
        bool is_value = true;
        for (const Probe& probe : probes_) {
            const std::string now = found_at(part, probe.seen.messages.front(), element);
            if (now != before) {
                deciding.insert(argument_of(probe));
            }
        }
        part.argument = deciding.empty() ? nullptr : *deciding.begin();
        for (const Probe& probe : probes_) {
            if (argument_of(probe) == part.argument) {
                const rows::Value value =
                    probe.argument->is_list ? value_for(*part.argument, static_cast<std::int64_t>(probe.values.size()))
                                            : probe.values.front();
                const std::string now = found_at(part, probe.seen.messages.front(), element);
                is_value = is_value && now == expected_at(part, *part.argument, value);
            }
        }
        if (deciding.size() == 1 && is_value) {
            wire_.parts.push_back(part);
        } else if (!deciding.empty()) {
            std::vector<std::string> names;
            for (const rows::Argument& argument : row_.arguments()) {
                if (deciding.contains(&argument)) {
                    names.emplace_back(argument.name);
                }
            }
            complain(fmt::format("{} is worked out from {}", name_of(part), vor::joined(names, " and ")));
        } else if (part.place != Place::sap) {
            complain(fmt::format("{} does not come from an argument", name_of(part)));
        }
    }

    void find_list(const Probe& probe)
    {
        const auto& elements = probe.seen.messages.front().elements;
        const std::size_t first = message().elements.size();
        const WirePart part{Place::element, elements[first].tag, elements[first].kind, nullptr, probe.argument};
        for (std::size_t i = 0; i < probe.values.size(); i++) {
            const Element& element = elements[first + i];
            if (element.tag != part.tag || element.kind != part.kind ||
                content_of(element) != expected_at(part, *probe.argument, probe.values[i])) {
                complain(fmt::format("{} is worked out from {}", name_of(part), probe.argument->name));
            }
        }
        if (wire_.parts.empty() || wire_.parts.back().argument != probe.argument) {
            wire_.parts.push_back(part);
        }
    }

    // Bytes that are written though no field has them, or the other way round: two buffers that were not alike tell.
    void find_rest()
    {
        std::string is_written(message().record.size(), '\0');
        const std::string other = tried(base_, {.filling = 0xa5}).seen.messages.front().record;
        for (std::size_t i = 0; i < is_written.size(); i++) {
            is_written[i] = other[i] == message().record[i] ? '\1' : '\0';
        }
        for (const WirePart& part : wire_.parts) {
            if (part.place == Place::field) {
                const auto begin = is_written.begin() + part.field->offset;
                if (std::find(begin, begin + part.field->size, '\0') != begin + part.field->size) {
                    complain(fmt::format("{} is not written whole", name_of(part)));
                }
                std::fill(begin, begin + part.field->size, '\0');
            }
        }
        if (is_written.find('\1') != std::string::npos) {
            complain("it has bytes that are in no field");
        }
    }

    void complain(std::string why)
    {
        if (wire_.computed.empty()) {
            wire_.computed = std::move(why);
        }
    }

    bool succeeds(std::uint32_t id, std::int32_t status) const
    {
        return tried(base_, {.answer_id = id, .status = status}).back.succeeded();
    }

    void find_answer()
    {
        static constexpr std::int32_t statuses[] = {0, 1, 2, -1};
        WireAnswer& answer = wire_.answer.emplace();
        std::set<std::uint32_t> ids{wire_.messages.front().id};
        for (const Probe& probe : probes_) {
            for (const Message& message : probe.seen.messages) {
                ids.insert(message.id);
            }
        }
        const auto take = [&](const std::set<std::uint32_t>& candidates) {
            for (const std::uint32_t id : candidates) {
                const auto succeeding = [&](std::int32_t status) { return succeeds(id, status); };
                if (std::ranges::any_of(statuses, succeeding)) {
                    answer.ids.push_back(id);
                }
            }
        };
        take(ids);
        if (answer.ids.empty()) {
            take(all_ids());
        }
        if (answer.ids.empty()) {
            return;
        }
        const std::uint32_t id = answer.ids.front();
        std::ranges::copy_if(statuses, std::back_inserter(answer.statuses),
                             [&](std::int32_t status) { return succeeds(id, status); });
        const std::int32_t status = answer.statuses.front();
        answer.id_bits = succeeds(id ^ 1U, status) ? 0 : succeeds(id ^ 0x10000U, status) ? 16 : 32;
        if (row_.answers_record) {
            answer.statuses.clear();
        }
    }

    void find_outcomes()
    {
        using enum Pretence::Fate;
        Pretence success;
        if (wire_.answer && !wire_.answer->ids.empty()) {
            success.answer_id = wire_.answer->ids.front();
            success.status = wire_.answer->statuses.empty() ? 0 : wire_.answer->statuses.front();
        }
        const std::uint32_t foreign = wire_.messages.front().id ^ 1U;
        std::set<std::int32_t> codes;
        std::set<Outcome> seen;
        for (const Pretence& pretence :
             {success, Pretence{.status = 7}, Pretence{.answer_id = success.answer_id, .status = 7},
              Pretence{.answer_id = success.answer_id, .status = {}}, Pretence{.answer_id = foreign},
              Pretence{.konfd = "-e"}, Pretence{.konfd = "??"}, Pretence{.fate = refused}, Pretence{.fate = lost},
              Pretence{.fate = no_buffer}, Pretence{.fate = unconnected}}) {
            const CallResult result = tried(base_, pretence);
            wire_.prints = wire_.prints || !result.library.empty();
            if (result.back.code) {
                codes.insert(*result.back.code);
            }
            const bool is_unbound = pretence.fate == unconnected && row_.channel == rows::Channel::manager;
            seen.insert(is_unbound ? Outcome::no_endpoint
                                   : judged(row_, result.back, result.manager_errno, result.seen).outcome);
        }
        wire_.send_unchecked =
            wire_.messages.front().way == Way::one_way && tried(base_, {.fate = refused}).back.succeeded();
        wire_.codes.assign(codes.rbegin(), codes.rend());
        wire_.outcomes.assign(seen.begin(), seen.end());
    }

    const rows::Row& row_;
    PreparedCall base_; // the example, of a list none of its values
    Observation seen_;
    std::vector<Probe> probes_;
    Wire wire_;
};

} // namespace

bool Wire::is_unsent(const rows::Argument& argument) const
{
    return std::ranges::find(unsent, &argument) != unsent.end();
}

const Wire& wire_of(const rows::Row& row)
{
    static std::map<const rows::Row*, Wire> taken;
    const auto known = taken.find(&row);
    return known != taken.end() ? known->second : taken.emplace(&row, Measurement(row).taken()).first->second;
}

std::string name_of(const WirePart& part)
{
    switch (part.place) {
    case Place::sap:
        return "its SAP";
    case Place::option:
        return "the option byte";
    case Place::flag:
        return "the flag byte";
    case Place::element:
        return fmt::format("element {}", part.tag);
    default:
        return fmt::format("field {}", part.field->name);
    }
}

} // namespace vorcfg::call
