// gateway.hpp: the managers' judgement of one message at a time.
#pragma once

#include <optional>

#include "gateway/decode.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"

namespace vorsim {

// What is to happen about a message: the gateway decides, faults may disturb
// it, then the gateway settles it and the server carries it out.
struct Judgement {
    bool answered{};
    std::uint32_t answer_id{};
    std::vector<std::uint8_t> answer;
    Report report;
    std::string_view call{}; // empty where the message was complained about
    std::string object{};
    std::optional<Decoded> told{}; // to be kept
    std::size_t outcome_at{};      // where the line says what came of it

    // Another outcome than the one judged.
    void comes_to(std::string_view outcome);
};

// What of a judgement nobody will write down, or watch, is not put together:
// of its record the outcome alone.
enum class Detail : std::uint8_t { recorded, outcome };

std::vector<std::uint8_t> status_answer(std::int32_t status);

class Gateway {
public:
    struct Settings {
        std::uint64_t seed = 1;
        bool show_secrets = false;
    };

    explicit Gateway(const Settings& settings) : show_secrets_(settings.show_secrets), measurements_(settings.seed) {}

    Judgement judge(const Message& message, Detail detail = Detail::recorded);
    // Keeps what the judgement says is to be kept.
    void settle(const Judgement& judgement);

    Measurements& measurements() { return measurements_; }
    const State& state() const { return state_; }
    void hold(State state) { state_ = std::move(state); }
    std::uint64_t messages() const { return messages_; }
    std::uint64_t complaints() const { return complaints_; }

private:
    Judgement refuse(const Message& message, const Complaint& complaint, Detail detail);
    Judgement accept(const Message& message, Decoded decoded, Detail detail);

    bool show_secrets_;
    State state_;
    Measurements measurements_;
    std::uint64_t messages_ = 0;
    std::uint64_t complaints_ = 0;
};

} // namespace vorsim
