#include "help/manual.hpp"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

#include <fmt/core.h>

#include "help/family_page.hpp"
#include "help/help.hpp"
#include "help/help_page.hpp"
#include "help/mdoc.hpp"
#include "input/complaint.hpp"
#include "input/exit_codes.hpp"
#include "input/options.hpp"
#include "input/secret.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/nearest.hpp"

namespace vorcfg {

namespace {

// "batch FILE": the command, then what stands behind it.
void add_usage(Mdoc& page, std::string_view usage)
{
    page.macro("Nm", "vorcfg").macro("Op", "OPTION...");
    if (usage.empty()) {
        return;
    }
    const std::size_t name = usage.find_first_not_of("abcdefghijklmnopqrstuvwxyz-");
    if (name != 0) {
        page.macro("Cm", usage.substr(0, name));
        usage.remove_prefix(std::min(usage.find_first_not_of(' ', std::min(name, usage.size())), usage.size()));
    }
    if (!usage.empty()) {
        page.macro("Ar", usage);
    }
}

void add_exits(Mdoc& page)
{
    page.section("exit status").begin_list();
    for (std::size_t code = 0; code < std::size(exit_texts); code++) {
        page.item(std::to_string(code), fmt::format("{}.", exit_texts[code]));
    }
    page.end_list();
}

std::string tool_manual()
{
    Mdoc page("vorcfg", 1, about_vorcfg);
    page.section("synopsis");
    for (const Command& command : commands()) {
        add_usage(page, command.usage);
    }
    page.section("description").paragraph(about_verdicts).begin_list();
    for (const Command& command : commands()) {
        if (!command.usage.empty()) {
            page.item(command.usage, fmt::format("{}.", command.about)).text(command.more);
        }
    }
    page.end_list().paragraph(about_prompt).paragraph(about_words);
    page.paragraph("The options stand anywhere before a --, which ends them.").begin_list();
    for (const OptionRow& row : option_rows()) {
        page.item(fmt::format("{}{}{}", row.name, row.value.empty() ? "" : " ", row.value),
                  fmt::format("{}{}{}.", row.about, row.commands.empty() ? "" : "; for ", row.commands));
    }
    page.end_list().paragraph("The families, each with a page of its own:").begin_list();
    for (const Family* const family : families()) {
        page.item(family->name, fmt::format("{}.", about(*family)));
    }
    page.end_list().section("environment").begin_list();
    page.item("VORINFRA_DIR", "The directory of the development platform's sockets.");
    page.item("XDG_STATE_HOME", "Where vorcfg/history is kept, the lines typed before; else ~/.local/state.");
    page.end_list();
    add_exits(page);
    page.see_also({{"vorsim", 1}, {"vorcfg-batch", 5}});
    return page.take();
}

// An example of each of some families, as a file would have them.
std::string batch_example()
{
    std::string text = "# a site\n";
    for (const std::string_view name : {"hostname", "gpio", "syslog", "ip"}) {
        const Row& row = wanted_family(name).rows.front();
        text += fmt::format("{} {}\n", row.full_name(), row.example);
    }
    return text;
}

std::string batch_manual()
{
    const auto command = std::ranges::find(commands(), "batch", &Command::name);
    Mdoc page("vorcfg-batch", 5, "files of calls for vorcfg");
    page.section("description").paragraph(command->more);
    page.paragraph(about_batch_words).paragraph(about_variables);
    page.paragraph(about_words).paragraph(about_batch_secrets).paragraph(about_bytes);
    page.section("examples").literal(batch_example());
    page.see_also({{"vorcfg", 1}});
    return page.take();
}

} // namespace

std::vector<std::string> manual_pages()
{
    std::vector<std::string> pages{"vorcfg.1", "vorcfg-batch.5", "vorsim.1"};
    for (const Family* const family : families()) {
        pages.push_back(fmt::format("vorcfg-{}.1", family->name));
    }
    return pages;
}

std::string manual(std::string_view page, bool standard_input)
{
    if (page == "vorcfg.1") {
        return tool_manual();
    }
    if (page == "vorcfg-batch.5") {
        return batch_manual();
    }
    if (page == "vorsim.1" && !standard_input) {
        throw Complaint{"the help of vorsim is read from standard input, which is the session itself"};
    }
    if (page == "vorsim.1") {
        const std::string text = isatty(STDIN_FILENO) == 0 ? content_of(stdin, "standard input") : "";
        if (text.empty()) {
            throw Complaint{"the help of vorsim is wanted on standard input: vorsim --help | vorcfg manual vorsim.1"};
        }
        return help_page("vorsim", text);
    }
    for (const Family* const family : families()) {
        if (page == fmt::format("vorcfg-{}.1", family->name)) {
            return family_manual(*family);
        }
    }
    throw Complaint{fmt::format("no page \"{}\"{}", page,
                                vor::suggestion(vor::nearest(page, manual_pages()), "vorcfg manual lists them"))};
}

} // namespace vorcfg
