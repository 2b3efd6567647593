// options.hpp: the command line, taken apart.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "words/word.hpp"

namespace vorcfg {

struct Options {
    bool help = false;
    bool version = false;
    bool json = false;
    bool trace = false;
    bool dry_run = false;
    bool yes = false;
    bool keep_going = false;
    bool in_session = false; // of the prompt: its lines are its operator's own, as a batch's are
    std::optional<std::uint16_t> sap;
    std::optional<Word> password; // --password-file, --password-stdin: in place of the secret argument
    std::vector<Word> words;
};

struct OptionRow {
    std::string_view name;
    std::string_view value; // what follows it, if anything does
    std::string_view about;
    bool Options::*flag = nullptr;
};

std::span<const OptionRow> option_rows();

// Options stand anywhere before a `--`; those of a call with words of its own
// are left among the words.
Options options_of(std::span<char* const> arguments);
// Those of one line, besides those given before it; a quoted word is none.
Options options_of(std::vector<Word> typed, Options options);

// Decimal, or hexadecimal with 0x.
std::optional<std::int64_t> number_of(std::string_view text);

} // namespace vorcfg
