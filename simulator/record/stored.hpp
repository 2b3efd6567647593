// stored.hpp: the gateway's state, written and read as JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
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

// A line of JSON for each setting and each of konfd's lines of such a document. Throws a JsonError with the place in
// the document, as take does.
std::vector<std::string> stored_lines(const vor::Json& document);
// What such lines store, from the first on.
class Storing {
public:
    explicit Storing(const konfd::Konfd::Settings& settings) : konfd(settings) {}

    // Throws for what no message could have set, for a masked line, and where there is no more room.
    void take(std::string_view line);

    gateway::State state;
    konfd::Konfd konfd;

private:
    std::vector<std::string> path_; // of the last of konfd's lines
};

} // namespace vorsim::record
