// chain_form.hpp: how this platform writes a chain, observed: the form on the wire is the platform's own.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "call/message.hpp"

namespace vorcfg::call {

// The elements one behind the other, each a header and its value.
struct ChainForm {
    bool has_high_byte_first = false; // of every number
    std::size_t tag_offset = 0;       // of 16 bits
    std::size_t length_offset = 0;    // of 16 bits: the bytes of the value
    std::size_t kind_offset = 0;      // of 8 bits
    std::size_t header_size = 0;
    std::size_t text_end = 0; // zero bytes behind a text, which its length counts
    std::map<Element::Kind, std::uint8_t> kinds{};
};

// None where the platform's is of another form.
std::optional<ChainForm> chain_form();

} // namespace vorcfg::call
