#include "konfd/pattern.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <memory>
#include <utility>

namespace vorsim::konfd {
namespace {

using Instruction = Pattern::Instruction;
using Operation = Pattern::Operation;
using Place = Pattern::Place;
using Bytes = Pattern::Bytes;

// The cost of a pattern is known before it is made: a repetition copies what it
// repeats.
constexpr std::size_t most_cost = 2000;
constexpr std::size_t deepest_group = 50;
constexpr int unlimited = -1;

struct Node {
    enum class Kind : std::uint8_t { bytes, place, sequence, alternatives, repetition };

    Kind kind{};
    Bytes set{};
    Place place{};
    int least = 0;
    int most = 0;
    std::vector<Node> parts{};

    // Of instructions, and of nodes visited on the way to them.
    std::size_t cost() const
    {
        std::size_t all = 1;
        for (const Node& part : parts) {
            all += part.cost() + (kind == Kind::alternatives ? 2 : 0);
        }
        if (kind == Kind::repetition) {
            const auto copies = static_cast<std::size_t>(most == unlimited ? least + 1 : std::max(most, 1));
            all = 1 + copies * (all + 2);
        }
        return std::min(all, most_cost + 1);
    }
};

bool in_word(int byte)
{
    return byte >= 0 && (std::isalnum(byte) != 0 || byte == '_');
}

Bytes all_where(int (*is_one)(int))
{
    Bytes set;
    for (int byte = 0; byte < 256; ++byte) {
        set[static_cast<std::size_t>(byte)] = is_one(byte) != 0;
    }
    return set;
}

// ---- Reading ------------------------------------------------------------------

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    std::optional<Node> run()
    {
        Node node = alternatives(0);
        return good_ && at_ == text_.size() ? std::optional(std::move(node)) : std::nullopt;
    }

private:
    bool more() const { return at_ < text_.size(); }
    bool take(std::string_view expected)
    {
        const bool found = text_.substr(at_).starts_with(expected);
        at_ += found ? expected.size() : 0;
        return found;
    }
    void fail() { good_ = false; }

    Node alternatives(std::size_t depth)
    {
        Node node{.kind = Node::Kind::alternatives};
        if (depth > deepest_group) {
            fail();
            return node;
        }
        do {
            node.parts.push_back(sequence(depth));
        } while (good_ && take("|"));
        return node;
    }

    Node sequence(std::size_t depth)
    {
        Node node{.kind = Node::Kind::sequence};
        while (good_ && more() && text_[at_] != '|' && !(text_[at_] == ')' && depth > 0)) {
            Node one = atom(depth);
            // A place is not repeated: an operator behind it has nothing to repeat.
            while (good_ && one.kind != Node::Kind::place && repeat(one)) {}
            node.parts.push_back(std::move(one));
            if (node.cost() > most_cost) {
                fail();
            }
        }
        return node;
    }

    static Node of(const Bytes& set) { return {.kind = Node::Kind::bytes, .set = set}; }
    static Node of(Place place) { return {.kind = Node::Kind::place, .place = place}; }
    static Node of(char byte) { return of(Bytes().set(static_cast<unsigned char>(byte))); }

    Node atom(std::size_t depth)
    {
        const char byte = text_[at_++];
        switch (byte) {
        case '.':
            return of(Bytes().set().reset(0));
        case '^':
            return of(Place::line_begin);
        case '$':
            return of(Place::line_end);
        case '[':
            return bracket();
        case '\\':
            return escape();
        case '*':
        case '+':
        case '?':
        case '{':
            fail();
            return {};
        case '(': {
            Node inner = alternatives(depth + 1);
            if (!take(")")) {
                fail();
            }
            return inner;
        }
        default:
            return of(byte);
        }
    }

    Node escape()
    {
        if (!more()) {
            fail();
            return {};
        }
        const auto is_word = [](int byte) { return static_cast<int>(in_word(byte)); };
        const char byte = text_[at_++];
        switch (byte) {
        case 'w':
            return of(all_where(is_word));
        case 'W':
            return of(~all_where(is_word));
        case 's':
            return of(all_where(std::isspace));
        case 'S':
            return of(~all_where(std::isspace));
        case 'b':
            return of(Place::word_edge);
        case 'B':
            return of(Place::no_word_edge);
        case '<':
            return of(Place::word_begin);
        case '>':
            return of(Place::word_end);
        case '`':
            return of(Place::line_begin);
        case '\'':
            return of(Place::line_end);
        default:
            if (byte >= '1' && byte <= '9') {
                fail(); // a back reference
            }
            return of(byte);
        }
    }

