// example_lines.hpp: the lines that a row's example makes, to be varied.
#pragma once

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "input/words.hpp"
#include "rows/families.hpp"

namespace vorcfg {

using Line = std::vector<input::Word>;

inline const std::string secret = "gr33n-m0nsoon";

inline std::vector<const rows::Row*> rows_that(const std::function<bool(const rows::Row&)>& wanted)
{
    std::vector<const rows::Row*> rows;
    for (const rows::Family* const family : rows::families()) {
        for (const rows::Row& row : family->rows) {
            if (wanted(row)) {
                rows.push_back(&row);
            }
        }
    }
    return rows;
}

// The arguments that a line gives, each with its place there.
inline std::vector<std::pair<rows::Argument, std::size_t>> given_arguments(const rows::Row& row)
{
    std::vector<std::pair<rows::Argument, std::size_t>> given;
    for (const rows::Argument& argument : row.arguments()) {
        if (argument.is_given()) {
            given.emplace_back(argument, 2 + given.size());
        }
    }
    return given;
}

inline Line example_of(const rows::Row& row)
{
    Line words = input::words_of(row.full_name() + ' ' + std::string(row.example));
    for (input::Word& word : words) {
        if (!word.quoted && word.text == "-") {
            word = {secret, true};
        }
    }
    return words;
}

// With something for each argument that the line sends, and nothing for those that it does not.
inline Line fitted(const rows::Row& row, Line line)
{
    const auto given = given_arguments(row);
    for (const auto& [argument, at] : given) {
        const auto decides = std::ranges::find_if(
            given, [&decided = argument](const auto& one) { return one.first.name == decided.decided_by; });
        if (decides != given.end()) {
            const std::string& word = line[decides->second].text;
            const bool sent = word == argument.decided_at.name || word == std::to_string(argument.decided_at.number);
            line[at] = {sent ? "7" : argument.is_number() ? "0" : "", true};
        }
    }
    return line;
}

// The example, and the example with each word of its worded arguments: some calls look at an argument for one word
// and not for another.
inline std::vector<Line> variants(const rows::Row& row)
{
    std::vector<Line> lines{example_of(row)};
    for (const auto& [argument, at] : given_arguments(row)) {
        for (const rows::Choice& choice : argument.choices) {
            lines.push_back(lines.front());
            lines.back()[at].text = choice.name;
            lines.back() = fitted(row, lines.back());
        }
    }
    return lines;
}

// What a call turns into something else on its way: only that it makes a difference can be seen.
inline bool is_turned(const rows::Row& row, const rows::Argument& argument)
{
    static const std::set<std::pair<std::string_view, std::string_view>> turned = {
        {"vor_cfg_set_debug_info", "en_dis_flag"}, // into a mask of levels
        {"vor_cfg_set_debug_info", "level"},
        {"vor_cfg_set_snmp_server_v3_credentials", "mode"}, // into a tag
    };
    return turned.contains({row.symbol, argument.name});
}

} // namespace vorcfg
