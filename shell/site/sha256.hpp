// sha256.hpp: SHA-256 (FIPS 180-4) and HMAC-SHA-256 (RFC 2104).
#pragma once

#include <string>
#include <string_view>

namespace vorcfg::site {

// 32 bytes.
std::string sha256(std::string_view text);
std::string hmac_sha256(std::string_view key, std::string_view text);

} // namespace vorcfg::site
