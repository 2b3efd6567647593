// pattern.hpp: regular expressions of clients, matched in bounded time and memory.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorsim::konfd {

// A budget for matching, in states visited.
class Work {
public:
    explicit Work(std::uint64_t steps) : left_(steps) {}

    void spend(std::uint64_t steps) { left_ = left_ > steps ? left_ - steps : 0; }
    bool exhausted() const { return left_ == 0; }

private:
    std::uint64_t left_;
};

// A POSIX extended regular expression, without back references: what the C
// library's regcomp takes in the C locale. All its states go through a line
// together, so that the time is linear in the line whatever the pattern, and
// the memory is the program's.
class Pattern {
public:
    // Nothing if it is invalid or too large.
    static std::optional<Pattern> compile(std::string_view expression);

    // Whether it matches anywhere in the line. Also false when the budget is used up.
    bool matches(std::string_view line, Work& work) const;

    enum class Operation : std::uint8_t {
        bytes,  // one of a set
        split,  // on, and from elsewhere
        jump,   // from elsewhere
        assert, // a place between two bytes
        done,
    };
    enum class Place : std::uint8_t { line_begin, line_end, word_edge, no_word_edge, word_begin, word_end };
    struct Instruction {
        Operation operation{};
        Place place{};
        std::uint16_t set{};
        std::int16_t step{}; // to the other branch
    };
    using Program = std::vector<Instruction>;
    using Bytes = std::bitset<256>;

private:
    Program program_;
    std::vector<Bytes> sets_;
};

} // namespace vorsim::konfd
