// show.hpp: a plan and what became of it, for a reader and for a program.
#pragma once

#include <string>

#include "call/runner.hpp"
#include "site/diff.hpp"

namespace vorcfg {

struct Shown {
    const std::string& file;
    const std::string& journal;
    bool json;
};

std::string line_of(const PlanLine& line, const Shown& shown);
// What is not as the file has it, a line each; as JSON every line, and at the end what the plan comes to.
std::string lines_of(const Plan& plan, const Shown& shown);
std::string summary_of(const Plan& plan, const Shown& shown);
// What became of the calls that were due.
std::string applied_text(const Plan& plan, const Tally& calls, std::size_t left, const Shown& shown);
// What a file says twice, and differently.
std::string warnings_of(const Plan& plan, const Shown& shown);
// "ip_address 192.168.1.10, subnet_mask 255.255.255.0", without what names the object
std::string values_of(const CallKey& key);

} // namespace vorcfg
