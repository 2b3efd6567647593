// mdoc.hpp: a manual page, written in mdoc.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace vorcfg {

// Texts are given as they are to be read; what the macros would take for their own is escaped.
class Mdoc {
public:
    Mdoc(std::string_view name, int section, std::string_view about);

    Mdoc& section(std::string_view title);
    Mdoc& subsection(std::string_view title);
    Mdoc& macro(std::string_view name, std::string_view arguments = {});
    Mdoc& paragraph(std::string_view text); // .Pp before it, unless it begins its section
    Mdoc& text(std::string_view text);      // filled, a sentence a line
    Mdoc& literal(std::string_view lines);
    Mdoc& begin_list();
    Mdoc& item(std::string_view tag, std::string_view text);
    Mdoc& end_list();
    Mdoc& see_also(std::initializer_list<std::pair<std::string_view, int>> pages);

    std::string take() { return std::move(page_); }

private:
    std::string page_;
    bool begins_ = true;
};

} // namespace vorcfg
