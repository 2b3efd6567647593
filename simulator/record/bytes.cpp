#include "record/bytes.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "gateway/fit.hpp"
#include "konfd/command.hpp"
#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim::record {
namespace {

using MessageRows = std::vector<const tables::MessageRow*>;

constexpr std::string_view meaningless = "--"; // a byte that is not recorded

bool is_secret(const tables::Field& field)
{
    return field.display == tables::Display::secret;
}

// Whether a message of these rows may hold a secret, under this tag if given.
bool may_hold_secret(const MessageRows& rows, std::optional<std::uint16_t> tag = {})
{
    return std::ranges::any_of(rows, [tag](const tables::MessageRow* row) {
        return std::ranges::any_of(row->layout.fields(), [tag](const tables::Field& field) {
            return is_secret(field) && field.tag_or_offset == tag.value_or(field.tag_or_offset);
        });
    });
}

// Bytes after the end of a text and in unused places hold what was in the sender's buffer before, perhaps a password.
std::string record_of(const MessageRows& rows, gateway::Bytes payload)
{
    const gateway::Fitting found = gateway::fit(rows, payload);
    if (found.row == nullptr) {
        return payload.empty() ? "" : std::string(vor::mask);
    }
    std::vector<std::string> bytes(payload.size(), std::string(meaningless));
    for (const gateway::Part& part : found.parts) {
        const std::size_t at = part.field->tag_or_offset;
        const bool text = part.field->kind == tables::Kind::text;
        const std::size_t size =
            text ? std::min(gateway::text_in(part).size() + 1, part.bytes.size()) : part.bytes.size();
        for (std::size_t byte = 0; byte < size; ++byte) {
            bytes[at + byte] = is_secret(*part.field) ? "" : hex(part.bytes.subspan(byte, 1));
        }
        if (is_secret(*part.field)) {
            bytes[at] = vor::mask;
            std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at + 1), part.bytes.size() - 1, "");
        }
    }
    return vor::joined(bytes, "");
}

std::string masked_chain(const MessageRows& rows, gateway::Bytes chain, bool accepted)
{
    std::string text;
    std::uint16_t cursor = 0;
    for (;;) {
        const std::uint16_t begin = cursor;
        VORINFRA_ELEMENT element{};
        const int read =
            vorinfra_next_element(chain.data(), static_cast<std::uint16_t>(chain.size()), &cursor, &element);
        if (read < 0) {
            return text + std::string(vor::mask);
        }
        if (read == 0) {
            return text;
        }
        const gateway::Bytes whole = chain.subspan(begin, static_cast<std::size_t>(cursor - begin));
        const bool number = element.kind == VORINFRA_INT16 || element.kind == VORINFRA_INT32;
        const bool masked = may_hold_secret(rows, element.tag) || (!accepted && !number);
        text += masked ? hex(whole.first(2)) + std::string(vor::mask) : hex(whole);
    }
}

} // namespace

std::string hex(gateway::Bytes bytes)
{
    std::string text;
    for (const unsigned char byte : bytes) {
        fmt::format_to(std::back_inserter(text), "{:02x}", byte);
    }
    return text;
}

std::string hex(std::string_view text)
{
    return hex(gateway::Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::optional<std::string> bytes_of_hex(std::string_view text)
{
    std::string bytes;
    for (; text.size() > 1; text.remove_prefix(2)) {
        unsigned char byte = 0;
        const char* const end = text.data() + 2;
        if (!text.starts_with(meaningless) && std::from_chars(text.data(), end, byte, 16).ptr != end) {
            return {};
        }
        bytes += static_cast<char>(byte);
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

bool is_masked(std::string_view text)
{
    return text.find(vor::mask) != text.npos;
}

std::string payload_record(const gateway::Message& message, bool accepted, bool show_secrets)
{
    if (show_secrets) {
        return hex(message.payload);
    }
    const auto rows = tables::rows_of(message.id, message.sap);
    if (!rows.empty() && rows.front()->layout.form == tables::Form::record) {
        return record_of(rows, message.payload);
    }
    if (!may_hold_secret(rows)) {
        if (!accepted && may_hold_secret(tables::rows_of(message.id))) { // sent to the wrong manager
            return std::string(vor::mask);
        }
        // An unknown message may be a known one with a wrong id.
        return accepted || !rows.empty() ? hex(message.payload) : masked_chain(rows, message.payload, false);
    }
    const tables::Layout& layout = rows.front()->layout; // the rows of one message share its form
    const std::size_t lead = layout.form == tables::Form::flag_byte && !message.payload.empty() ? 1 : 0;
    return hex(message.payload.first(lead)) + masked_chain(rows, message.payload.subspan(lead), accepted);
}

std::string datagram_record(gateway::Bytes datagram, bool show_secrets)
{
    VOR_IPC_MSG_HDR header{};
    if (show_secrets || datagram.size() <= sizeof header) {
        return hex(datagram);
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    const auto rows = tables::rows_of(header.opcode);
    const bool plain = !rows.empty() && !may_hold_secret(rows);
    return plain ? hex(datagram) : hex(datagram.first(sizeof header)) + std::string(vor::mask);
}

std::string konfd_record(std::string_view text, bool show_secrets)
{
    const std::size_t first = konfd::secret_word_in(text);
    if (show_secrets || first == text.npos) {
        return hex(text);
    }
    const auto parsed = konfd::parse(text);
    if (!std::holds_alternative<std::vector<konfd::Command>>(parsed)) {
        return hex(text.substr(0, first)) + std::string(vor::mask);
    }
    // konfd masks quoted texts itself.
    std::string record;
    for (bool inside = false; !text.empty(); inside = !inside) {
        const std::size_t end = std::min(text.find('"'), text.size());
        const std::string_view part = text.substr(0, end);
        const std::string shown = inside ? konfd::without_secret(part) : std::string(part);
        record += shown == part ? hex(part) : hex(part.substr(0, part.find(' ') + 1)) + std::string(vor::mask);
        record += end < text.size() ? hex(text.substr(end, 1)) : "";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return record;
}

} // namespace vorsim::record
