// bytes.hpp: messages as they travelled, with their secrets masked.
//
// Bytes are written in hexadecimal. In place of a secret stands the mask, and
// in place of its length too: a record that holds it cannot be sent again. "--"
// is a byte that means nothing to the manager, and is sent again as 0.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/decode.hpp"

namespace vorsim {

std::string hex(std::span<const std::uint8_t> bytes);
std::string hex(std::string_view text);
// Nothing when the text is no bytes: masked, or damaged.
std::optional<std::string> bytes_of_hex(std::string_view text);
bool is_masked(std::string_view text);

// A message's payload. Of one that was refused nobody knows where its secret
// stands, so that every text in it is masked if it may carry one.
std::string payload_record(const Message& message, bool accepted, bool show_secrets);
// What came without being a message that a manager judges.
std::string datagram_record(std::span<const std::uint8_t> datagram, bool show_secrets);
// A text that konfd was sent.
std::string konfd_record(std::string_view text, bool show_secrets);

} // namespace vorsim
