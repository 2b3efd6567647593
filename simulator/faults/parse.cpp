#include "faults/parse.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <set>

#include <fmt/core.h>
#include <fnmatch.h>

#include "tables/managers.hpp"
#include "text/nearest.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::faults {
namespace {

using vor::number_in;

// Words, quoted texts, colons and commas; the last is empty and stands behind them.
std::vector<vor::Word> tokens_of(std::string_view line)
{
    std::vector<vor::Word> tokens = vor::words_in(line, {.ends = ":,\"#", .expand = {}});
    for (const vor::Word& token : tokens) {
        if (token.quoted && token.named != 0) {
            throw RuleError("a double quote within a word", token.column + token.named + 1);
        }
    }
    tokens.push_back({.column = tokens.empty() ? 1 : tokens.back().end});
    return tokens;
}

// The number of "2nd", "3rd" and "11th".
std::optional<std::uint32_t> ordinal_in(std::string_view text)
{
    if (text.size() < 3) {
        return {};
    }
    const std::string_view ending = text.substr(text.size() - 2);
    const auto number = number_in<std::uint32_t>(text.substr(0, text.size() - 2));
    constexpr std::string_view endings[] = {"st", "nd", "rd", "th"};
    return number && *number > 0 && std::ranges::find(endings, ending) != std::end(endings) ? number : std::nullopt;
}

// The millionths of "1%" and "0.25%".
std::optional<std::uint32_t> chance_in(std::string_view text)
{
    double percent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), percent);
    const bool good = error == std::errc{} && std::string_view(end, text.data() + text.size()) == "%" && percent > 0 &&
                      percent <= 100;
    return good ? std::optional(static_cast<std::uint32_t>(std::lround(percent * 10'000))) : std::nullopt;
}

std::vector<std::string> who_names()
{
    std::vector<std::string> names{"any", "konfd"};
    for (const Manager& manager : managers) {
        names.emplace_back(manager.name);
    }
    return names;
}

std::vector<std::string> call_names()
{
    std::set<std::string> names;
    for (const ListedRow& listed : all_rows()) {
        names.emplace(listed.row->call);
    }
    return {names.begin(), names.end()};
}

using Kind = Action::Kind;

enum class Wants : std::uint8_t { nothing, integer, natural, time, text };

// What may happen, in words.
struct ActionRow {
    std::string_view words;
    Kind kind;
    bool manager; // befalls a manager's answers
    bool konfd;   // befalls konfd's
    Wants wants = Wants::nothing;
    const char* expected = "";
};

constexpr char a_time[] = "a time, such as 20ms, 4s or 2min";
constexpr ActionRow actions[] = {
    {"status", Kind::status, true, false, Wants::integer, "a status, such as 7"},
    {"id low", Kind::id_low, true, false},
    {"id high", Kind::id_high, true, false},
    {"id", Kind::id, true, false, Wants::natural, "an id, such as 0x7003 (or low, high)"},
    {"no payload", Kind::no_payload, true, false},
    {"short", Kind::short_payload, true, false, Wants::natural, "how many bytes are left"},
    {"late", Kind::late, true, false, Wants::time, a_time},
    {"doubled", Kind::doubled, true, false},
    {"swapped", Kind::swapped, true, false},
    {"never", Kind::never, true, true},
    {"refuse", Kind::refuse, true, false},
    {"die", Kind::die, true, false, Wants::time, a_time},
    {"answer", Kind::answer, false, true, Wants::text, "the text between double quotes"},
    {"split", Kind::split, false, true},
    {"hang up", Kind::hang_up, false, true},
};

std::string action_names(bool konfd)
{
    std::string names;
    for (const ActionRow& row : actions) {
        if (konfd ? row.konfd : row.manager) {
            constexpr std::string_view arguments[] = {"", " N", " N", " TIME", " \"TEXT\""};
            names += fmt::format("{}{}{}", names.empty() ? "" : ", ", row.words,
                                 arguments[static_cast<std::size_t>(row.wants)]);
        }
    }
    return names;
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
        const std::size_t action = at_;
        read_action();
        rule_.action_text = text_of(action, at_);
        if (take(",")) {
            read_end();
        }
        if (at_ + 1 < tokens_.size()) {
            expected(rule_.end.times || rule_.end.time ? "the rule's end" : "a comma and how often, or the rule's end");
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

    // What stands here, and is no text between double quotes.
    std::string_view plain() const { return here().quoted ? std::string_view() : here().text; }

    [[noreturn]] void expected(const std::string& what, const std::vector<std::string>& known = {}) const
    {
        const vor::Word& found = here();
        std::string seen = "the rule ends here";
        if (found.quoted || !found.text.empty()) {
            seen = vor::quoted(found.text);
        }
        const auto near = vor::nearest(found.text, known);
        throw RuleError(fmt::format("{}; expected {}{}", seen, what, near.empty() ? "" : vor::suggestion(near, "")),
                        found.column);
    }

    // What was read of the token here, which is passed.
    template <class Value>
    Value read(const std::optional<Value>& value, const std::string& what, const std::vector<std::string>& known = {})
    {
        if (!value) {
            expected(what, known);
        }
        ++at_;
        return *value;
    }

    std::uint16_t sap() { return read(number_in<std::uint16_t>(plain()), "a number from 0 to 65535"); }
    Milliseconds time() { return read(vor::time_in(plain()), a_time); }

    void read_who()
    {
        Concern& concern = rule_.concern;
        if (take("any")) {
            concern.who = Concern::Who::any;
        } else if (take("konfd")) {
            concern.who = Concern::Who::konfd;
        } else if (take("SAP")) {
            concern.sap = sap();
        } else {
            concern.sap = read(sap_named(plain()), "a manager, SAP N, any or konfd", who_names());
        }
    }

    void read_when(Concern::When when, std::optional<std::uint32_t> number, const std::string& what)
    {
        Concern& concern = rule_.concern;
        if (!number) {
            expected(what);
        }
        if (concern.when != Concern::When::always) {
            expected("one of Nth, every Nth and chance N%, once");
        }
        concern.when = when;
        concern.number = *number;
        ++at_;
    }

    void read_condition()
    {
        Concern& concern = rule_.concern;
        const bool konfd = concern.who == Concern::Who::konfd;
        const vor::Word& token = here();
        if (token.quoted) {
            if (!concern.object.empty() || token.text.empty()) {
                expected(konfd ? "one text of konfd's commands" : "one object");
            }
            concern.object = tokens_[at_++].text;
        } else if (take("every")) {
            read_when(Concern::When::every_nth, ordinal_in(here().text), "2nd, 3rd, 4th ...");
        } else if (take("chance")) {
            read_when(Concern::When::chance, chance_in(here().text), "a part of 100, such as 1%");
        } else if (const auto ordinal = ordinal_in(token.text)) {
            read_when(Concern::When::nth, ordinal, "");
        } else if (!konfd && take("from")) {
            if (!take("SAP") || concern.client) {
                expected("SAP and the client's number, once");
            }
            concern.client = sap();
        } else if (const auto id = number_in<std::uint32_t>(token.text);
                   !konfd && id && !concern.id && concern.call.empty()) {
            concern.id = id;
            ++at_;
        } else if (!konfd && !concern.id && concern.call.empty() && token.text.find('_') != token.text.npos) {
            read_call();
        } else {
            expected(konfd ? "\"TEXT\", Nth, every Nth, chance N% or a colon"
                           : "a call, an id, \"OBJECT\", from SAP N, Nth, every Nth, chance N% or a colon");
        }
    }

    void read_call()
    {
        const std::vector<std::string> known = call_names();
        const std::string& name = here().text;
        const bool is_known = std::ranges::any_of(known, [&](const std::string& call) {
            return fnmatch(name.c_str(), call.c_str(), 0) == 0 || fnmatch(call.c_str(), name.c_str(), 0) == 0;
        });
        if (!is_known) {
            expected("a call that sends a message", known);
        }
        rule_.concern.call = tokens_[at_++].text;
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
        const bool konfd = rule_.concern.who == Concern::Who::konfd;
        const auto row = std::ranges::find_if(
            actions, [&](const ActionRow& one) { return (konfd ? one.konfd : one.manager) && take_words(one.words); });
        if (row == std::end(actions)) {
            expected(fmt::format("one of {}", action_names(konfd)));
        }
        Action& action = rule_.action;
        action.kind = row->kind;
        switch (row->wants) {
        case Wants::integer:
            action.number = read(number_in<std::int32_t>(plain()), row->expected);
            break;
        case Wants::natural:
            action.number = read(number_in<std::uint32_t>(plain()), row->expected);
            take("bytes");
            break;
        case Wants::time:
            action.time = time();
            break;
        case Wants::text:
            action.text = read(here().quoted ? std::optional(here().text) : std::nullopt, row->expected);
            break;
        default:
            break;
        }
    }

    void read_end()
    {
        if (take("for")) {
            rule_.end.time = time();
        } else if (take("once")) {
            rule_.end.times = 1;
        } else if (take("twice")) {
            rule_.end.times = 2;
        } else if (const auto times = number_in<std::uint32_t>(plain()); times && *times > 0) {
            ++at_;
            if (!take("times")) {
                expected("times");
            }
            rule_.end.times = times;
        } else {
            expected("once, twice, N times or for TIME");
        }
    }

    std::string_view line_;
    std::vector<vor::Word> tokens_;
    std::size_t at_ = 0;
    Rule rule_;
};

} // namespace

std::optional<std::uint16_t> sap_named(std::string_view name)
{
    const auto found = std::ranges::find(managers, name, &Manager::name);
    return found != managers.end() ? std::optional(found->sap) : number_in<std::uint16_t>(name);
}

Rule parse_rule(std::string_view line)
{
    return Parser(line).run();
}

std::vector<Rule> read_rules(const std::string& file)
{
    std::ifstream stream(file);
    if (!stream) {
        throw BadFile(fmt::format("{}: cannot be read: {}", file, std::strerror(errno)));
    }
    std::vector<Rule> rules;
    std::string complaints;
    std::size_t number = 1;
    for (std::string line; std::getline(stream, line); ++number) {
        try {
            if (Parser parser(line); !parser.empty()) {
                rules.push_back(parser.run());
            }
        } catch (const RuleError& complaint) {
            complaints += fmt::format("{}{}:{}:{}: {}", complaints.empty() ? "" : "\n", file, number, complaint.column,
                                      complaint.what());
        }
    }
    if (!complaints.empty()) {
        throw BadFile(complaints);
    }
    return rules;
}

} // namespace vorsim::faults
