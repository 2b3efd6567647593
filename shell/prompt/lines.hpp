// lines.hpp: where the prompt's lines come from.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace vorcfg {

class Lines {
public:
    virtual ~Lines() = default;
    // Without its end; empty where it was interrupted. None at the end.
    virtual std::optional<std::string> next() = 0;
    // To be offered again.
    virtual void keep(const std::string&) {}
};

// As they come, from a pipe or, with a prompt before each, a terminal.
std::unique_ptr<Lines> plain_lines(bool prompted);

// Edited, completed and remembered at a terminal; null where that is not built in, or its library not there.
std::unique_ptr<Lines> edited_lines();

inline constexpr const char* prompt_text = "vorcfg> ";

} // namespace vorcfg
