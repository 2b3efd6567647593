// What calls write into their results, field by field.
#include <fmt/core.h>

#include "rows/binding.hpp"
#include "text/text.hpp"

namespace vorcfg {

void append_field(Fields& fields, std::string_view name, const vor_ip_address* address)
{
    fields.push_back({std::string(name), vor::dotted(*address), Field::Kind::word});
}

void append_field(Fields& fields, std::string_view name, const vor_uchar* mac)
{
    fields.push_back(
        {std::string(name),
         fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]),
         Field::Kind::word});
}

} // namespace vorcfg
