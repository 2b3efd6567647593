#include "record/filter.hpp"

#include <fmt/core.h>

#include "server/options.hpp"
#include "tables/managers.hpp"

namespace vorsim {
namespace {

std::string manager_of(const Json& record)
{
    return record.contains("konfd") ? "konfd" : manager_key(record.value("sap", std::uint16_t{}));
}

bool is_complaint(const Json& record)
{
    return record.contains("malformed") || record.contains("foreign") || record.value("complained", false);
}

} // namespace

bool Filter::passes(const Json& record) const
{
    const auto number = [&record](const char* name) {
        return record.contains(name) ? vor::dump(record[name]) : std::string();
    };
    return (!manager || *manager == manager_of(record) || *manager == number("sap")) &&
           (!call || *call == record.value("call", "")) && (!object || *object == record.value("object", "")) &&
           (!source || *source == number("source")) && (!complaints || is_complaint(record));
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
            throw UsageError(fmt::format("{} needs a value", name));
        }
        *text = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
        return true;
    }
    return false;
}

} // namespace vorsim
