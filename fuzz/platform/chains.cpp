// Bytes that may be a chain: reading stays within them, and a chain written again is the same bytes.
#include <vector>

#include <vorinfra_manager.h>

#include "input.hpp"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<vor_uchar> bytes(data, data + std::min<std::size_t>(size, VORINFRA_DATA_MAX));
    bytes.shrink_to_fit(); // so that a read past the end is reported
    const auto length = static_cast<vor_uint16>(bytes.size());
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    vor_uint16 cursor = 0;
    vor_uint16 before = 0;
    VORINFRA_ELEMENT element{};
    int read;
    while ((read = vorinfra_next_element(bytes.data(), length, &cursor, &element)) == 1) {
        require(cursor > before && cursor <= length, "the cursor moves on, within the chain");
        require(element.value >= bytes.data() + before && element.value + element.size <= bytes.data() + cursor,
                "a value lies within its element");
        before = cursor;
        auto* const value = const_cast<vor_uchar*>(element.value);
        switch (element.kind) {
        case VORINFRA_INT16:
            vor_tlv_chain_add_vor_int16(&chain, element.tag, static_cast<vor_int16>(element.number));
            break;
        case VORINFRA_INT32:
            vor_tlv_chain_add_vor_int32(&chain, element.tag, element.number);
            break;
        case VORINFRA_STRING:
            require(strlen(reinterpret_cast<char*>(value)) == element.size, "a string ends where it says");
            vor_tlv_chain_add_str(&chain, element.tag, reinterpret_cast<char*>(value));
            break;
        default:
            require(element.kind == VORINFRA_RAW, "a kind is one of four");
            vor_tlv_chain_add_raw(&chain, element.tag, element.size, value);
        }
    }
    require(cursor == before, "the cursor stays where there is not an element");
    if (read == 0 && chain.total_sz == length) {
        std::vector<vor_uchar> written(length + 1U, 0xa5);
        vor_int32 count = 0;
        require(vor_tlv_chain_serialize(&chain, written.data(), &count) == 0, "what was read can be written");
        require(count == length && std::equal(bytes.begin(), bytes.end(), written.begin()),
                "a chain written again is the same bytes");
        require(written.back() == 0xa5, "nothing is written behind it");
    } else {
        require(read == -1 || chain.used == TLV_CHAIN_CAPACITY, "a chain is read to its end, or is none");
    }
    return 0;
}
