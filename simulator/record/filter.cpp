#include "record/filter.hpp"

#include <fmt/core.h>

#include "tables/managers.hpp"
#include "text/options.hpp"

namespace vorsim {

bool Filter::passes(const Record& record) const
{
    const bool message = record.kind == Record::Kind::message;
    const bool konfd = record.kind == Record::Kind::konfd;
    const bool complaint = record.complained || !(message || konfd);
    const auto is_manager = [&](const std::string& name) {
        return konfd ? name == "konfd" : name == manager_key(record.sap) || name == std::to_string(record.sap);
    };
    return (!manager || is_manager(*manager)) && (!call || *call == record.call) &&
           (!object || *object == record.object) &&
           (!source || (message && *source == std::to_string(record.source))) && (!complaints || complaint);
}

bool Filter::take(std::vector<std::string>& arguments)
{
    const std::pair<const char*, std::optional<std::string>*> texts[] = {
        {"--manager", &manager}, {"--call", &call}, {"--object", &object}, {"--source", &source}};
    if (arguments.front() == "--complaints") {
        complaints = true;
        arguments.erase(arguments.begin());
        return true;
    }
    for (const auto& [name, text] : texts) {
        if (arguments.front() != name) {
            continue;
        }
        if (arguments.size() < 2) {
            throw vor::OptionError(fmt::format("{} needs a value", name));
        }
        *text = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
        return true;
    }
    return false;
}

} // namespace vorsim
