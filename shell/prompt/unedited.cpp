#include "prompt/lines.hpp"

namespace vorcfg {

std::unique_ptr<Lines> edited_lines()
{
    return nullptr;
}

} // namespace vorcfg
