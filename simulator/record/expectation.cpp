#include "record/expectation.hpp"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include <arpa/inet.h>
#include <fmt/core.h>

#include "gateway/answer.hpp"
#include "gateway/decode.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"
#include "konfd/command.hpp"
#include "record/line.hpp"
#include "tables/managers.hpp"
#include "tables/names.hpp"
#include "text/text.hpp"

namespace vorsim::record {
namespace {

using vor::WordError;
using Text = std::string_view;

constexpr Text any = "*";

bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

bool is_number(Text text)
{
    return vor::integer_in(text).has_value();
}

// The position of the first of the characters outside double quotes.
std::size_t find_outside(Text text, Text part, std::size_t from = 0)
{
    bool quoted = false;
    for (std::size_t at = from; at < text.size(); ++at) {
        if (quoted && text[at] == '\\') {
            ++at;
        } else if (text[at] == '"') {
            quoted = !quoted;
        } else if (!quoted && text.substr(at).starts_with(part)) {
            return at;
        }
    }
    return Text::npos;
}

Text trimmed(Text text)
{
    while (!text.empty() && is_blank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Without "  [fault 1: late 4s]" at its end.
Text without_notes(Text text)
{
    text = trimmed(text);
    while (text.ends_with(']')) {
        const std::size_t begin = text.rfind("  [");
        if (begin == text.npos) {
            break;
        }
        text = trimmed(text.substr(0, begin));
    }
    return text;
}

std::optional<Count> count_in(Text text)
{
    constexpr Text at_least = "at least ";
    if (text == "never") {
        return Count{0, 0};
    }
    const bool open = text.starts_with(at_least);
    if (!open && !text.starts_with('x')) {
        return {};
    }
    const auto number = vor::number_in<std::uint32_t>(text.substr(open ? at_least.size() : 1));
    if (!number || *number == 0) {
        return {};
    }
    return open ? Count{*number, std::nullopt} : Count{*number, *number};
}

// The elements of a list, as they are written.
std::vector<std::string> elements_of(Text text)
{
    std::vector<std::string> elements;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(find_outside(text, ",", begin), text.size());
        elements.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return elements;
}

bool same(const std::string& expected, const values::Scalar& found)
{
    if (const auto* const text = std::get_if<std::string>(&found)) {
        return expected == vor::mask || expected == vor::quoted(*text) || expected == vor::escaped(*text) ||
               expected == vor::quoted(*text, values::longest_in_line);
    }
    if (const auto* const natural = std::get_if<std::uint64_t>(&found)) {
        return vor::number_in<std::uint64_t>(expected) == *natural;
    }
    return vor::number_in<std::int64_t>(expected) == std::get<std::int64_t>(found);
}

bool same_value(const std::string& expected, const values::Value& found)
{
    if (expected == any) {
        return true;
    }
    const auto* const list = std::get_if<values::List>(&found.data);
    if (list == nullptr) {
        return same(expected, std::get<values::Scalar>(found.data));
    }
    const std::vector<std::string> elements = elements_of(expected);
    return std::ranges::equal(elements, *list, same);
}

// Whether it is the text, where ******** is any part of it.
bool same_masked(Text expected, Text found)
{
    std::size_t mask = expected.find(vor::mask);
    if (mask == expected.npos) {
        return expected == found;
    }
    if (!found.starts_with(expected.substr(0, mask))) {
        return false;
    }
    found.remove_prefix(mask);
    for (expected.remove_prefix(mask + vor::mask.size());; expected.remove_prefix(mask + vor::mask.size())) {
        mask = expected.find(vor::mask);
        if (mask == expected.npos) {
            return found.ends_with(expected);
        }
        const std::size_t at = found.find(expected.substr(0, mask));
        if (at == found.npos) {
            return false;
        }
        found.remove_prefix(at + mask);
    }
}

bool holds(Text object_pattern, const std::string& name)
{
    return object_pattern.find("{" + name + "}") != object_pattern.npos;
}

std::vector<std::string> names_of(const tables::MessageRow& row)
{
    std::vector<std::string> names;
    if (!row.layout.lead.empty()) {
        names.emplace_back(row.layout.lead);
    }
    for (const tables::Field& field : row.layout.fields()) {
        names.emplace_back(field.name);
    }
    return names;
}

// Of a query's answer.
std::vector<std::string> answer_names(const tables::MessageRow& row)
{
    std::vector<std::string> names;
    if (row.query != nullptr) {
        const gateway::State state;
        gateway::Measurements measurements(1);
        for (const values::Value& value : row.query({.row = &row}, state, measurements).values) {
            names.push_back(value.name);
        }
    }
    return names;
}

class Parser {
public:
    Parser(Text line, Detail detail) : line_(trimmed(vor::without_mark(line))), detail_(detail) {}

    std::optional<Expectation> run()
    {
        skip_blanks();
        const Text first = here();
        if (first.empty() || first.starts_with('#') || first == "vorsim:") { // nor what a gateway says of itself
            return {};
        }
        read_end();
        read_time();
        const std::size_t begin = at_;
        read_verdict();
        read_manager();
        if (found_.kind == Expectation::Kind::konfd) {
            read_konfd();
        } else if (found_.kind == Expectation::Kind::complaint) {
            read_complaint();
        } else {
            read_call();
            read_object();
        }
        found_.text = line_.substr(begin);
        return std::move(found_);
    }

private:
    void skip_blanks()
    {
        while (at_ < line_.size() && is_blank(line_[at_])) {
            ++at_;
        }
    }

    // The word at a place.
    Text word_at(std::size_t begin) const
    {
        std::size_t end = begin;
        while (end < line_.size() && !is_blank(line_[end])) {
            ++end;
        }
        return line_.substr(std::min(begin, line_.size()), end - std::min(begin, line_.size()));
    }
    Text here() const { return word_at(at_); }

    Text take()
    {
        const Text word = here();
        at_ += word.size();
        skip_blanks();
        return word;
    }

    bool take(Text word)
    {
        const bool is_next = here() == word;
        if (is_next) {
            take();
        }
        return is_next;
    }

    [[noreturn]] void fail_at(std::size_t at, const std::string& what) const { throw WordError(what, at + 1); }

    // "byte 3: expected ...", where one says so.
    [[noreturn]] void fail_in_konfd(std::size_t at, Text what) const
    {
        constexpr Text byte = "byte ";
        const std::size_t colon = std::min(what.find(": "), what.size());
        const auto number = vor::number_in<std::size_t>(what.substr(0, colon).substr(what.starts_with(byte) ? 5 : 0));
        fail_at(at + number.value_or(1) - 1, std::string(what.substr(number ? colon + 2 : 0)));
    }

    // What the check of a name throws is reported at the place.
    template <class Check>
    void check_at(std::size_t at, Check check) const
    {
        try {
            check();
        } catch (const tables::NameError& error) {
            fail_at(at, error.what());
        }
    }

    // The count, and the notes in front of it.
    void read_end()
    {
        const std::size_t blanks = line_.rfind("  ");
        if (const auto count = count_in(line_.substr(blanks == line_.npos ? 0 : blanks + 2))) {
            found_.count = *count;
            line_ = line_.substr(0, blanks);
        }
        line_ = without_notes(line_);
    }

    // The local time, or what decode prints first: number, time and duration.
    void read_time()
    {
        const std::size_t begin = at_;
        if (is_number(here())) {
            take();
        }
        const Text time = here();
        if (time.find(':') == time.npos || time.find_first_not_of("0123456789") == 0) {
            at_ = begin;
            return;
        }
        take();
        if (!take("-") && is_number(here())) {
            take();
            take("us");
        }
    }

    void read_verdict()
    {
        const std::size_t begin = at_;
        const auto keep = [&] { found_.verdict = trimmed(line_.substr(begin, at_ - begin)); };
        const auto take_number = [&] {
            if (is_number(here())) {
                take();
            }
        };
        if (take("status")) {
            if (!is_number(here())) {
                fail_at(at_, "expected a number after status");
            }
            take();
            keep();
        } else if (take("answer")) {
            if (here() != "-o" && here() != "-e") {
                fail_at(at_, "expected -o or -e after answer");
            }
            take();
            keep();
        } else if (take("answered") || take("one-way")) {
            keep();
        } else if (take("NO")) {
            if (!take("ANSWER")) {
                fail_at(at_, "expected ANSWER after NO");
            }
            keep();
        } else if (take("REFUSED") || take("INVALID")) {
            found_.kind = Expectation::Kind::complaint;
            take_number();
            keep();
        } else if (take("MALFORMED") || take("FOREIGN")) {
            found_.kind = Expectation::Kind::complaint;
            keep();
        }
    }

    void read_manager()
    {
        constexpr Text others[] = {"konfd"};
        const std::size_t begin = at_;
        const Text word = take();
        if (word.empty()) {
            fail_at(begin, "expected a manager");
        }
        if (word == "konfd") {
            found_.kind = found_.kind == Expectation::Kind::complaint ? found_.kind : Expectation::Kind::konfd;
            return;
        }
        if (word == "sap" || word == "SAP") {
            take();
        }
        const Text name = trimmed(line_.substr(begin, at_ - begin));
        check_at(begin, [&] { found_.sap = tables::checked_sap(name, others); });
        rows_.of(*found_.sap);
        // With --ids one space, the SAP and the id follow.
        const bool ids = line_.substr(begin + name.size(), at_ - begin - name.size()) == " " && is_number(here());
        if (ids) {
            take();
            const Text after = word_at(at_);
            if (after.starts_with("0x") && line_[at_ - 1] == ' ' && line_[at_ - 2] != ' ') {
                take();
            }
        }
    }

    void read_konfd()
    {
        if (take("client")) {
            take();
        }
        const std::size_t begin = at_;
        const Text text = line_.substr(at_);
        if (text.empty() && detail_ == Detail::whole) {
            fail_at(at_, "expected konfd's commands, or * for any");
        }
        found_.rest = text.empty() ? any : text;
        if (found_.rest == any) {
            return;
        }
        std::string commands;
        std::string complaint;
        for (std::size_t at = begin; at <= line_.size();) {
            const Text left = line_.substr(at);
            const std::size_t end = std::min({find_outside(left, " | "), find_outside(left, ": "), left.size()});
            const auto parsed = konfd::parse(left.substr(0, end));
            if (const auto* const error = std::get_if<konfd::SyntaxError>(&parsed)) {
                fail_in_konfd(at, error->text);
            }
            for (const konfd::Command& command : std::get<std::vector<konfd::Command>>(parsed)) {
                commands += (commands.empty() ? "" : " | ") + konfd::text_of(command, true);
            }
            if (left.substr(end).starts_with(": ")) {
                complaint = left.substr(end);
                break;
            }
            at += end + 3;
        }
        // A text that was cut stays as it was shown.
        found_.rest = commands.find("... (") == commands.npos ? commands + complaint : std::string(text);
    }

    void read_complaint()
    {
        if (!found_.sap && take("client")) { // konfd's
            take();
        } else if (found_.sap) {
            if (here().empty()) {
                fail_at(at_, "expected a message's id, its call or -");
            }
            found_.call = take();
        }
        if (at_ == line_.size()) {
            fail_at(at_, "expected what is wrong with it, or * for anything");
        }
        found_.rest = line_.substr(at_);
    }

    void read_call()
    {
        const std::size_t begin = at_;
        const Text name = take();
        if (name.empty()) {
            fail_at(begin, "expected a call");
        }
        check_at(begin, [&] { rows_.call(std::string(name)); });
        found_.call = name;
    }

    void read_object()
    {
        if (at_ == line_.size()) {
            if (detail_ == Detail::whole) {
                fail_at(at_, fmt::format("expected {}, or * for any", rows_.objects()));
            }
            found_.any_values = true;
            return;
        }
        // The object's own text may hold what separates it from its values.
        std::optional<WordError> first;
        for (std::size_t end = find_colon(at_);; end = find_colon(end + 1)) {
            try {
                Parser attempt(*this);
                attempt.read_object_until(end);
                *this = std::move(attempt);
                return;
            } catch (const WordError& error) {
                first = first ? first : error;
            }
            if (end == line_.size()) {
                break;
            }
        }
        const std::size_t blank = line_.rfind(' ');
        if (blank == line_.npos || !take_count(blank + 1)) {
            throw WordError(*first);
        }
        read_object();
    }

    std::size_t find_colon(std::size_t from) const { return std::min(line_.find(": ", from), line_.size()); }

    void read_object_until(std::size_t end)
    {
        const Text object = trimmed(line_.substr(at_, end - at_));
        if (object != any) {
            check_at(at_, [&] { rows_.object(object); });
            found_.object = object;
        }
        at_ = std::min(end + 1, line_.size());
        skip_blanks();
        found_.any_values = at_ == line_.size() && (object == any || detail_ == Detail::as_wanted);
        read_values();
        choose_row();
    }

    // "x3" after a single space, where no value can be.
    bool take_count(std::size_t at)
    {
        const std::size_t before = line_.substr(0, at).rfind("at least ");
        const std::size_t begin = before != Text::npos && before + 9 == at ? before : at;
        const auto count = count_in(line_.substr(begin));
        if (count) {
            found_.count = *count;
            line_ = trimmed(line_.substr(0, begin));
        }
        return count.has_value();
    }

    void read_values()
    {
        while (at_ < line_.size()) {
            const std::size_t begin = at_;
            if (take(any)) {
                found_.any_values = true;
                continue;
            }
            const std::size_t length = vor::named_length(line_.substr(at_));
            if (length == 0) {
                if (take_count(begin)) {
                    break;
                }
                fail_at(begin, "expected NAME=VALUE, *, xN, at least N or never");
            }
            const std::string name(line_.substr(at_, length));
            at_ += length + 1;
            const std::size_t end =
                std::min({find_outside(line_, " ", at_), find_outside(line_, "\t", at_), line_.size()});
            const std::string text(line_.substr(at_, end - at_));
            check_name(begin, name);
            check_value(at_, name, text);
            found_.values.push_back({name, text});
            at_ = end;
            skip_blanks();
        }
    }

    void check_name(std::size_t at, const std::string& name) const
    {
        if (std::ranges::find(found_.values, name, &Expectation::Value::name) != found_.values.end()) {
            fail_at(at, fmt::format("unexpected second {}", name));
        }
        for (const tables::MessageRow* row : rows_.rows()) {
            const std::vector<std::string> answered = answer_names(*row);
            if (std::ranges::find(answered, name) != answered.end()) {
                return;
            }
        }
        check_at(at, [&] { rows_.field(name); });
    }

    // A value that no message can hold would be missed for ever.
    void check_value(std::size_t at, const std::string& name, const std::string& text) const
    {
        if (text == any) {
            return;
        }
        std::string wrong;
        for (const tables::MessageRow* row : rows_.rows()) {
            const tables::Field* const field = tables::field_named(*row, name);
            wrong.clear();
            for (const std::string& element : field != nullptr ? elements_of(text) : std::vector<std::string>()) {
                wrong = wrong.empty() ? wrong_value(*field, element) : wrong;
            }
            if (wrong.empty()) {
                return;
            }
        }
        fail_at(at, fmt::format("{} must be {}, not {}", name, wrong, text.empty() ? "nothing" : text));
    }

    // What the field holds instead; empty: it can hold the element.
    static std::string wrong_value(const tables::Field& field, const std::string& element)
    {
        if (element == vor::mask) {
            return field.display == tables::Display::secret ? "" : "a value or *, as it is no secret";
        }
        if (field.display == tables::Display::address) {
            in_addr address{};
            return inet_pton(AF_INET, element.c_str(), &address) == 1 ? "" : "an IPv4 address";
        }
        if (field.kind == tables::Kind::text) {
            return element.empty() || (element.front() == '"' && (element.size() < 2 || element.back() != '"'))
                       ? "a text in double quotes"
                       : "";
        }
        const auto number = vor::number_in<std::int64_t>(element);
        const tables::Range range = tables::range_of(field);
        return number && *number >= range.least && *number <= range.most
                   ? ""
                   : fmt::format("{} to {}", range.least, range.most);
    }

    // The row that has these values and no others.
    void choose_row()
    {
        std::vector<std::string> missing;
        for (const tables::MessageRow* row : rows_.rows()) {
            missing.clear();
            for (const std::string& name : names_of(*row)) {
                const tables::Field* const field = tables::field_named(*row, name);
                const bool given =
                    std::ranges::find(found_.values, name, &Expectation::Value::name) != found_.values.end();
                if (!given && !found_.any_values && !holds(row->object, name) &&
                    (field == nullptr || !field->repeated)) {
                    missing.push_back(name + "=");
                }
            }
            if (missing.empty()) {
                found_.object_pattern = row->object;
                return;
            }
        }
        fail_at(at_, fmt::format("expected {}, or * for any value", vor::joined(missing, " ")));
    }

    Text line_;
    Detail detail_;
    std::size_t at_ = 0;
    tables::Selection rows_;
    Expectation found_;
};

} // namespace

bool Expectation::matches(const values::Record& record) const
{
    using RecordKind = values::Record::Kind;
    if (kind == Kind::konfd) {
        return record.kind == RecordKind::konfd && (verdict.empty() || verdict == columns_of(record.line).verdict) &&
               !record.complained &&
               (rest == any || same_masked(rest, record.commands) ||
                same_masked(rest, fmt::format("{}: {}", record.commands, record.complaint)));
    }
    if (kind == Kind::complaint) {
        const Columns columns = columns_of(record.line);
        const bool by_konfd = record.kind == RecordKind::konfd;
        return verdict == columns.verdict && sap.has_value() != by_konfd && (by_konfd || sap == record.sap) &&
               (by_konfd || call == columns.call) && (rest == any || same_masked(rest, without_notes(columns.text)));
    }
    // A real manager that did not answer is complained of, and seen by the verdict alone.
    const bool complaint = record.complained && (verdict.empty() || !record.complaint.empty());
    if (record.kind != RecordKind::message || complaint || (sap && *sap != record.sap) ||
        (object && *object != record.object) || !tables::same_call(call, record.call) ||
        (!verdict.empty() && verdict != columns_of(record.line).verdict)) {
        return false;
    }
    const auto find = [](const std::vector<values::Value>& in, const std::string& name) {
        const auto found = std::ranges::find(in, name, &values::Value::name);
        return found == in.end() ? nullptr : &*found;
    };
    for (const Value& value : values) {
        const values::Value* found = find(record.values, value.name);
        found = found != nullptr ? found : find(record.answer_values, value.name);
        if (found == nullptr || !same_value(value.text, *found)) {
            return false;
        }
    }
    return any_values || std::ranges::all_of(record.values, [this](const values::Value& value) {
               return holds(object_pattern, value.name) ||
                      std::ranges::find(values, value.name, &Value::name) != values.end();
           });
}

std::optional<Expectation> parse_expectation(std::string_view line, Detail detail)
{
    return Parser(line, detail).run();
}

std::vector<Expectation> read_expectations(std::string_view text, const std::string& file)
{
    std::vector<Expectation> all;
    std::string errors;
    std::size_t number = 0;
    for (const std::string_view line : vor::lines_in(text)) {
        ++number;
        try {
            if (auto expectation = parse_expectation(line)) {
                expectation->line = number;
                all.push_back(std::move(*expectation));
            }
        } catch (const WordError& error) {
            errors +=
                fmt::format("{}{}:{}:{}: {}", errors.empty() ? "" : "\n", file, number, error.column, error.what());
        }
    }
    return errors.empty() ? all : throw BadExpectations(errors);
}

std::string expectation_of(const values::Record& record)
{
    const Columns columns = columns_of(record.line);
    const std::string verdict = fmt::format("{:<{}}", columns.verdict, verdict_width);
    if (record.kind == values::Record::Kind::konfd) {
        return fmt::format("{}  konfd  {}", verdict, without_notes(columns.text));
    }
    if (record.call.empty() || !record.complaint.empty()) {
        return fmt::format("{}  {}  {}  {}", verdict, columns.manager, columns.call, without_notes(columns.text));
    }
    std::string values;
    for (const tables::MessageRow* row : tables::rows_of(record.id, record.sap)) {
        const std::vector<std::string> names = names_of(*row);
        const bool is_its = row->call == record.call && std::ranges::all_of(record.values, [&](const auto& value) {
                                return std::ranges::find(names, value.name) != names.end();
                            });
        if (is_its) {
            std::vector<values::Value> shown;
            for (const values::Value& value : record.values) {
                shown.push_back(gateway::value_of(*row, tables::field_named(*row, value.name), value.data));
            }
            values = gateway::values_text(shown);
            break;
        }
    }
    return fmt::format("{}  {}  {}  {}{}{}", verdict, columns.manager, columns.call, record.object,
                       values.empty() ? "" : ": ", values);
}

} // namespace vorsim::record
