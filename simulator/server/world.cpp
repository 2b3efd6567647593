#include "server/world.hpp"

#include <fmt/core.h>

#include "record/stored.hpp"
#include "text/json.hpp"

namespace vorsim {

std::string World::text() const
{
    const std::string lines = konfd.text();
    std::string text = gateway.state().text();
    if (!lines.empty()) {
        text += "konfd\n";
        for (std::size_t begin = 0; begin < lines.size();) {
            const std::size_t end = lines.find('\n', begin) + 1;
            text += fmt::format("  {}", lines.substr(begin, end - begin));
            begin = end;
        }
    }
    return text;
}

vor::Json World::json(std::uint64_t lines_lost) const
{
    return json_of(counters, lines_lost, gateway.state(), konfd);
}

} // namespace vorsim
