/* gateway.hpp: the managers' judgement of one message at a time. */
#pragma once

#include "decode.hpp"
#include "readings.hpp"
#include "state.hpp"

namespace vorsim {

/*
 * What is to happen about a message: the gateway decides, the server carries
 * it out. Whoever wants to disturb an answer does so between the two.
 */
// NOLINTNEXTLINE(bugprone-exception-escape): the JSON library's destructor may run out of memory
struct Outcome {
    bool answered{};
    std::uint32_t answer_id{};
    std::vector<std::uint8_t> answer;
    std::string line; // what to print
    Json record;      // what to write to the journal
};

class Gateway {
public:
    struct Settings {
        std::uint64_t seed = 1;
        bool show_secrets = false;
    };

    explicit Gateway(const Settings& settings) : show_secrets_(settings.show_secrets), readings_(settings.seed) {}

    Outcome handle(const Incoming& message);

    const State& state() const { return state_; }
    std::uint64_t messages() const { return messages_; }
    std::uint64_t complaints() const { return complaints_; }

private:
    Outcome complain(const Incoming& message, const Complaint& complaint);
    Outcome accept(const Incoming& message, const Told& told);
    Outcome begin(const Incoming& message) const;

    bool show_secrets_;
    State state_;
    Readings readings_;
    std::uint64_t messages_ = 0;
    std::uint64_t complaints_ = 0;
};

} // namespace vorsim
