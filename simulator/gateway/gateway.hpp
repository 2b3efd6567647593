// gateway.hpp: what the managers decide about one message at a time.
#pragma once

#include <cstdint>
#include <vector>

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
};

std::vector<std::uint8_t> status_answer(std::int32_t status);

class Gateway {
public:
    struct Settings {
        std::uint64_t seed = 1;
        bool show_secrets = false;
    };

    explicit Gateway(const Settings& settings) : show_secrets_(settings.show_secrets), measurements_(settings.seed) {}

    Decision judge(const Message& message);
    // Stores the setting, where the message is one and was accepted.
    void store(const Decision& decision);

    Measurements& measurements() { return measurements_; }
    const State& state() const { return state_; }
    void hold(State state) { state_ = std::move(state); }

private:
    Decision accept(const Message& message, Decoded decoded);

    bool show_secrets_;
    State state_;
    Measurements measurements_;
};

} // namespace vorsim::gateway
