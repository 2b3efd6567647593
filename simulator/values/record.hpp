// record.hpp: what vorsim knows of a message that reached it, and of what came of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "values/value.hpp"

namespace vorsim {

struct Record {
    enum class Kind : std::uint8_t {
        message,
        konfd,     // a text that konfd was sent
        malformed, // a datagram that is no message
        foreign,   // a message that no manager is to judge
    };
    struct Fault {
        unsigned number{};
        std::string rule{};
    };

    Kind kind{};
    std::uint64_t seq{};
    std::string time{};
    std::optional<std::int64_t> took{}; // in microseconds
    std::string line{};                 // for people
    std::string complaint{};
    bool complained{}; // a check of konfd's that finds nothing is no complaint
    std::optional<Fault> fault{};
    bool delivered = true; // its answer
    bool refused{};        // as though nobody had received it

    std::uint16_t sap{}; // the manager it reached
    std::uint16_t source{};
    std::uint32_t id{};
    std::string call{}; // empty where it was complained about
    std::string object{};
    std::vector<Value> values{};
    std::vector<Value> answer_values{};
    std::optional<std::int32_t> status{}; // none: one-way, or answered with values
    bool awaits{};

    std::uint64_t client{}; // konfd's, numbered as they come
    std::string commands{};
    std::string answer{};
    std::string shown{}; // what was left out of the answer

    std::string why{}; // it is malformed or foreign

    // The bytes in hexadecimal, secrets masked; put together for those who read them.
    std::optional<std::string> meta_data{};
    std::optional<std::string> payload{};
    std::optional<std::uint32_t> answer_id{}; // none: there was no answer
    std::optional<std::string> answer_payload{};
    std::optional<std::string> text{};
    std::optional<std::string> answer_text{};
    std::optional<std::string> datagram{};
};

} // namespace vorsim
