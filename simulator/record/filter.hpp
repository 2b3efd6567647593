// filter.hpp: which records somebody wants to see.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "values/record.hpp"

namespace vorsim {

struct Filter {
    std::optional<std::string> manager; // its name or SAP, or "konfd"
    std::optional<std::string> call;
    std::optional<std::string> object;
    std::optional<std::string> source;
    bool complaints = false; // what --strict would not let pass

    bool passes(const Record& record) const;
    // Takes an option of its own off the front; false when it is none.
    bool take(std::vector<std::string>& arguments);
};

inline constexpr char filter_help[] =
    "[--manager NAME|SAP] [--call NAME] [--object TEXT] [--source SAP] [--complaints]";

} // namespace vorsim
