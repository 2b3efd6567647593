// line_options.hpp: the options of the commands that print lines.
#pragma once

#include <unistd.h>

#include "record/line.hpp"
#include "server/options.hpp"

namespace vorsim::client {

struct LineOptions {
    bool json = false;
    bool bytes = false;
    bool ids = false;
    vor::ColorWhen color{};

    record::LineStyle style() const { return {vor::screen_of(STDOUT_FILENO, color), ids}; }
};

inline constexpr vor::OptionOf<LineOptions> line_options[] = {
    {{"--json", "", ""}, vor::taken_as<&LineOptions::json>},
    {{"--ids", "", ""}, vor::taken_as<&LineOptions::ids>},
    {{"--color", "WHEN", ""},
     [](LineOptions& options, std::string_view value) { options.color = vor::color_when(value); }},
};

} // namespace vorsim::client
