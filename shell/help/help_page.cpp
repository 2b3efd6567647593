#include "help/help_page.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "call/capture.hpp"
#include "help/mdoc.hpp"

namespace vorcfg {

namespace {

using Item = std::pair<std::string, std::string>; // what stands left of a wide gap, and right of it

struct Section {
    std::string title;
    std::vector<Item> items; // without a tag: a paragraph
};

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

Item item_of(std::string_view line)
{
    const std::string_view text = trimmed(line);
    const std::size_t gap = std::min(text.find("  "), text.size());
    return {std::string(text.substr(0, gap)), std::string(trimmed(text.substr(gap)))};
}

// "usage: TOOL ...  what it does" and the lines under it, options and the like, "title:" and what stands under it,
// "title: text", paragraphs.
class Help {
public:
    explicit Help(std::string_view text)
    {
        for (const std::string& line : lines_of(text)) {
            take(line);
        }
    }

    std::vector<Item> usage;
    Section description{"description", {}};
    std::vector<Section> sections;

private:
    void take(std::string_view line)
    {
        static constexpr std::string_view usage_begins = "usage: ";
        static constexpr std::string_view exits_begin = "exit codes: ";
        const bool indented = line.starts_with("  ");
        if (line.empty()) {
            goes_on_ = in_usage_ = false;
            return;
        }
        if (line.starts_with(usage_begins) || in_usage_) {
            in_usage_ = true;
            usage.push_back(item_of(line.starts_with(usage_begins) ? line.substr(usage_begins.size()) : line));
        } else if (!indented && line.ends_with(':') && !goes_on_) {
            current_ = &sections.emplace_back(Section{std::string(line.substr(0, line.size() - 1)), {}});
        } else if (line.starts_with(exits_begin)) {
            current_ =
                &sections.emplace_back(Section{"exit status", {{"", std::string(line.substr(exits_begin.size()))}}});
            goes_on_ = true;
        } else if (indented && line.find_first_not_of(' ') <= 4) {
            current_->items.push_back(item_of(line));
            goes_on_ = true;
        } else if (goes_on_) {
            current_->items.back().second += ' ';
            current_->items.back().second += trimmed(line);
        } else {
            current_ = &description;
            description.items.push_back({"", std::string(line)});
            goes_on_ = true;
        }
    }

    Section* current_ = &description;
    bool in_usage_ = false;
    bool goes_on_ = false;
};

void add(Mdoc& page, const Section& section)
{
    page.section(section.title);
    bool listed = false;
    for (const auto& [tag, text] : section.items) {
        if (tag.empty() == listed) {
            listed ? page.end_list() : page.begin_list();
            listed = !listed;
        }
        tag.empty() ? page.paragraph(text) : page.item(tag, text);
    }
    if (listed) {
        page.end_list();
    }
}

} // namespace

std::string help_page(std::string_view tool, std::string_view text)
{
    const Help help(text);
    Mdoc page(tool, 1, help.usage.empty() ? tool : std::string_view{help.usage.front().second});
    page.section("synopsis");
    for (const auto& [usage, about] : help.usage) {
        page.macro("Nm", tool);
        if (usage.size() > tool.size()) {
            page.macro("Ar", std::string_view{usage}.substr(tool.size() + 1));
        }
    }
    add(page, help.description);
    for (const Section& section : help.sections) {
        add(page, section);
    }
    page.see_also({{"vorcfg", 1}});
    return page.take();
}

} // namespace vorcfg
