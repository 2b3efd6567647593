// gateway.hpp: what the managers decide about one message at a time.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "gateway/answer.hpp"
#include "gateway/match.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"
#include "values/record.hpp"

namespace vorsim::gateway {

// What is to happen to a message: the gateway decides, faults may change it, then the gateway stores the setting and
// the server sends the answer.
struct Decision {
    bool answered{};
    std::uint32_t answer_id{};
    std::vector<std::uint8_t> answer{};
    values::Record record{};
    const tables::MessageRow* row_to_keep{}; // whose values are to be stored
    std::int32_t accepted{};                 // the status that means that they are
    std::vector<Answer::Place> places{};     // of a query's values in the answer

    // It is not carried out: there is nothing to store, and no answer.
    void withdraw();
};

std::vector<std::uint8_t> status_answer(std::int32_t status);

inline constexpr std::size_t status_size = 4;
// Of the answer to a row's message; 0: it is one-way.
std::size_t answer_size(const tables::MessageRow& row);

class Gateway {
public:
    struct Settings {
        std::uint64_t seed = 1;
        bool show_secrets = false;
        std::set<std::uint16_t> passed_on{}; // managers whose own programs decide
    };

    explicit Gateway(const Settings& settings)
        : show_secrets_(settings.show_secrets), passed_on_(settings.passed_on), measurements_(settings.seed)
    {
    }

    Decision judge(const Message& message);
    // Puts the answer of a real manager in place of the one decided, and complains where it is not of that kind.
    static void take_answer(Decision& decision, std::uint32_t id, Bytes bytes);
    // Stores the setting, where the message is one and was accepted. False: there is no room.
    bool store(const Decision& decision);

    Measurements& measurements() { return measurements_; }
    const State& state() const { return state_; }
    void hold(State state) { state_ = std::move(state); }

private:
    Decision accept(const Message& message, Decoded decoded);

    bool show_secrets_;
    std::set<std::uint16_t> passed_on_;
    State state_;
    Measurements measurements_;
};

} // namespace vorsim::gateway
