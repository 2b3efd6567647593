#include "konfd/pattern.hpp"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace vorsim::konfd {
namespace {

using Instruction = Pattern::Instruction;
using Program = Pattern::Program;
using Operation = Pattern::Operation;
using Place = Pattern::Place;
using Bytes = Pattern::Bytes;

constexpr std::size_t most_cost = 2000;
constexpr std::size_t deepest_group = 50;
constexpr int unlimited = -1;

bool in_word(int byte)
{
    return byte >= 0 && (std::isalnum(byte) != 0 || byte == '_');
}

int is_word(int byte)
{
    return static_cast<int>(in_word(byte));
}

Bytes all_where(int (*is_one)(int))
{
    Bytes set;
    for (int byte = 0; byte < 256; ++byte) {
        set[static_cast<std::size_t>(byte)] = is_one(byte) != 0;
    }
    return set;
}

// ---- Making the program -------------------------------------------------------

[[noreturn]] void refuse()
{
    throw std::invalid_argument("no expression, or too large a one");
}

// A part of an expression. Its instructions jump relative to themselves, so that it can be placed anywhere and copied.
struct Part {
    Program program{};
    std::size_t cost = 1; // instructions and intermediate parts, known before anything is copied

    void costs(std::size_t more)
    {
        cost += more;
        if (cost > most_cost) {
            refuse();
        }
    }
    void add(Operation operation, std::size_t step)
    {
        program.push_back({.operation = operation, .step = static_cast<std::int16_t>(step)});
    }
    void add(const Part& other) { program.insert(program.end(), other.program.begin(), other.program.end()); }
};

Part repeated(const Part& part, int least, int most)
{
    const std::size_t size = part.program.size();
    Part all;
    all.costs(static_cast<std::size_t>(most == unlimited ? least + 1 : std::max(most, 1)) * (part.cost + 3));
    for (int copy = 0; copy < least; ++copy) {
        all.add(part);
    }
    if (most == unlimited) {
        all.add(Operation::split, size + 2);
        all.add(part);
        all.add(Operation::jump, -(size + 1));
    }
    for (int copy = least; copy < most; ++copy) {
        all.add(Operation::split, static_cast<std::size_t>(most - copy) * (size + 1));
        all.add(part);
    }
    return all;
}

class Reader {
public:
    Reader(std::string_view text, std::vector<Bytes>& sets) : left_(text), sets_(sets) {}

    Program run()
    {
        Part all = alternatives(0);
        if (!left_.empty()) {
            refuse();
        }
        all.add(Operation::done, 0);
        return std::move(all.program);
    }

private:
    bool take(std::string_view expected)
    {
        const bool found = left_.starts_with(expected);
        left_.remove_prefix(found ? expected.size() : 0);
        return found;
    }
    void expect(std::string_view expected)
    {
        if (!take(expected)) {
            refuse();
        }
    }
    unsigned char next()
    {
        if (left_.empty()) {
            refuse();
        }
        const char byte = left_.front();
        left_.remove_prefix(1);
        return static_cast<unsigned char>(byte);
    }

    Part alternatives(std::size_t depth)
    {
        if (depth > deepest_group) {
            refuse();
        }
        Part all;
        std::vector<std::size_t> jumps;
        for (;;) {
            const Part one = sequence(depth);
            all.costs(one.cost + 2);
            if (!take("|")) {
                all.add(one);
                break;
            }
            all.add(Operation::split, one.program.size() + 2);
            all.add(one);
            jumps.push_back(all.program.size());
            all.add(Operation::jump, 0);
        }
        for (const std::size_t jump : jumps) {
            all.program[jump].step = static_cast<std::int16_t>(all.program.size() - jump);
        }
        return all;
    }

    Part sequence(std::size_t depth)
    {
        Part all;
        while (!left_.empty() && left_.front() != '|' && !(left_.front() == ')' && depth > 0)) {
            // An anchor is not repeated: an operator after it has no operand.
            Part one = place();
            if (one.program.empty()) {
                one = atom(depth);
                while (repeat(one)) {}
            }
            all.costs(one.cost);
            all.add(one);
        }
        return all;
    }

    // Empty: there is none.
    Part place()
    {
        constexpr std::pair<std::string_view, Place> places[] = {
            {"^", Place::line_begin},   {"$", Place::line_end},    {"\\`", Place::line_begin},
            {"\\'", Place::line_end},   {"\\b", Place::word_edge}, {"\\B", Place::no_word_edge},
            {"\\<", Place::word_begin}, {"\\>", Place::word_end},
        };
        for (const auto& [text, place] : places) {
            if (take(text)) {
                return {.program = {{.operation = Operation::assert, .place = place}}};
            }
        }
        return {};
    }

    Part of(const Bytes& set)
    {
        sets_.push_back(set);
        return {.program = {{.operation = Operation::bytes, .set = static_cast<std::uint16_t>(sets_.size() - 1)}}};
    }

    Part atom(std::size_t depth)
    {
        if (take("(")) {
            Part inner = alternatives(depth + 1);
            expect(")");
            return inner;
        }
        const unsigned char byte = next();
        switch (byte) {
        case '.':
            return of(Bytes().set().reset(0));
        case '[':
            return of(bracket());
        case '\\':
            return of(escaped());
        case '*':
        case '+':
        case '?':
        case '{':
            refuse();
        default:
            return of(Bytes().set(byte));
        }
    }

    Bytes escaped()
    {
        const unsigned char byte = next();
        switch (byte) {
        case 'w':
            return all_where(is_word);
        case 'W':
            return ~all_where(is_word);
        case 's':
            return all_where(std::isspace);
        case 'S':
            return ~all_where(std::isspace);
        default:
            if (byte >= '1' && byte <= '9') {
                refuse(); // a back reference
            }
            return Bytes().set(byte);
        }
    }

