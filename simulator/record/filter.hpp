// filter.hpp: which records somebody wants to see.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "text/options.hpp"
#include "values/record.hpp"

namespace vorsim {

struct FilterOption;

struct Filter {
    std::optional<std::string> manager; // its name or SAP, or "konfd"
    std::optional<std::string> call;
    std::optional<std::string> object;
    std::optional<std::string> source;
    bool complaints = false; // what --strict would not let pass

    bool passes(const Record& record) const;
    void set(const FilterOption& option, std::string_view value);
};

struct FilterOption : vor::Option {
    std::optional<std::string> Filter::*text; // null: the complaints
};

std::span<const FilterOption> filter_options();
// "[--manager NAME|SAP] ..."
std::string filter_help();

} // namespace vorsim
