#include "text/options.hpp"

#include <span>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vor {

ColorWhen color_when(std::string_view word)
{
    const auto* const found = std::ranges::find(color_words, word);
    if (found == std::end(color_words)) {
        throw OptionError(
            fmt::format("--color must be {}, not {}", alternatives(std::span(color_words)), quoted(word)));
    }
    return static_cast<ColorWhen>(found - color_words);
}

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
    const std::string_view given = value || next == nullptr ? value.value_or("") : std::string_view(*next);
    if (given.empty()) {
        throw OptionError(fmt::format("{} needs a value", option.name));
    }
    used += value ? 0 : 1;
    return given;
}

std::string Operands::take(std::string_view what)
{
    if (empty()) {
        throw OptionError(fmt::format("needs {}", what));
    }
    if (front().starts_with("-")) {
        refuse();
    }
    return take();
}

void Operands::end() const
{
    if (!empty()) {
        refuse();
    }
}

void Operands::refuse() const
{
    const bool is_option = front().starts_with("-") && front() != "-";
    throw UnknownArgument(fmt::format("{} \"{}\"", is_option ? "unknown option" : "unexpected argument", front()));
}

} // namespace vor
