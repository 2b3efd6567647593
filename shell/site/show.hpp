// show.hpp: a plan, and what became of it, as text and as JSON.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "call/runner.hpp"
#include "site/plan.hpp"
#include "text/table.hpp"

namespace vorcfg::site {

struct Shown {
    std::string file;
    std::string journal;
    std::string gateway;
    bool json;
    vor::Screen screen{};
    bool may_revert = true; // says which calls cannot be reverted

    // A terminal gets rows of a table, everything else FILE:LINE: lines.
    bool in_rows() const { return screen.is_terminal && !json; }
};

// "tower-17: tower.conf against its journal, last applied 2026-05-12 10:04 UTC"
std::string heading_of(const Ledger& ledger, const Shown& shown);
std::string line_of(const PlanLine& line, const Shown& shown);
// The lines that are not up to date, or as JSON all of them.
std::string lines_of(const Plan& plan, const Shown& shown);
// What to know before the calls are made; not in JSON.
std::string notes_of(const Plan& plan, const Shown& shown);
std::string summary_of(const Plan& plan, int exit, const Shown& shown);

// What became of the calls that were due.
struct Applied {
    std::map<call::State, std::size_t> calls; // by what is known of them now
    std::vector<std::size_t> failed;          // lines
    std::size_t left = 0;                     // not made
    bool stopped = false;                     // before the end
    bool continues = false;                   // where apply is run again
    std::size_t asking = 0;                   // lines that only batch makes
    PlanTally before;
    Plan after;
    int exit = 0;
};

std::string text_of(const Applied& applied, const Shown& shown);
// What the lines have that no site intends.
struct Warning {
    std::string text;
    input::Place place;
    std::size_t other_line = 0;
};

std::vector<Warning> warnings_of(const Plan& plan, const Shown& shown);
void print_warnings(const Plan& plan, const Shown& shown);
// "ip_address 192.168.1.10, subnet_mask 255.255.255.0", without the arguments that name the object
std::string values_of(const call::CallKey& key, const std::vector<bool>& hexadecimal = {});

} // namespace vorcfg::site
