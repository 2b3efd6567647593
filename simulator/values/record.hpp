// record.hpp: a message that reached vorsim, and its outcome.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "values/value.hpp"

namespace vorsim::values {

struct Record {
    enum class Kind : std::uint8_t {
        message,
        konfd,     // a text sent to konfd
        malformed, // a datagram that is not a message
        foreign,   // an unexpected answer, or a message to another SAP
    };
    struct Fault {
        unsigned number{};
        std::string rule{};
    };

    Kind kind{};
    std::uint64_t seq{};
    std::string time{};
    std::optional<std::int64_t> took{}; // in microseconds
    std::string line{};                 // for people, made of the rest when it is recorded
    std::vector<std::string> notes{};   // in brackets at the end of its line
    std::string complaint{};
    bool complained{}; // false for a konfd check that finds nothing
    bool accepted{};   // the setting was stored, the query answered, konfd's commands carried out
    std::optional<Fault> fault{};
    bool delivered = true; // its answer
    bool unanswered{};     // an answer was due, and no client got one
    bool refused{};        // as if nobody had received it
    std::string via{};     // the directory whose manager it was passed on to, or came from

    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    std::string call{}; // empty where there is a complaint
    std::string object{};
    std::vector<Value> values{};
    std::vector<Value> answer_values{};
    std::optional<std::int32_t> status{}; // none: one-way, or answered with values
    bool awaits{};

    std::uint64_t client{}; // of konfd, numbered in order of connection
    std::string commands{};
    std::string answer{};
    std::string shown{}; // how the answer was cut

    std::string why{}; // of a malformed or foreign one

    // The bytes in hexadecimal, secrets masked; filled in only when somebody reads them.
    std::optional<std::string> meta_data{};
    std::optional<std::string> payload{};
    std::optional<std::uint32_t> answer_id{}; // none: there was no answer
    std::optional<std::string> answer_payload{};
    std::optional<std::string> text{};
    std::optional<std::string> answer_text{};
    std::optional<std::string> datagram{};
};

} // namespace vorsim::values
