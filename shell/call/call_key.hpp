// said.hpp: what a call says, as it is kept, compared and made again.
#pragma once

#include <string>
#include <string_view>

#include "call/prepare.hpp"
#include "text/json.hpp"

namespace vorcfg {

struct Said {
    const Row* row = nullptr;
    std::string arguments; // those that are sent, by their names, one JSON object; no secret in any form
    std::string objects;   // of those, what it is about: one JSON array
    bool secret = false;   // it has one

    bool operator==(const Said&) const = default;
};

Said said(const Planned& planned);
// The same of what was kept.
Said said(const Row& row, vor::Json arguments, bool secret);
// The call again. Throws a Complaint where the arguments are none of this call.
Planned planned(const Said& said);

// What two calls share that are about the same thing: the call, and the arguments marked as its object.
std::string subject_of(const Said& said);
// The subject of another call about the same object.
std::string subject_of(const Said& said, const Row& other);

// Whether it asks, does nothing or stays on this machine: nothing that a gateway accepts.
bool changes_nothing(const Planned& planned);

// "ip set-ip-address 0"
std::string name_of(const Said& said);
// One argument as it is shown: 192.168.1.10, "Tower 17", [1, 2], or the word that stands for a number.
std::string shown(const Argument& argument, const vor::Json& value);

// The given values by their arguments' names: all, each secret as the mask; or those that are sent, without secrets.
vor::Json values_json(const Planned& planned, bool masked);

} // namespace vorcfg
