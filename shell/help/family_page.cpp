#include "help/family_page.hpp"

#include <cctype>

#include <fmt/core.h>

#include "help/mdoc.hpp"
#include "rows/contract.hpp"
#include "rows/names.hpp"

namespace vorcfg {

namespace {

// The header's text, without the file's name before it.
std::string without_file(std::string text)
{
    const std::size_t name = text.find(".h: ");
    if (name != std::string::npos && name < text.find(' ')) {
        text.erase(0, name + 4);
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text;
}

void add_arguments(Mdoc& page, const Row& row, const CallContract& contract)
{
    bool listed = false;
    for (const Argument& argument : row.arguments()) {
        if (argument.is_given()) {
            listed = listed || (page.begin_list(), true);
            page.item(argument.name, fmt::format("{}.", kind_text(argument)));
            if (const std::string_view meaning = contract.about(argument); !meaning.empty()) {
                page.text(fmt::format("{}.", meaning));
            }
        }
    }
    if (listed) {
        page.end_list();
    }
}

void add_call(Mdoc& page, const Row& row)
{
    const CallContract& contract = contract_of(row);
    page.subsection(row.full_name());
    if (row.read != nullptr) {
        page.paragraph(summary_of(row)).literal(row.usage_help);
    } else {
        page.literal(contract.declaration);
        for (const std::string& paragraph : contract.paragraphs) {
            page.paragraph(paragraph);
        }
    }
    if (!row.used_by.empty()) {
        page.paragraph(fmt::format("Not called on its own; what uses it: {}.", row.used_by));
        return;
    }
    for (const std::string_view remark : remarks_of(row)) {
        page.paragraph(remark);
    }
    if (row.read == nullptr) {
        add_arguments(page, row, contract);
        page.paragraph(fmt::format("The library returns {}.", contract.returned));
    }
    page.literal(fmt::format("vorcfg {}{}{}", row.full_name(), row.example.empty() ? "" : " ", row.example));
}

} // namespace

std::string family_manual(const Family& family)
{
    const std::string name = fmt::format("vorcfg-{}", family.name);
    Mdoc page(name, 1, about(family));
    page.section("synopsis");
    for (const Row& row : family.rows) {
        if (row.used_by.empty()) {
            page.macro("Nm", "vorcfg").macro("Cm", row.full_name());
            const std::string usage = usage_of(row);
            if (const std::size_t words = row.full_name().size() + 1; words < usage.size()) {
                page.macro("Ar", usage.substr(words));
            }
        }
    }
    page.section("description");
    for (const std::string& paragraph : contract_of(family).paragraphs) {
        page.paragraph(without_file(paragraph));
    }
    for (const Row& row : family.rows) {
        add_call(page, row);
    }
    page.see_also({{"vorcfg", 1}, {"vorcfg-batch", 5}});
    return page.take();
}

} // namespace vorcfg
