#include "record/filter.hpp"

#include <fmt/core.h>

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

void Filter::set(const FilterOption& option, std::string_view value)
{
    if (option.text != nullptr) {
        this->*option.text = value;
    } else {
        complaints = true;
    }
}

std::span<const FilterOption> filter_options()
{
    static constexpr FilterOption options[] = {
        {{"--manager", "NAME|SAP", ""}, &Filter::manager},
        {{"--call", "NAME", ""}, &Filter::call},
        {{"--object", "TEXT", ""}, &Filter::object},
        {{"--source", "SAP", ""}, &Filter::source},
        {{"--complaints", "", ""}, nullptr},
    };
    return options;
}

std::string filter_help()
{
    std::string text;
    for (const FilterOption& option : filter_options()) {
        text += fmt::format("{}[{}{}{}]", text.empty() ? "" : " ", option.name, option.value.empty() ? "" : " ",
                            option.value);
    }
    return text;
}

} // namespace vorsim
