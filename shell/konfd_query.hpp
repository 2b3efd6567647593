// konfd_query.hpp: `konfd query`, a query built from options and sent to konfd.
#pragma once

#include <span>
#include <string_view>

#include "plan.hpp"

namespace vorcfg {

extern const Row query_row;
extern const std::string_view query_options; // what they mean, a line each

bool is_query(const Row& row);
Planned plan_query(const Row& row, std::span<const Token> tokens, const SecretSources& sources);

} // namespace vorcfg
