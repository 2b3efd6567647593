// row.hpp: one row per call of the library.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rows/argument.hpp"

namespace vorcfg::rows {

// Where a call's message goes, and so what it needs before it can be made.
enum class Channel : std::uint8_t { manager, konfd, none };

// What the shell must know of a call beyond its arguments.
enum Marks : unsigned {
    answer_unread = 1, // a request whose answer the call never reads
    does_nothing = 2,  // kept by the library so that programs link
    confirmed = 4,     // requires --yes
    waits = 8,         // starts a timer that ends with this process, which waits for it
    acts = 16,         // does something each time it is made; other calls set a value
    cuts_link = 32,    // may drop the connection in use: asks first at a terminal
};

// The value given for an argument; for a result, its buffer.
struct Value {
    std::int64_t number = 0;
    bool hexadecimal = false; // as it was typed
    std::string text{};
    bool secret = false;
    bool awaited = false; // a secret that is not read yet
    bool given = true;    // false: an optional one that was left out
    std::size_t word = 0; // its index in the line
};

// One field of a record, or one result.
struct Field {
    enum class Kind : std::uint8_t { number, word, text, secret };
    std::string name;
    std::string text;
    Kind kind = Kind::number;
};

// What a call returned. A query that answers a record has either its fields or `missing`.
struct Returned {
    std::optional<std::int32_t> code;
    bool missing = false;
    std::vector<Field> fields;

    bool succeeded() const { return code.value_or(0) == 0 && !missing; }
};

// One field of a record that a call sends, at its place in memory.
struct RecordField {
    enum class Kind : std::uint8_t { number, address, text, secret };
    std::string_view name;
    std::uint16_t offset = 0;
    std::uint16_t size = 0;
    Kind kind = Kind::number;
    bool is_signed = false;
    std::int32_t option = 0; // sent only where the record's first number is this; 0: always

    constexpr RecordField as(Kind other) const { return {name, offset, size, other, is_signed, option}; }
    constexpr RecordField only_with(std::int32_t first) const { return {name, offset, size, kind, is_signed, first}; }
};

struct Family;
struct Row;
struct Reading;  // rows/reading.hpp
struct SiteLine; // rows/rule.hpp, as the next two
class SiteLines;
struct Finding;
// What is wrong with a call among those of its file, though it is accepted.
using Rule = Finding (*)(const SiteLine& line, const SiteLines& site);

struct Row {
    const Family* family = nullptr;
    std::string_view name{};
    std::string_view symbol{}; // the call's exported name
    std::string_view example{};
    std::uint16_t first_argument = 0; // among the family's
    std::uint16_t argument_count = 0;
    Channel channel = Channel::manager;
    unsigned marks = 0;
    bool answers_record = false;
    std::span<const RecordField> record{}; // what it sends, if not a chain
    std::string_view setting{};            // shared with calls of the family whose values it overwrites; else its own
    // What it stores in konfd's tree: the words of the path, then of the line, {argument} for a value.
    std::span<const std::string_view> lines{};
    Returned (*make)(const Row& row, std::span<Value> values) = nullptr;
    // For a call that reads its own words, instead of one per argument.
    void (*read)(Reading& reading) = nullptr;
    std::string_view usage{}; // then: its usage, and what the words mean
    std::string_view usage_help{};
    std::string_view used_by{}; // of a call that makes no sense on its own
    std::span<const Rule> rules{};

    constexpr bool has(Marks mark) const { return (marks & mark) != 0; }
    bool is_setting() const; // the gateway has something else afterwards, if its arguments say so
    std::span<const Argument> arguments() const;
    std::string full_name() const; // "gpio set-value"
    // What it changes: "gpio mode", or its own name where no other call changes that.
    std::string setting_name() const;
};

struct Family {
    std::string_view name;
    std::span<const Row> rows;
    std::span<const Argument> arguments;
    std::string_view header; // the name of the header that declares its calls
    std::string_view about;  // if it is not the header's first line
};

} // namespace vorcfg::rows
