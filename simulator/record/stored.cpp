#include "record/stored.hpp"

#include <algorithm>
#include <stdexcept>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "tables/families.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

std::vector<std::string_view> value_names(const Row& row)
{
    std::vector<std::string_view> names;
    if (!row.layout.lead.empty()) {
        names.push_back(row.layout.lead);
    }
    for (const Field& field : row.layout.fields()) {
        names.push_back(field.name);
    }
    return names;
}

// A list that held nothing was not shown.
bool has_these(const Row& row, const Json& values)
{
    const auto names = value_names(row);
    const auto known = [&names](const auto& item) { return std::ranges::find(names, item.name) != names.end(); };
    const auto shown = [&](std::string_view name) {
        const auto fields = row.layout.fields();
        return values.contains(name) || (!fields.empty() && fields.back().repeated && fields.back().name == name);
    };
    return std::ranges::all_of(values.members(), known) && std::ranges::all_of(names, shown);
}

const Row* row_of(std::uint16_t sap, const std::string& call, const Json& values)
{
    for (const Family* family : all_families()) {
        for (const Row& row : family->rows()) {
            if (row.call == call && family->serves(row, sap) && has_these(row, values)) {
                return &row;
            }
        }
    }
    return nullptr;
}

std::string text_of(const Field* field, const Json& data)
{
    if (!data.is_string()) {
        return vor::dump(data);
    }
    const std::string& text = data.string();
    const bool plain = field != nullptr && (field->display == Display::address || field->display == Display::secret);
    return plain ? text : vor::quoted(text, longest_in_line);
}

Value value_of(const Row& row, std::string_view name, const Json& data)
{
    const auto fields = row.layout.fields();
    const auto found = std::ranges::find(fields, name, &Field::name);
    const Field* const field = found == fields.end() ? nullptr : &*found;
    Value value{.name = name,
                .text = {},
                .data = data,
                .in_object = row.object.find(fmt::format("{{{}}}", name)) != row.object.npos};
    if (!data.is_array()) {
        value.text = text_of(field, data);
        return value;
    }
    std::vector<std::string> texts;
    for (const Json& one : data.elements()) {
        texts.push_back(text_of(field, one));
    }
    value.text = fmt::format("{}", fmt::join(texts, ","));
    return value;
}

void store_lines(konfd::Konfd& konfd, const Json& lines, const std::string& path, int depth)
{
    for (const Json& one : lines.elements()) {
        const std::string& line = one.at("line").string();
        if (line.ends_with(vor::mask) && konfd::without_secret(line) == line && line != vor::mask) {
            throw std::runtime_error(
                fmt::format("konfd's line \"{}\" is masked (--show-secrets writes a state that can be loaded)", line));
        }
        const std::string command = fmt::format("-s -l \"{}\" -p {}{}", line, one.value("priority", 0), path);
        if (depth > 16 || konfd.execute(command).answer != "-o\n") {
            throw std::runtime_error(
                fmt::format("konfd's line {} cannot be stored", vor::quoted(line, longest_in_line)));
        }
        if (const Json* const under = one.find("under")) {
            store_lines(konfd, *under, fmt::format("{} \"{}\"", path, line), depth + 1);
        }
    }
}

} // namespace

State stored_state(const Json& held)
{
    State state;
    for (const auto& [key, manager] : held.members()) {
        const auto sap = manager.at("sap").number<std::uint16_t>();
        for (const auto& [object, calls] : manager.at("objects").members()) {
            for (const auto& [call, values] : calls.members()) {
                const Row* const row = row_of(sap, call, values);
                if (row == nullptr) {
                    throw std::runtime_error(
                        fmt::format("{}/{}: no message of this manager is {} with these values", key, object, call));
                }
                Decoded decoded{.sap = sap, .row = row, .object = object};
                for (const std::string_view name : value_names(*row)) {
                    if (values.contains(name)) {
                        decoded.values.push_back(value_of(*row, name, values[name]));
                    }
                }
                if (!state.keep(decoded)) {
                    throw std::runtime_error("the state is more than can be kept");
                }
            }
        }
    }
    return state;
}

void store_konfd(konfd::Konfd& konfd, const Json& lines)
{
    store_lines(konfd, lines, "", 0);
}

} // namespace vorsim
