// gateway.hpp: the managers' judgement of one message at a time.
#pragma once

#include "gateway/decode.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"

namespace vorsim {

// What is to happen about a message: the gateway decides, the server carries
// it out. Whoever wants to disturb an answer does so between the two.
struct Judgement {
    bool answered{};
    std::uint32_t answer_id{};
    std::vector<std::uint8_t> answer;
    Report report;
};

class Gateway {
public:
    struct Settings {
        std::uint64_t seed = 1;
        bool show_secrets = false;
    };

    explicit Gateway(const Settings& settings) : show_secrets_(settings.show_secrets), measurements_(settings.seed) {}

    Judgement judge(const Message& message);

    const State& state() const { return state_; }
    void hold(State state) { state_ = std::move(state); }
    std::uint64_t messages() const { return messages_; }
    std::uint64_t complaints() const { return complaints_; }

private:
    Judgement refuse(const Message& message, const Complaint& complaint);
    Judgement accept(const Message& message, const Decoded& decoded);

    bool show_secrets_;
    State state_;
    Measurements measurements_;
    std::uint64_t messages_ = 0;
    std::uint64_t complaints_ = 0;
};

} // namespace vorsim
