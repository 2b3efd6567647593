// calls.hpp: the calls that are made, and the expected outcome of each.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <vorinfra.h>

#include "record.hpp"

namespace soak {

// What is seen of a call from outside.
struct Outcome {
    std::string code;
    vor_int32 manager_errno = 0;
    int kept = 0; // buffers taken and not given back

    bool operator==(const Outcome&) const = default;
    std::string text() const;
};

// A call as it was made, and the gateway's records of it.
struct Made {
    bool endpoint = true;
    bool overdue = false;             // it took as long as an answer is waited for
    const Records* records = nullptr; // null: the gateway was killed during the call
};

struct Call {
    std::string name;
    std::function<std::string(const std::string& tag)> make; // the tag marks the texts that konfd is sent
    // The outcomes it may have: one, or two where the clock decides.
    std::function<std::vector<Outcome>(const Made& made)> expected;
};

// Every call with its arguments.
std::vector<Call> all_calls();

inline constexpr vor_int32 errno_before = 55;

} // namespace soak
