/*
 * TLV chains. The wire form of a chain is its elements one behind the other,
 * numbers with the most significant byte first:
 *
 *   tag     2 bytes
 *   kind    1 byte    vorinfra_kind
 *   length  2 bytes   of the value
 *   value             int16: 2 bytes; int32: 4 bytes; string: its bytes and
 *                     a terminating zero, the only one; raw: any bytes
 *
 * Until then an element lies in its TLV: the kind in the top bits of `size`
 * above the value's length, a number in `data` itself, so that nothing is
 * allocated.
 */
#include <cstdint>
#include <cstring>

#include "log.hpp"
#include "pool.hpp"

namespace vorinfra {

namespace {

constexpr unsigned element_header = 5;
constexpr unsigned length_bits = 13;
constexpr unsigned longest_value = (1U << length_bits) - 1;
static_assert(longest_value > VORINFRA_DATA_MAX, "whatever a message can hold, an element can");

// The total of a chain that must not be sent, because something was refused or
// because it is larger than any message. It stays so until the next init.
constexpr vor_uint16 unsendable = 0xffff;

vor_uchar* put(vor_uchar* to, unsigned bytes, uint32_t value)
{
    while (bytes-- > 0) {
        *to++ = static_cast<vor_uchar>(value >> 8 * bytes);
    }
    return to;
}

uint32_t get(const vor_uchar* from, unsigned bytes)
{
    uint32_t value = 0;
    while (bytes-- > 0) {
        value = value << 8 | *from++;
    }
    return value;
}

vor_int32 refuse(TLV_CHAIN* chain)
{
    chain->total_sz = unsendable;
    return -1;
}

vor_int32 add(TLV_CHAIN* chain, vor_uint16 tag, vorinfra_kind kind, vor_uchar* data, size_t length)
{
    if (chain == nullptr || chain->total_sz == unsendable) {
        return -1;
    }
    if (chain->used >= TLV_CHAIN_CAPACITY) {
        report("a chain holds at most %d elements; tag %u refused", TLV_CHAIN_CAPACITY, tag);
        return refuse(chain);
    }
    const size_t total = chain->total_sz + element_header + length;
    if (length > longest_value || total >= unsendable) {
        report("the element with tag %u is too large for a message: %zu bytes", tag, length);
        return refuse(chain);
    }
    chain->object[chain->used++] = {
        tag, data, static_cast<vor_uint16>(static_cast<unsigned>(kind) << length_bits | static_cast<unsigned>(length))};
    chain->total_sz = static_cast<vor_uint16>(total);
    return 0;
}

vor_int32 add_number(TLV_CHAIN* chain, vor_uint16 tag, vorinfra_kind kind, vor_int32 value, size_t length)
{
    return add(chain, tag, kind, reinterpret_cast<vor_uchar*>(static_cast<uintptr_t>(static_cast<uint32_t>(value))),
               length);
}

vor_int32 add_bytes(TLV_CHAIN* chain, vor_uint16 tag, vorinfra_kind kind, void* bytes, size_t length)
{
    if (bytes == nullptr && chain != nullptr) {
        report("the element with tag %u has no %s: null pointer", tag, kind == VORINFRA_STRING ? "text" : "bytes");
        return refuse(chain);
    }
    return add(chain, tag, kind, static_cast<vor_uchar*>(bytes), length);
}

vor_uchar* write_element(vor_uchar* to, const TLV& element)
{
    const unsigned kind = static_cast<unsigned>(element.size) >> length_bits;
    const unsigned length = element.size & longest_value;
    to = put(put(put(to, 2, element.type), 1, kind), 2, length);
    if (kind == VORINFRA_INT16 || kind == VORINFRA_INT32) {
        return put(to, length, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(element.data)));
    }
    memcpy(to, element.data, length);
    if (kind == VORINFRA_STRING) {
        to[length - 1] = '\0'; // whatever happened to the text since it was measured
    }
    return to + length;
}

} // namespace

} // namespace vorinfra

using namespace vorinfra;

vor_int32 vor_tlv_chain_init(TLV_CHAIN* chain)
{
    if (chain == nullptr) {
        return -1;
    }
    chain->used = 0;
    chain->total_sz = 0;
    return 0;
}

vor_int32 vor_tlv_chain_add_str(TLV_CHAIN* chain, vor_uint16 tag, char* string)
{
    return add_bytes(chain, tag, VORINFRA_STRING, string, string != nullptr ? strlen(string) + 1 : 0);
}

vor_int32 vor_tlv_chain_add_vor_int16(TLV_CHAIN* chain, vor_uint16 tag, vor_int16 value)
{
    return add_number(chain, tag, VORINFRA_INT16, value, 2);
}

vor_int32 vor_tlv_chain_add_vor_int32(TLV_CHAIN* chain, vor_uint16 tag, vor_int32 value)
{
    return add_number(chain, tag, VORINFRA_INT32, value, 4);
}

vor_int32 vor_tlv_chain_add_raw(TLV_CHAIN* chain, vor_uint16 tag, vor_uint16 length, unsigned char* bytes)
{
    static vor_uchar nothing[1];
    return add_bytes(chain, tag, VORINFRA_RAW, length == 0 ? nothing : bytes, length);
}

vor_int32 vor_tlv_chain_serialize(TLV_CHAIN* chain, unsigned char* destination, vor_int32* size)
{
    if (chain == nullptr || size == nullptr) {
        return -1;
    }
    *size = 0;
    Buffer* const buffer = find_buffer(destination);
    const size_t room = buffer != nullptr ? buffer->room_behind(destination) : VORINFRA_DATA_MAX;
    if (chain->total_sz > room) {
        if (chain->total_sz != unsendable) {
            report("a chain of %u bytes does not fit its message of %zu bytes", chain->total_sz, room);
        }
        if (buffer != nullptr) {
            buffer->unsendable = true;
        }
        return -1;
    }
    *size = chain->total_sz;
    if (destination != nullptr) {
        for (unsigned i = 0; i < chain->used; i++) {
            destination = write_element(destination, chain->object[i]);
        }
    }
    return 0;
}

vor_int32 vor_tlv_chain_free(TLV_CHAIN* chain, vor_uchar)
{
    return vor_tlv_chain_init(chain);
}

int vorinfra_next_element(const vor_uchar* chain, vor_uint16 size, vor_uint16* cursor, VORINFRA_ELEMENT* element)
{
    if (*cursor == size) {
        return 0;
    }
    if (*cursor > size || size - *cursor < static_cast<int>(element_header)) {
        return -1;
    }
    const vor_uchar* const start = chain + *cursor;
    const unsigned kind = get(start + 2, 1);
    const unsigned length = get(start + 3, 2);
    if (length > size - *cursor - element_header) {
        return -1;
    }
    const vor_uchar* const value = start + element_header;
    vor_uint16 shown = static_cast<vor_uint16>(length);
    vor_int32 number = 0;
    if (kind == VORINFRA_INT16 && length == 2) {
        number = static_cast<vor_int16>(get(value, 2));
    } else if (kind == VORINFRA_INT32 && length == 4) {
        number = static_cast<vor_int32>(get(value, 4));
    } else if (kind == VORINFRA_STRING && length > 0 && memchr(value, '\0', length) == value + length - 1) {
        shown--;
    } else if (kind != VORINFRA_RAW) {
        return -1;
    }
    *element = {static_cast<vor_uint16>(get(start, 2)), static_cast<vorinfra_kind>(kind), shown, value, number};
    *cursor = static_cast<vor_uint16>(*cursor + element_header + length);
    return 1;
}
