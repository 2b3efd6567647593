// observe.hpp: the platform boundary, watched. The shell defines the platform's
// message, chain, socket and timer operations itself (the executable's symbols
// come first) and passes them on, so it knows what was really sent and
// answered, on any platform library.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "row.hpp"

namespace vorcfg {

enum class ElementKind : std::uint8_t { int16, int32, text, raw };

struct Element {
    std::uint16_t tag;
    ElementKind kind;
    std::int32_t number;
    std::string bytes; // of a text or raw element
    bool secret;
};

enum class Way : std::uint8_t { request, one_way, konfd };

struct Message {
    Way way = Way::request;
    std::uint16_t sap = 0;
    std::uint32_t id = 0;
    std::optional<std::uint8_t> option; // the meta-data byte
    std::optional<std::uint8_t> flag;   // the byte before the chain
    bool chain = false;
    std::vector<Element> elements; // of a chain
    std::string record;            // the payload that is no chain
    std::string command;           // konfd's, up to its terminator
    std::size_t counted = 0;       // the bytes sent of it

    bool delivered = false;
    bool unserved = false; // sent, and known that nobody listens there
    bool timed_out = false;
    bool too_long = false;
    std::optional<std::uint32_t> answer_id;
    std::optional<std::int32_t> answer_status;
    std::optional<std::string> answer; // konfd's
};

struct Observation {
    std::vector<Message> messages;
    std::optional<std::uint16_t> trace_switched; // the module whose platform trace was switched
    std::optional<std::uint32_t> timer;          // milliseconds
    bool unconnected = false;                    // konfd's socket could not be had
};

// Watches until it goes out of scope. With `capture` nothing reaches the
// platform: every exchange is accepted on the spot.
class Watch {
public:
    struct Settings {
        bool capture = false;
        bool trace = false; // each message on standard error, as it goes out
    };

    Watch(Settings wanted, std::span<const Value> given);
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch();

    Observation seen;

private:
    friend struct Boundary;
    Settings settings;
    std::span<const Value> values;
};

// The text with its control characters spelt out, but for line ends.
std::string printable(std::string_view text);

// A message in one line: `ethmgr (SAP 7) 0x7018 | option 1 | 1 i16 0 | 22 str "fe80::1"`.
std::string described(const Message& message, std::span<const Value> values);
std::string manager_name(std::uint16_t sap);

// The text between double quotes, in one line whatever it holds.
std::string quoted(std::string_view text);

// The text with a konfd command's password words masked.
std::string without_passwords(std::string_view text);

inline constexpr std::string_view mask = "********";

} // namespace vorcfg
