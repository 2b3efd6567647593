// gateway.hpp: the managers' judgement of one message at a time.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "gateway/match.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"
#include "values/record.hpp"

namespace vorsim {

// What is to happen about a message: the gateway decides, faults may disturb
// it, then the gateway settles it and the server carries it out.
struct Decision {
    bool answered{};
    std::uint32_t answer_id{};
    std::vector<std::uint8_t> answer{};
    Record record{};
    const MessageRow* row_to_keep{}; // whose values are to be kept
    std::size_t outcome_at{};        // where the line says what came of it

    // Another outcome than the one judged.
    void set_outcome(std::string_view outcome);
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
    // Keeps what the judgement says is to be kept.
    void settle(const Decision& decision);

    Measurements& measurements() { return measurements_; }
    const State& state() const { return state_; }
    void hold(State state) { state_ = std::move(state); }

private:
    Decision accept(const Message& message, Decoded decoded);

    bool show_secrets_;
    State state_;
    Measurements measurements_;
};

} // namespace vorsim
