// filter.hpp: which records to show.
#pragma once

#include <optional>
#include <string>

#include "text/options.hpp"
#include "values/record.hpp"

namespace vorsim::record {

struct Filter {
    std::optional<std::string> manager; // its name or SAP, or "konfd"
    std::optional<std::string> call;
    std::optional<std::string> object;
    std::optional<std::string> source;
    bool complaints = false; // only those that --strict reports

    // Throws an OptionError about an unknown name.
    void check() const;
    bool passes(const values::Record& record) const;
};

inline constexpr vor::OptionOf<Filter> filter_options[] = {
    {{"--manager", "NAME|SAP", ""}, vor::taken_as<&Filter::manager>},
    {{"--call", "NAME", ""}, vor::taken_as<&Filter::call>},
    {{"--object", "TEXT", ""}, vor::taken_as<&Filter::object>},
    {{"--source", "SAP", ""}, vor::taken_as<&Filter::source>},
    {{"--complaints", "", ""}, vor::taken_as<&Filter::complaints>},
};

} // namespace vorsim::record
