// sheet.hpp: what a journal knows of its site, for the hand-over sheet and the table of several sites.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/options.hpp"
#include "site/revert.hpp"

namespace vorcfg::site {

struct SheetLine {
    const Entry* entry = nullptr;
    std::string name; // without the family's
    std::string values;
    std::string state;
    std::string when;
    bool open = false;
};

struct SheetSection {
    const rows::Family* family;
    std::vector<SheetLine> lines;
};

struct Sheet {
    std::string title;
    std::vector<SheetSection> sections;
    std::size_t settled = 0;
    std::size_t open = 0;
    std::size_t failed = 0; // nothing was accepted before
    std::string first;
    std::string last;
    std::optional<ConfirmedApply> apply{}; // of the last apply, if it needed a confirmation

    bool is_undecided() const { return apply && apply->exit() == input::exit_due; }
};

Sheet sheet_of(const Journal& journal);
std::string counts_of(const Sheet& sheet); // "11 settings, 1 unknown"

// The sheet of one journal, as text, JSON or a page.
int report_site(const std::string& path, const input::Options& options);

// One page that needs nothing from elsewhere; the paragraph and the body are HTML already.
std::string page_of(std::string_view title, std::string_view paragraph, std::string_view body);
// The text of a cell or a paragraph.
std::string html(std::string_view text);
// A row with the columns of a sheet.
std::string html_row(bool open, std::string_view name, std::string_view values, std::string_view state,
                     std::string_view when);

} // namespace vorcfg::site
