#include "faults/parse.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/core.h>

#include "gateway/gateway.hpp"
#include "tables/names.hpp"
#include "text/file.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::faults {
namespace {

using vor::number_in;

// Words, quoted texts, colons and commas; the last token is empty and marks the end.
std::vector<vor::Word> tokens_of(std::string_view line)
{
    std::vector<vor::Word> tokens = vor::words_in(line, {.ends = ":,\"#", .expand = {}});
    for (const vor::Word& token : tokens) {
        if (token.quoted && token.named != 0) {
            throw RuleError("unexpected double quote within a word", token.column + token.named + 1);
        }
    }
    tokens.push_back({.column = tokens.empty() ? 1 : tokens.back().end});
    return tokens;
}

// "2nd"
std::string ordinal_text(std::uint32_t number)
{
    constexpr std::string_view endings[] = {"th", "st", "nd", "rd"};
    const bool teen = number / 10 % 10 == 1;
    const std::uint32_t digit = number % 10;
    return fmt::format("{}{}", number, endings[teen || digit > 3 ? 0 : digit]);
}

// The number of "2nd", and also of "2th": its ending is checked by whoever reads it.
std::optional<std::uint32_t> ordinal_in(std::string_view text)
{
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view ending = text.substr(digits);
    const auto number = number_in<std::uint32_t>(text.substr(0, digits));
    const bool is_ordinal = ending == "st" || ending == "nd" || ending == "rd" || ending == "th";
    return number && *number > 0 && is_ordinal ? number : std::nullopt;
}

// The millionths of "1%" and "0.25%".
std::optional<std::uint32_t> chance_in(std::string_view text)
{
    double percent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), percent);
    const bool good = error == std::errc{} && std::string_view(end, text.data() + text.size()) == "%" &&
                      percent >= 0.0001 && percent <= 100;
    return good ? std::optional(static_cast<std::uint32_t>(std::lround(percent * 10'000))) : std::nullopt;
}

using Kind = Action::Kind;

enum class Operand : std::uint8_t { none, status, natural, time, text };

struct ActionRow {
    std::string_view words;
    Kind kind;
    bool manager; // acts on a manager's answers
    bool konfd;   // acts on konfd's
    Operand operand = Operand::none;
    const char* expected = "";
};

constexpr char a_time[] = "a time such as 20ms, 4s or 2min";
constexpr ActionRow actions[] = {
    {"status", Kind::status, true, false, Operand::status},
    {"id low", Kind::id_low, true, false},
    {"id high", Kind::id_high, true, false},
    {"id", Kind::id, true, false, Operand::natural, "low, high or an id such as 0x7003"},
    {"no payload", Kind::no_payload, true, false},
    {"short", Kind::short_payload, true, false, Operand::natural, "a number of bytes"},
    {"late", Kind::late, true, false, Operand::time, a_time},
    {"doubled", Kind::doubled, true, false},
    {"swapped", Kind::swapped, true, false},
    {"never", Kind::never, true, true},
    {"refuse", Kind::refuse, true, false},
    {"die", Kind::die, true, false, Operand::time, a_time},
    {"answer", Kind::answer, false, true, Operand::text, "a text in double quotes"},
    {"split", Kind::split, false, true},
    {"hang up", Kind::hang_up, false, true},
};

std::string action_names(bool konfd)
{
    std::vector<std::string> names;
    for (const ActionRow& row : actions) {
        if (konfd ? row.konfd : row.manager) {
            constexpr std::string_view arguments[] = {"", " N", " N", " TIME", " \"TEXT\""};
            names.push_back(fmt::format("{}{}", row.words, arguments[static_cast<std::size_t>(row.operand)]));
        }
    }
    return vor::alternatives(names);
}

class Parser {
public:
    explicit Parser(std::string_view line) : line_(line), tokens_(tokens_of(line)) {}

    bool empty() const { return tokens_.size() == 1; }

    Rule run()
    {
        read_who();
        while (!take(":")) {
            read_condition();
        }
        check_names();
        const std::size_t action = at_;
        read_action();
        check_action(tokens_[action].column);
        rule_.action_text = text_of(action, at_);
        if (take(",")) {
            read_end();
        }
        if (at_ + 1 < tokens_.size()) {
            expected(rule_.end.times || rule_.end.time ? "the end of the rule" : "a comma or the end of the rule");
        }
        rule_.text = text_of(0, at_);
        return rule_;
    }

private:
    const vor::Word& here() const { return tokens_[at_]; }
    bool is(std::size_t at, std::string_view word) const { return !tokens_[at].quoted && tokens_[at].text == word; }
    bool take(std::string_view word)
    {
        const bool taken = is(at_, word);
        at_ += taken ? 1 : 0;
        return taken;
    }
    // As it was written, from one token up to another.
    std::string text_of(std::size_t begin, std::size_t end) const
    {
        const std::size_t from = tokens_[begin].column;
        return std::string(line_.substr(from - 1, tokens_[end - 1].end - from));
    }

    // The word here; empty for a quoted text.
    std::string_view plain() const { return here().quoted ? std::string_view() : here().text; }

    [[noreturn]] void expected(const std::string& what, const std::vector<std::string>& known = {}) const
    {
        const vor::Word& found = here();
        const bool at_end = !found.quoted && found.text.empty();
        const std::vector<std::string> nearest = at_end ? std::vector<std::string>() : vor::nearest(found.text, known);
        throw RuleError(fmt::format("unexpected {}{}", at_end ? "end of the rule" : vor::quoted(found.text),
                                    vor::suggestion(nearest, "expected " + what)),
                        found.column);
    }

    // The value of the token here, which is consumed.
    template <class Value>
    Value read(const std::optional<Value>& value, const std::string& what, const std::vector<std::string>& known = {})
    {
        if (!value) {
            expected(what, known);
        }
        ++at_;
        return *value;
    }

    std::uint16_t sap() { return read(number_in<std::uint16_t>(plain()), "a SAP from 0 to 65535"); }
    Milliseconds time() { return read(vor::time_in(plain()), a_time); }

    void read_who()
    {
        Condition& condition = rule_.condition;
        if (take("any")) {
            condition.who = Condition::Who::any;
        } else if (take("konfd")) {
            condition.who = Condition::Who::konfd;
        } else if (take("SAP")) {
            condition.sap = sap();
        } else {
            condition.sap = manager();
        }
    }

    std::uint16_t manager()
    {
        constexpr std::string_view others[] = {"any", "konfd"};
        if (plain().empty() || plain() == ":") {
            expected("a manager, SAP N, any or konfd");
        }
        try {
            return read(std::optional(tables::checked_sap(plain(), others)), "");
        } catch (const tables::NameError& error) {
            throw RuleError(error.what(), here().column);
        }
    }

    void read_when(Condition::When when, std::optional<std::uint32_t> number, const std::string& what)
    {
        Condition& condition = rule_.condition;
        if (!number) {
            expected(what);
        }
        if (when != Condition::When::chance && here().text != ordinal_text(*number)) {
            expected(ordinal_text(*number));
        }
        if (condition.when != Condition::When::always) {
            expected("only one of Nth, every Nth and chance N%");
        }
        condition.when = when;
        condition.number = *number;
        ++at_;
    }

    void read_condition()
    {
        Condition& condition = rule_.condition;
        const bool konfd = condition.who == Condition::Who::konfd;
        const vor::Word& token = here();
        if (token.quoted) {
            if (!condition.object.empty() || token.text.empty()) {
                expected(konfd ? "only one text" : "only one object");
            }
            object_column_ = token.column;
            condition.object = tokens_[at_++].text;
        } else if (take("every")) {
            read_when(Condition::When::every_nth, ordinal_in(here().text), "2nd, 3rd, 4th ...");
        } else if (take("chance")) {
            read_when(Condition::When::chance, chance_in(here().text), "a chance up to 100%, such as 1%");
        } else if (const auto ordinal = ordinal_in(token.text)) {
            read_when(Condition::When::nth, ordinal, "");
        } else if (!konfd && take("from")) {
            if (!take("SAP") || condition.client) {
                expected(condition.client ? "only one SAP N" : "SAP N");
            }
            condition.client = sap();
        } else if (const auto id = number_in<std::uint32_t>(token.text);
                   !konfd && id && !condition.id && condition.call.empty()) {
            condition.id = id;
            ++at_;
        } else if (!konfd && !condition.id && condition.call.empty() && token.text.find('_') != token.text.npos) {
            call_column_ = token.column;
            condition.call = tokens_[at_++].text;
        } else if (konfd) {
            expected("\"TEXT\", Nth, every Nth, chance N% or a colon", {"every", "chance"});
        } else {
            expected("a call, an id, \"OBJECT\", from SAP N, Nth, every Nth, chance N% or a colon",
                     {"every", "chance", "from"});
        }
    }

    // The messages that the rule is about, which must be able to come.
    void check_names()
    {
        const Condition& condition = rule_.condition;
        if (condition.who == Condition::Who::konfd) {
            return;
        }
        std::size_t column = call_column_;
        try {
            if (condition.who == Condition::Who::manager) {
                about_.of(condition.sap);
            }
            if (!condition.call.empty()) {
                about_.call(condition.call);
            }
            column = object_column_;
            if (!condition.object.empty()) {
                about_.object(condition.object);
            }
        } catch (const tables::NameError& error) {
            throw RuleError(error.what(), column);
        }
    }

    // Those that the tables have. Messages that they do not have are answered, too, and have no call and no object.
    std::vector<const tables::MessageRow*> rows() const
    {
        std::vector<const tables::MessageRow*> rows(about_.rows().begin(), about_.rows().end());
        std::erase_if(rows, [id = rule_.condition.id](const auto* row) { return id && row->exchange.id != *id; });
        return rows;
    }

    void check_action(std::size_t column)
    {
        const Condition& condition = rule_.condition;
        const Action& action = rule_.action;
        if (condition.who == Condition::Who::konfd) {
            return;
        }
        const bool known = !condition.call.empty() || !condition.object.empty();
        std::size_t longest = known ? 0 : gateway::status_size;
        for (const tables::MessageRow* row : rows()) {
            longest = std::max(longest, gateway::answer_size(*row));
        }
        if (longest == 0 && !action.acts_on_one_way()) {
            throw RuleError("a one-way message has no answer; expected refuse or die TIME", column);
        }
        if (action.kind == Kind::short_payload && action.number >= static_cast<std::int64_t>(longest)) {
            throw RuleError(fmt::format("short must be 0 to {}, since the answer has {}, not {}", longest - 1,
                                        vor::counted(longest, "byte"), action.number),
                            column);
        }
    }

    bool take_words(std::string_view words)
    {
        const std::size_t blank = words.find(' ');
        const bool two = blank != words.npos;
        if (!is(at_, words.substr(0, blank)) || (two && !is(at_ + 1, words.substr(blank + 1)))) {
            return false;
        }
        at_ += two ? 2 : 1;
        return true;
    }

    void read_action()
    {
        const bool konfd = rule_.condition.who == Condition::Who::konfd;
        const auto row = std::ranges::find_if(
            actions, [&](const ActionRow& one) { return (konfd ? one.konfd : one.manager) && take_words(one.words); });
        if (row == std::end(actions)) {
            std::vector<std::string> known;
            for (const ActionRow& one : actions) {
                if (konfd ? one.konfd : one.manager) {
                    known.emplace_back(one.words);
                } else if (take_words(one.words)) { // no misspelling
                    --at_;
                    expected(action_names(konfd));
                }
            }
            expected(action_names(konfd), known);
        }
        Action& action = rule_.action;
        action.kind = row->kind;
        switch (row->operand) {
        case Operand::status:
            action.number = status();
            read_more_statuses();
            break;
        case Operand::natural:
            action.number = read(number_in<std::uint32_t>(plain()), row->expected);
            take("bytes");
            break;
        case Operand::time:
            action.time = time();
            break;
        case Operand::text:
            action.text = read(here().quoted ? std::optional(here().text) : std::nullopt, row->expected);
            break;
        default:
            break;
        }
    }

    std::int32_t status() { return read(number_in<std::int32_t>(plain()), "a status such as 7"); }

    // ", 2, 3" or ", 2, then 0": each in turn, the one after "then" for ever.
    void read_more_statuses()
    {
        std::vector<std::int32_t>& script = rule_.action.script;
        bool last = false;
        while (!last && is(at_, ",")) {
            last = is(at_ + 1, "then");
            const bool another = number_in<std::int32_t>(tokens_[at_ + 1].text) && !is(at_ + 2, "times");
            if (!last && !another) {
                break;
            }
            if (rule_.condition.when == Condition::When::nth) {
                expected("the end of the rule, which acts only once");
            }
            at_ += last ? 2 : 1;
            if (script.empty()) {
                script.push_back(static_cast<std::int32_t>(rule_.action.number));
            }
            script.push_back(status());
        }
        if (!script.empty() && !last) {
            rule_.end.times = static_cast<std::uint32_t>(script.size());
        }
    }

    void read_end()
    {
        if (take("for")) {
            rule_.end.time = time();
        } else if (!rule_.action.script.empty()) {
            expected("for TIME, since a list of statuses has its own end");
        } else if (take("once")) {
            rule_.end.times = 1;
        } else if (take("twice")) {
            rule_.end.times = 2;
        } else if (const auto times = number_in<std::uint32_t>(plain()); times && *times > 0) {
            ++at_;
            if (!take("times")) {
                expected("\"times\"");
            }
            rule_.end.times = times;
        } else {
            expected("once, twice, N times or for TIME");
        }
    }

    std::string_view line_;
    std::vector<vor::Word> tokens_;
    std::size_t at_ = 0;
    std::size_t call_column_ = 1;
    std::size_t object_column_ = 1;
    tables::Selection about_;
    Rule rule_;
};

} // namespace

Rule parse_rule(std::string_view line)
{
    return Parser(line).run();
}

std::vector<Rule> read_rules(const std::string& file)
{
    std::string content;
    try {
        content = vor::content_of(file);
    } catch (const vor::FileError& error) {
        throw std::runtime_error(fmt::format("cannot read {}: {}", file, error.what()));
    }
    std::vector<Rule> rules;
    std::string errors;
    std::size_t number = 0;
    for (const std::string_view line : vor::lines_in(content)) {
        ++number;
        try {
            if (Parser parser(line); !parser.empty()) {
                rules.push_back(parser.run());
            }
        } catch (const RuleError& error) {
            errors +=
                fmt::format("{}{}:{}:{}: {}", errors.empty() ? "" : "\n", file, number, error.column, error.what());
        }
    }
    if (!errors.empty()) {
        throw BadFile(errors);
    }
    return rules;
}

} // namespace vorsim::faults
