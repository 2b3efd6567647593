// message.hpp: messages and their answers, and how they are printed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rows/row.hpp"

namespace vorcfg::call {

// One tagged part of a chain.
struct Element {
    enum class Kind : std::uint8_t { int16, int32, text, raw };
    std::uint16_t tag;
    Kind kind;
    std::int32_t number;
    std::string bytes; // of a text or raw element
    bool secret;
};

enum class Way : std::uint8_t { request, one_way, konfd };
enum class Unfit : std::uint8_t { no, bytes, elements };

struct Message {
    Way way = Way::request;
    std::uint16_t sap = 0;
    std::uint32_t id = 0;
    std::optional<std::uint8_t> option{}; // the meta-data byte
    std::optional<std::uint8_t> flag{};   // the byte before the chain
    std::vector<Element> elements{};      // of a chain
    bool chain = false;
    std::string record{};    // a payload that is not a chain
    std::string command{};   // konfd's, up to its terminator
    std::size_t counted = 0; // the bytes sent of it

    Unfit unfit = Unfit::no; // what does not fit in the platform's messages
    std::size_t room = 0;    // then: how much fits
    bool delivered = false;
    bool timed_out = false;
    bool unserved = false; // one-way, sent, and nothing listened
    std::optional<std::uint32_t> answer_id{};
    std::optional<std::int32_t> answer_status{};
    std::optional<std::string> answer{}; // konfd's: the two characters that the calls evaluate
};

std::string_view name_of(Element::Kind kind); // "i16"
std::string_view name_of(Way way);            // "one-way"

struct Manager {
    std::uint16_t sap;
    std::string_view name;
};
std::span<const Manager> managers(); // by their SAPs
std::string manager_name(std::uint16_t sap);

// The fields of the record, if the call's row names them.
std::optional<std::vector<rows::Field>> fields_of(const Message& message, const rows::Row& row);

// A message in one line: `ethmgr (SAP 7) 0x7018 | option 1 | 1 i16 0 | 22 str "fe80::1"`. Its call says
// which numbers are addresses, what words stand for them, and what is secret.
std::string described(const Message& message, const rows::Row& row, std::span<const rows::Value> values);

// A konfd command, or what the library prints of one, with the secrets in it masked.
std::string without_secrets(std::string_view text, std::span<const rows::Value> values);

// "5000 bytes of text, but a message has room for 4096, element headers included"
std::string unfit_text(const Message& message);

} // namespace vorcfg::call
