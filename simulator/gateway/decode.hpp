// decode.hpp: an accepted message in names and values.
#pragma once

#include "gateway/decoded.hpp"
#include "gateway/match.hpp"

namespace vorsim {

Decoded decode(std::uint16_t sap, const Match& match, bool show_secrets);

} // namespace vorsim