    // *, +, ? or an interval after the part.
    bool repeat(Part& part)
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
        part = repeated(part, times.first, times.second);
        return true;
    }

    // A number, or -1.
    int number()
    {
        int value = -1;
        while (!left_.empty() && std::isdigit(static_cast<unsigned char>(left_.front())) != 0) {
            value = std::min(std::max(value, 0) * 10 + (next() - '0'), 0x8000);
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
        expect("}");
        if (least < 0 || least > 0x7fff || most > 0x7fff || (most != unlimited && most < least)) {
            refuse();
        }
        return {least, most};
    }

    Bytes bracket()
    {
        Bytes set;
        const bool inverted = take("^");
        for (bool first = true; first || !take("]"); first = false) {
            if (take("[:")) {
                set |= named_class();
            } else if (take("[=")) {
                set.set(next());
                expect("=]");
            } else {
                add_range(set, first);
            }
        }
        return inverted ? ~set : set;
    }

    // A single byte or a range. A hyphen is literal at either end, and as the end of a range.
    void add_range(Bytes& set, bool first)
    {
        if (!first && left_.starts_with("-") && !left_.starts_with("-]")) {
            refuse();
        }
        const unsigned low = bracket_byte();
        unsigned high = low;
        if (left_.size() > 1 && left_.front() == '-' && left_[1] != ']') {
            take("-");
            if (left_.starts_with("[:") || left_.starts_with("[=")) {
                refuse();
            }
            high = bracket_byte();
        }
        if (high < low) {
            refuse();
        }
        for (unsigned byte = low; byte <= high; ++byte) {
            set.set(byte);
        }
    }

    // One end of a range, possibly between [. .].
    unsigned bracket_byte()
    {
        const bool named = take("[.");
        const unsigned char byte = next();
        if (named) {
            expect(".]");
        }
        return byte;
    }

    Bytes named_class()
    {
        constexpr std::pair<std::string_view, int (*)(int)> classes[] = {
            {"alnum:]", std::isalnum}, {"alpha:]", std::isalpha}, {"blank:]", std::isblank},
            {"cntrl:]", std::iscntrl}, {"digit:]", std::isdigit}, {"graph:]", std::isgraph},
            {"lower:]", std::islower}, {"print:]", std::isprint}, {"punct:]", std::ispunct},
            {"space:]", std::isspace}, {"upper:]", std::isupper}, {"xdigit:]", std::isxdigit},
        };
        for (const auto& [name, is_one] : classes) {
            if (take(name)) {
                return all_where(is_one);
            }
        }
        refuse();
    }

    std::string_view left_;
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

// The instructions waiting for the next byte, each once.
class States {
public:
    explicit States(const Program& program) : program_(&program), seen_(program.size()) {}

    void clear()
    {
        waiting_.clear();
        std::fill(seen_.begin(), seen_.end(), false);
    }

    // Adds all that is reached without a byte. True: a match.
    bool add(std::size_t from, int before, int after)
    {
        open_.push_back(from);
        while (!open_.empty()) {
            const std::size_t at = open_.back();
            open_.pop_back();
            if (seen_[at]) {
                continue;
            }
            seen_[at] = true;
            ++visited_;
            const Instruction& instruction = (*program_)[at];
            const std::size_t elsewhere = at + static_cast<std::size_t>(instruction.step);
            switch (instruction.operation) {
            case Operation::done:
                open_.clear();
                return true;
            case Operation::bytes:
                waiting_.push_back(at);
                break;
            case Operation::split:
                open_.push_back(elsewhere);
                open_.push_back(at + 1);
                break;
            case Operation::jump:
                open_.push_back(elsewhere);
                break;
            case Operation::assert:
                if (holds(instruction.place, before, after)) {
                    open_.push_back(at + 1);
                }
                break;
            }
        }
        return false;
    }

    const std::vector<std::size_t>& waiting() const { return waiting_; }
    std::uint64_t visited() { return std::exchange(visited_, 0); }

private:
    const Program* program_;
    std::vector<bool> seen_;
    std::vector<std::size_t> waiting_;
    std::vector<std::size_t> open_;
    std::uint64_t visited_ = 0;
};

} // namespace

std::optional<Pattern> Pattern::compile(std::string_view expression)
try {
    Pattern pattern;
    pattern.program_ = Reader(expression, pattern.sets_).run();
    return pattern;
} catch (const std::invalid_argument&) {
    return {};
}

bool Pattern::matches(std::string_view line, Work& work) const
{
    States now(program_);
    States next(program_);
    const auto byte_at = [line](std::size_t at) {
        return at < line.size() ? static_cast<int>(static_cast<unsigned char>(line[at])) : -1;
    };
    int before = -1;
    for (std::size_t at = 0; !work.exhausted(); ++at) {
        const int byte = byte_at(at);
        if (now.add(0, before, byte)) { // a match may begin here
            return true;
        }
        if (byte < 0) {
            return false;
        }
        next.clear();
        const int after = byte_at(at + 1);
        for (const std::size_t state : now.waiting()) {
            if (sets_[program_[state].set][static_cast<std::size_t>(byte)] && next.add(state + 1, byte, after)) {
                return true;
            }
        }
        // Clearing counts as work, too.
        work.spend(1 + now.visited() + now.waiting().size() + next.visited() + program_.size() / 64);
        std::swap(now, next);
        before = byte;
    }
    return false;
}

} // namespace vorsim::konfd
