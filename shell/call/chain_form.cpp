#include "call/chain_form.hpp"

#include <algorithm>
#include <string>

#include <vorinfra.h>

namespace vorcfg::call {

namespace {

constexpr std::uint16_t sample_tag = 0x5152;

std::string written(Element::Kind kind, std::string value)
{
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    switch (kind) {
    case Element::Kind::int16:
        vor_tlv_chain_add_vor_int16(&chain, sample_tag, 0x7172);
        break;
    case Element::Kind::int32:
        vor_tlv_chain_add_vor_int32(&chain, sample_tag, 0x71727374);
        break;
    case Element::Kind::text:
        vor_tlv_chain_add_str(&chain, sample_tag, value.data());
        break;
    case Element::Kind::raw:
        vor_tlv_chain_add_raw(&chain, sample_tag, static_cast<vor_uint16>(value.size()),
                              reinterpret_cast<unsigned char*>(value.data()));
        break;
    }
    std::string bytes(value.size() + 64, '\0');
    vor_int32 size = 0;
    vor_tlv_chain_serialize(&chain, reinterpret_cast<unsigned char*>(bytes.data()), &size);
    vor_tlv_chain_free(&chain, 0);
    bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
    return bytes;
}

} // namespace

std::optional<ChainForm> chain_form()
{
    const std::string number = written(Element::Kind::int32, "");
    const bool has_high_byte_first = number.ends_with("\x71\x72\x73\x74");
    const std::string text(300, 'a');
    const std::string long_text = written(Element::Kind::text, text);
    const std::string raw = written(Element::Kind::raw, text);
    ChainForm form{.has_high_byte_first = has_high_byte_first,
                   .header_size = raw.size() - std::min(text.size(), raw.size())};
    const auto find = [&](std::size_t value) {
        const char high = static_cast<char>(value >> 8U);
        const char low = static_cast<char>(value & 0xffU);
        const std::string bytes = has_high_byte_first ? std::string{high, low} : std::string{low, high};
        return raw.substr(0, form.header_size).find(bytes);
    };
    form.tag_offset = find(sample_tag);
    form.length_offset = find(text.size());
    form.text_end = long_text.size() - std::min(long_text.size(), raw.size());
    if (form.header_size != 5 || form.tag_offset == std::string::npos || form.length_offset == std::string::npos) {
        return std::nullopt;
    }
    while (form.kind_offset - form.tag_offset < 2 || form.kind_offset - form.length_offset < 2) {
        form.kind_offset++;
    }
    for (const auto& [kind, bytes] : {std::pair{Element::Kind::int16, written(Element::Kind::int16, "")},
                                      {Element::Kind::int32, number},
                                      {Element::Kind::text, long_text},
                                      {Element::Kind::raw, raw}}) {
        form.kinds[kind] = static_cast<std::uint8_t>(bytes[form.kind_offset]);
    }
    return form;
}

} // namespace vorcfg::call