    // *, +, ? or an interval behind the node.
    bool repeat(Node& node)
    {
        std::pair<int, int> times{0, unlimited};
        if (take("+")) {
            times.first = 1;
        } else if (take("?")) {
            times.second = 1;
        } else if (take("{")) {
            times = interval();
        } else if (!take("*")) {
            return false;
        }
        Node repeated{.kind = Node::Kind::repetition, .least = times.first, .most = times.second};
        repeated.parts.push_back(std::move(node));
        node = std::move(repeated);
        if (node.cost() > most_cost) {
            fail();
        }
        return true;
    }

    // A number, or -1 where none stands.
    int number()
    {
        int value = -1;
        while (more() && std::isdigit(static_cast<unsigned char>(text_[at_])) != 0) {
            value = std::min(std::max(value, 0) * 10 + (text_[at_++] - '0'), 0x8000);
        }
        return value;
    }

    // {n}, {n,}, {n,m}, {,m}
    std::pair<int, int> interval()
    {
        int least = number();
        int most = least;
        if (take(",")) {
            most = number();
            least = std::max(least, 0);
        }
        if (!take("}") || least < 0 || least > 0x7fff || most > 0x7fff || (most != unlimited && most < least)) {
            fail();
        }
        return {least, most};
    }

    // One end of a range, or what is named between [. .].
    int bracket_byte()
    {
        if (!more()) {
            fail();
            return 0;
        }
        if (take("[.")) {
            const auto byte = more() ? static_cast<unsigned char>(text_[at_++]) : 0U;
            if (!take(".]")) {
                fail();
            }
            return static_cast<int>(byte);
        }
        return static_cast<unsigned char>(text_[at_++]);
    }

    Bytes named_class()
    {
        constexpr std::pair<std::string_view, int (*)(int)> classes[] = {
            {"alnum", std::isalnum}, {"alpha", std::isalpha}, {"blank", std::isblank}, {"cntrl", std::iscntrl},
            {"digit", std::isdigit}, {"graph", std::isgraph}, {"lower", std::islower}, {"print", std::isprint},
            {"punct", std::ispunct}, {"space", std::isspace}, {"upper", std::isupper}, {"xdigit", std::isxdigit},
        };
        const std::size_t end = std::min(text_.find(":]", at_), text_.size());
        const std::string_view name = text_.substr(at_, end - at_);
        const auto* const found = std::ranges::find(classes, name, [](const auto& one) { return one.first; });
        at_ = std::min(end + 2, text_.size());
        if (found == std::end(classes) || end == text_.size()) {
            fail();
            return {};
        }
        return all_where(found->second);
    }

    Node bracket()
    {
        Bytes set;
        const bool inverted = take("^");
        for (bool first = true; good_; first = false) {
            if (!more()) {
                fail();
                break;
            }
            if (!first && take("]")) {
                break;
            }
            if (take("[:")) {
                set |= named_class();
                continue;
            }
            if (take("[=")) {
                set.set(more() ? static_cast<unsigned char>(text_[at_++]) : 0U);
                if (!take("=]")) {
                    fail();
                }
                continue;
            }
            // A hyphen is itself at either end, and where it ends a range.
            const bool hyphen = text_[at_] == '-';
            if (hyphen && !first && !text_.substr(at_ + 1).starts_with("]")) {
                fail();
                break;
            }
            const int low = bracket_byte();
            int high = low;
            if (text_.substr(at_).starts_with("-") && at_ + 1 < text_.size() && text_[at_ + 1] != ']') {
                ++at_;
                high = text_.substr(at_).starts_with("[:") || text_.substr(at_).starts_with("[=") ? -1 : bracket_byte();
            }
            if (high < low) {
                fail();
                break;
            }
            for (int byte = low; byte <= high; ++byte) {
                set.set(static_cast<std::size_t>(byte));
            }
        }
        return of(inverted ? ~set : set);
    }

    std::string_view text_;
    std::size_t at_ = 0;
    bool good_ = true;
};

// ---- Making the program ---------------------------------------------------------

class Maker {
public:
    Maker(std::vector<Instruction>& program, std::vector<Bytes>& sets) : program_(program), sets_(sets) {}

    void put(const Node& node)
    {
        switch (node.kind) {
        case Node::Kind::bytes:
            add({.operation = Operation::bytes, .first = number_of(node.set)});
            break;
        case Node::Kind::place:
            add({.operation = Operation::assert, .place = node.place});
            break;
        case Node::Kind::sequence:
            for (const Node& part : node.parts) {
                put(part);
            }
            break;
        case Node::Kind::alternatives:
            put_alternatives(node);
            break;
        case Node::Kind::repetition:
            put_repetition(node);
            break;
        }
    }
    std::size_t add(const Instruction& instruction)
    {
        program_.push_back(instruction);
        return program_.size() - 1;
    }

private:
    std::uint16_t here() const { return static_cast<std::uint16_t>(program_.size()); }

    std::uint16_t number_of(const Bytes& set)
    {
        const auto found = std::ranges::find(sets_, set);
        const auto number = found - sets_.begin();
        if (found == sets_.end()) {
            sets_.push_back(set);
        }
        return static_cast<std::uint16_t>(number);
    }

