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

std::string_view OptionWords::value_of(const Option& option, const std::string* next, std::size_t& used) const
{
    if (option.value.empty()) {
        return value ? throw OptionError(fmt::format("{} takes no value", option.name)) : std::string_view();
    }
    if (!value && next == nullptr) {
        throw OptionError(fmt::format("{} needs a value", option.name));
    }
    used += value ? 0 : 1;
    return value ? *value : std::string_view(*next);
}

std::string Operands::take(std::string_view what)
{
    if (empty() || front().starts_with("-")) {
        throw OptionError(empty() ? fmt::format("{} is missing", what) : fmt::format("unknown option \"{}\"", front()));
    }
    return take();
}

void Operands::end() const
{
    if (!empty()) {
        throw OptionError(fmt::format("\"{}\" is too much here", front()));
    }
}

} // namespace vor
