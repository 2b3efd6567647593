// sheet.hpp: the hand-over sheet of a site, from its journal.
#pragma once

#include <string>
#include <vector>

#include "site/journal.hpp"

namespace vorcfg {

struct SheetLine {
    std::string name; // without the family's
    std::string values;
    std::string verdict;
    std::string when;
    bool open = false;
};

struct SheetSection {
    const Family* family;
    std::vector<SheetLine> lines;
};

struct Sheet {
    std::string title;
    std::vector<SheetSection> sections;
    std::size_t settled = 0;
    std::size_t open = 0;
    std::string first;
    std::string last;
    std::string note; // of what may not stay
};

// The calls of a family in the order of its rows, those of one call in the order of their objects.
Sheet sheet_of(const Journal& journal);

std::string text_of(const Sheet& sheet);
// One page that needs nothing from elsewhere.
std::string html_of(const Sheet& sheet);
std::string json_of(const Sheet& sheet);

} // namespace vorcfg
