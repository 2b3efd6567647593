#include "rows/names.hpp"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "rows/contract.hpp"

namespace vorcfg {

std::string usage_of(const Row& row)
{
    std::string text = row.full_name();
    if (!row.usage.empty()) {
        return fmt::format("{} {}", text, row.usage);
    }
    for (const Argument& argument : row.arguments()) {
        if (argument.is_given()) {
            text += argument.is_list ? fmt::format(" [{}...]", argument.name) : fmt::format(" {}", argument.name);
        }
    }
    return text;
}

// A call with words of its own is several calls at once: the header does not know it.
std::string summary_of(const Row& row)
{
    return row.read != nullptr ? "Edits the stored configuration with one query." : contract_of(row).summary();
}

std::vector<std::string_view> remarks_of(const Row& row)
{
    static constexpr std::pair<Marks, std::string_view> remarks[] = {
        {answer_unread, "The call never reads the manager's answer: no verdict can be had."},
        {confirmed, "Wants --yes."},
        {cuts_link, "May cut the link that one works over: at a terminal it asks first, unless --yes is given."},
    };
    std::vector<std::string_view> found;
    for (const auto& [mark, text] : remarks) {
        if (row.has(mark)) {
            found.push_back(text);
        }
    }
    return found;
}

std::string_view type_name(const Argument& argument)
{
    static constexpr std::string_view names[] = {
        "8-bit unsigned", "one byte",        "16-bit signed", "16-bit unsigned",
        "32-bit signed",  "32-bit unsigned", "text",          "result"};
    return argument.is_list              ? "list"
           : argument.kind == Kind::ipv4 ? "IPv4 address"
                                         : names[static_cast<std::size_t>(argument.type)];
}

std::string accepted(const Argument& argument)
{
    std::string words;
    for (const Choice& choice : argument.choices) {
        words += fmt::format("{}{}", words.empty() ? "" : ", ", choice.name);
    }
    if (!argument.is_number()) {
        return words;
    }
    return fmt::format("{} to {}{}{}", argument.range.least, argument.range.most, words.empty() ? "" : ", or ", words);
}

namespace {

std::string choices_text(const Argument& argument)
{
    std::string words;
    for (const Choice& choice : argument.choices) {
        words += words.empty() ? "" : ", ";
        words += argument.is_number() ? fmt::format("{} ({})", choice.number, choice.name) : std::string(choice.name);
    }
    return words;
}

} // namespace

std::string kind_text(const Argument& argument)
{
    std::string text;
    if (argument.is_list) {
        text =
            fmt::format("up to {} {}", argument.most_listed, argument.kind == Kind::ipv4 ? "IPv4 addresses" : "texts");
    } else if (argument.is_number()) {
        text = fmt::format("number, {} to {}", argument.range.least, argument.range.most);
    } else {
        text = argument.kind == Kind::ipv4 ? "IPv4 address" : argument.choices.empty() ? "text" : "word";
    }
    if (!argument.choices.empty()) {
        text += fmt::format(": {}", choices_text(argument));
    }
    if (argument.most_bytes != 0) {
        text += fmt::format(", at most {} bytes", argument.most_bytes);
    }
    text += argument.is_secret ? "; a secret: @FILE, - or ?" : "";
    text += argument.is_sent ? "" : "; never sent";
    text += argument.decided_by.empty()
                ? ""
                : fmt::format("; sent only where {} is {}", argument.decided_by, argument.decided_at.name);
    return text;
}

} // namespace vorcfg
