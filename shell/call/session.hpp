// session.hpp: calls made, one after the other, over one endpoint.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "call/observer.hpp"
#include "call/prepare.hpp"
#include "call/verdict.hpp"

namespace vorcfg::call {

struct CallResult {
    Verdict verdict{};
    rows::Returned back{};
    std::int32_t manager_errno = 0;
    Observation seen{};
    std::vector<std::string> library{}; // the lines the library printed
};

// The endpoint is bound at the first call that needs it.
class Session {
public:
    Session(Observer::Settings settings, std::optional<std::uint16_t> sap) : settings_(settings), sap_(sap) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    CallResult make(PreparedCall& call);

private:
    bool bind();

    const Observer::Settings settings_;
    const std::optional<std::uint16_t> sap_;
    bool bound_ = false;
    bool hopeless_ = false;
    std::string complaints_; // about the first SAP that could not be bound
};

// Ends all captures for good, so that output appears while a call does not return.
void end_captures();

// Tries the call on a platform that only captures, and throws an InputError where the library itself refuses it.
void rehearse(PreparedCall& call);

} // namespace vorcfg::call