    void put_alternatives(const Node& node)
    {
        std::vector<std::size_t> ends;
        for (std::size_t at = 0; at + 1 < node.parts.size(); ++at) {
            const std::size_t split = add({.operation = Operation::split});
            program_[split].first = here();
            put(node.parts[at]);
            ends.push_back(add({.operation = Operation::jump}));
            program_[split].second = here();
        }
        put(node.parts.back());
        for (const std::size_t end : ends) {
            program_[end].first = here();
        }
    }

    void put_repetition(const Node& node)
    {
        const Node& part = node.parts.front();
        for (int copy = 0; copy < node.least; ++copy) {
            put(part);
        }
        if (node.most == unlimited) {
            const std::size_t split = add({.operation = Operation::split});
            program_[split].first = here();
            put(part);
            add({.operation = Operation::jump, .first = static_cast<std::uint16_t>(split)});
            program_[split].second = here();
            return;
        }
        std::vector<std::size_t> splits;
        for (int copy = node.least; copy < node.most; ++copy) {
            splits.push_back(add({.operation = Operation::split}));
            program_[splits.back()].first = here();
            put(part);
        }
        for (const std::size_t split : splits) {
            program_[split].second = here();
        }
    }

    std::vector<Instruction>& program_;
    std::vector<Bytes>& sets_;
};

// ---- Matching -----------------------------------------------------------------

bool holds(Place place, int before, int after)
{
    const bool edge = in_word(before) != in_word(after);
    switch (place) {
    case Place::line_begin:
        return before < 0;
    case Place::line_end:
        return after < 0;
    case Place::word_edge:
        return edge;
    case Place::no_word_edge:
        return !edge;
    case Place::word_begin:
        return edge && in_word(after);
    default:
        return edge && in_word(before);
    }
}

// The instructions that wait for the next byte, each once.
class States {
public:
    explicit States(std::size_t size) : seen_(size) {}

    void clear()
    {
        waiting_.clear();
        std::fill(seen_.begin(), seen_.end(), false);
    }

    // With everything that is reached without a byte. True: it is found.
    bool add(const std::vector<Instruction>& program, std::uint16_t from, int before, int after)
    {
        open_.push_back(from);
        while (!open_.empty()) {
            const std::uint16_t at = open_.back();
            open_.pop_back();
            if (seen_[at]) {
                continue;
            }
            seen_[at] = true;
            ++visited_;
            const Instruction& instruction = program[at];
            switch (instruction.operation) {
            case Operation::done:
                open_.clear();
                return true;
            case Operation::bytes:
                waiting_.push_back(at);
                break;
            case Operation::split:
                open_.push_back(instruction.second);
                open_.push_back(instruction.first);
                break;
            case Operation::jump:
                open_.push_back(instruction.first);
                break;
            case Operation::assert:
                if (holds(instruction.place, before, after)) {
                    open_.push_back(static_cast<std::uint16_t>(at + 1));
                }
                break;
            }
        }
        return false;
    }

    const std::vector<std::uint16_t>& waiting() const { return waiting_; }
    std::uint64_t visited() { return std::exchange(visited_, 0); }

private:
    std::vector<bool> seen_;
    std::vector<std::uint16_t> waiting_;
    std::vector<std::uint16_t> open_;
    std::uint64_t visited_ = 0;
};

} // namespace

std::optional<Pattern> Pattern::compile(std::string_view expression)
{
    const auto node = Reader(expression).run();
    if (!node || node->cost() > most_cost) {
        return {};
    }
    Pattern pattern;
    Maker maker(pattern.program_, pattern.sets_);
    maker.put(*node);
    maker.add({.operation = Operation::done});
    return pattern;
}

bool Pattern::matches(std::string_view line, Work& work) const
{
    States now(program_.size());
    States next(program_.size());
    const auto byte_at = [line](std::size_t at) {
        return at < line.size() ? static_cast<int>(static_cast<unsigned char>(line[at])) : -1;
    };
    int before = -1;
    for (std::size_t at = 0; !work.exhausted(); ++at) {
        const int byte = byte_at(at);
        if (now.add(program_, 0, before, byte)) { // it may begin here
            return true;
        }
        if (byte < 0) {
            return false;
        }
        next.clear();
        const int after = byte_at(at + 1);
        for (const std::uint16_t state : now.waiting()) {
            if (sets_[program_[state].first][static_cast<std::size_t>(byte)] &&
                next.add(program_, static_cast<std::uint16_t>(state + 1), byte, after)) {
                return true;
            }
        }
        // Clearing is part of the work, though a quick one.
        work.spend(1 + now.visited() + now.waiting().size() + next.visited() + program_.size() / 64);
        std::swap(now, next);
        before = byte;
    }
    return false;
}

} // namespace vorsim::konfd
