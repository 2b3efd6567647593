#include "text/options.hpp"

#include <fmt/core.h>

namespace vor {

OptionWords::OptionWords(std::string_view word)
{
    const std::size_t equals = word.find('=');
    name = word == "-h" ? "--help" : word.substr(0, equals);
    if (equals != std::string_view::npos) {
        value = word.substr(equals + 1);
    }
}

std::string_view OptionWords::value_of(const Option& option, std::optional<std::string_view> next,
                                       std::size_t& used) const
{
    if (option.value.empty()) {
        return value ? throw OptionError(fmt::format("{} takes no value", option.name)) : std::string_view();
    }
    if (!value && !next) {
        throw OptionError(fmt::format("{} needs a value", option.name));
    }
    used += value ? 0 : 1;
    const std::string_view given = value ? *value : *next;
    return !given.empty() ? given : throw OptionError(fmt::format("{}: its value is empty", option.name));
}

} // namespace vor
