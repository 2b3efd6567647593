// stored.hpp: the gateway's state, written and read as JSON.
#pragma once

#include <cstdint>
#include <vector>

#include "faults/rule_list.hpp"
#include "gateway/state.hpp"
#include "konfd/konfd.hpp"
#include "record/counters.hpp"

namespace vor {
class Json;
}

namespace vorsim::record {

// {"ethmgr": {"sap": 7, "objects": {"interface 0": {"vor_cfg_set_dhcp": {...}}}}}
vor::Json json_of(const gateway::State& state);
// [{"line": "interface wlan0", "priority": 0, "under": [...]}]
vor::Json json_of(const konfd::Konfd& konfd);
vor::Json json_of(const std::vector<faults::RuleList::Listed>& rules);
// The document of a state file.
vor::Json json_of(const Counters& counters, std::uint64_t lines_lost, const gateway::State& state,
                  const konfd::Konfd& konfd);

// Both throw for anything but such a state, with the place.
gateway::State stored_state(const vor::Json& held);
// Masked lines cannot be stored.
void store_konfd(konfd::Konfd& konfd, const vor::Json& lines);

} // namespace vorsim::record
