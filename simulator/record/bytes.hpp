// bytes.hpp: messages byte by byte, with their secrets masked.
//
// Bytes are written in hexadecimal. The mask replaces a secret and its length: a record that holds it cannot be
// replayed.
// "--" is a byte without meaning to the manager, and is replayed as 0.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/match.hpp"

namespace vorsim::record {

std::string hex(std::span<const std::uint8_t> bytes);
std::string hex(std::string_view text);
// Nothing if the text is not bytes: masked or damaged.
std::optional<std::string> bytes_of_hex(std::string_view text);
bool is_masked(std::string_view text);

// A message's payload. Where the secret is in a refused message is unknown: every text in it is masked if it may hold
// one.
std::string payload_record(const gateway::Message& message, bool accepted, bool show_secrets);
// A malformed or foreign datagram.
std::string datagram_record(std::span<const std::uint8_t> datagram, bool show_secrets);
// A text sent to konfd.
std::string konfd_record(std::string_view text, bool show_secrets);

} // namespace vorsim::record
