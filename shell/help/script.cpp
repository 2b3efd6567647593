#include <algorithm>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "help/complete.hpp"
#include "input/complaint.hpp"

#include "script_texts.hpp" // of the files in scripts/, by the build

namespace vorcfg {

std::vector<std::string_view> completed_shells()
{
    std::vector<std::string_view> shells;
    for (const vor::BuiltIn& script : script_texts) {
        shells.push_back(script.stem);
    }
    return shells;
}

std::string_view completion_script(std::string_view shell)
{
    const auto found = std::ranges::find(script_texts, shell, &vor::BuiltIn::stem);
    if (found == std::end(script_texts)) {
        throw Complaint{
            fmt::format("no completion for \"{}\"; wanted: {}", shell, fmt::join(completed_shells(), ", "))};
    }
    return found->text;
}

} // namespace vorcfg
