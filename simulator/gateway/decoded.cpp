#include "gateway/decoded.hpp"

#include <algorithm>

namespace vorsim {

std::int32_t Decoded::number(std::string_view name) const
{
    const auto found = std::ranges::find(values, name, &Value::name);
    return found == values.end() ? 0 : static_cast<std::int32_t>(found->data.number<std::int64_t>());
}

} // namespace vorsim
