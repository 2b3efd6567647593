// header.hpp: the contract that a family's header spells out, read from it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorcfg {

struct DocumentedCall {
    std::string symbol;
    std::string declaration;
    std::vector<std::string> paragraphs; // the first begins with the summary
    std::vector<std::pair<std::string, std::string>> arguments;
    std::string returned;

    std::string summary() const;
    std::string_view about(std::string_view argument) const;
};

struct Header {
    std::vector<std::string> paragraphs; // of the comment at its top
    std::vector<DocumentedCall> calls;

    const DocumentedCall* call(std::string_view symbol) const;
};

Header read_header(const std::filesystem::path& path);

} // namespace vorcfg
