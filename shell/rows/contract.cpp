#include "rows/contract.hpp"

#include <algorithm>
#include <map>
#include <sstream>

#include "header_texts.hpp" // of the headers themselves, by the build

namespace vorcfg {

namespace {

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\n*");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

void join(std::string& text, std::string_view more)
{
    if (!text.empty() && !more.empty()) {
        text += ' ';
    }
    text += more;
}

// The lines of a comment without their stars.
std::vector<std::string> lines_of_comment(std::string_view comment)
{
    std::vector<std::string> lines;
    std::istringstream stream{std::string(comment)};
    for (std::string line; std::getline(stream, line);) {
        lines.emplace_back(trimmed(line));
    }
    return lines;
}

// Runs of lines, an empty line or the end between them.
std::vector<std::string> paragraphs_of(std::string_view comment)
{
    std::vector<std::string> paragraphs(1);
    for (const std::string& line : lines_of_comment(comment)) {
        if (line.empty() && !paragraphs.back().empty()) {
            paragraphs.emplace_back();
        }
        join(paragraphs.back(), line);
    }
    if (paragraphs.back().empty()) {
        paragraphs.pop_back();
    }
    return paragraphs;
}

void read_tag(CallContract& call, std::string_view text)
{
    static constexpr std::string_view param = "@param ";
    static constexpr std::string_view returns = "@return ";
    if (text.starts_with(param)) {
        text.remove_prefix(param.size());
        const std::size_t end = std::min(text.find(' '), text.size());
        call.arguments.emplace_back(text.substr(0, end), trimmed(text.substr(end)));
    } else if (text.starts_with(returns)) {
        call.returned = text.substr(returns.size());
    }
}

CallContract read_call(std::string_view comment, std::string_view declaration)
{
    CallContract call;
    call.returned = "the common codes";
    for (const std::string& line : lines_of_comment(declaration)) {
        join(call.declaration, line);
    }
    const std::size_t open = call.declaration.find('(');
    const std::size_t begin = call.declaration.find_last_of(" *", open) + 1;
    call.symbol = call.declaration.substr(begin, open - begin);
    const std::size_t tags = std::min(comment.find('@'), comment.size());
    call.paragraphs = paragraphs_of(comment.substr(0, tags));
    std::string tag;
    for (const std::string& line : lines_of_comment(comment.substr(tags))) {
        if (line.starts_with('@')) {
            read_tag(call, tag);
            tag.clear();
        }
        join(tag, line);
    }
    read_tag(call, tag);
    return call;
}

HeaderContract read_header(std::string_view text)
{
    HeaderContract header;
    header.paragraphs = paragraphs_of(text.substr(2, text.find("*/") - 2));
    for (std::size_t at = text.find("/**"); at != std::string_view::npos; at = text.find("/**")) {
        text.remove_prefix(at + 3);
        const std::size_t end = text.find("*/");
        const std::size_t semicolon = text.find(';', end);
        header.calls.push_back(read_call(text.substr(0, end), text.substr(end + 2, semicolon - end - 2)));
        text.remove_prefix(semicolon);
    }
    return header;
}

} // namespace

std::string CallContract::summary() const
{
    const std::string& first = paragraphs.empty() ? symbol : paragraphs.front();
    const std::size_t end = first.find(". ");
    return end == std::string::npos ? first : first.substr(0, end + 1);
}

std::string_view CallContract::about(const Argument& argument) const
{
    const auto found = std::ranges::find(arguments, argument.is_list ? "..." : argument.name,
                                         [](const auto& each) { return std::string_view{each.first}; });
    return found != arguments.end() ? std::string_view{found->second} : std::string_view{};
}

const HeaderContract& contract_of(const Family& family)
{
    static std::map<std::string_view, HeaderContract> read; // each once, when it is asked for
    const auto known = read.find(family.header);
    if (known != read.end()) {
        return known->second;
    }
    const auto text = std::ranges::find(header_texts, family.header, &vor::BuiltIn::stem);
    return read.emplace(family.header, text != std::end(header_texts) ? read_header(text->text) : HeaderContract())
        .first->second;
}

const CallContract& contract_of(const Row& row)
{
    static const CallContract none;
    const HeaderContract& header = contract_of(*row.family);
    const auto found = std::ranges::find(header.calls, row.symbol, &CallContract::symbol);
    return found != header.calls.end() ? *found : none;
}

// The header's first line is "STEM.h: what it is about.", or goes on.
std::string about(const Family& family)
{
    if (!family.about.empty()) {
        return std::string(family.about);
    }
    const HeaderContract& header = contract_of(family);
    std::string text = header.paragraphs.empty() ? "" : header.paragraphs.front();
    text.erase(0, text.find(": ") + 2);
    for (const std::string_view goes_on : {".", " (", ", held by", ", read by", ", edited by"}) {
        text.resize(std::min(text.find(goes_on), text.size()));
    }
    return text;
}

} // namespace vorcfg
