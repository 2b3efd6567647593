// show.hpp: a plan, for a reader and for a program.
#pragma once

#include <string>

#include "site/diff.hpp"

namespace vorcfg {

struct Shown {
    const std::string& file;
    const std::string& journal;
    bool json;
};

// What is not as the file has it, a line each; as JSON every line, and at the end what the plan comes to.
std::string lines_of(const Plan& plan, const Shown& shown);
std::string summary_of(const Plan& plan, const Shown& shown);

std::string line_of(const Due& line, const Shown& shown);
// Accepted, and its secret may have changed since.
bool is_not_compared(const Due& line);
std::size_t count_not_compared(const Plan& plan);
// "; 1 secret not compared, --resend-secrets sends it"
std::string not_compared_text(const Plan& plan);
// What a file says twice, and differently.
std::string warnings_of(const Plan& plan, const Shown& shown);
// "ip_address 192.168.1.10, subnet_mask 255.255.255.0", without what names the object
std::string values_of(const Said& said);

} // namespace vorcfg
