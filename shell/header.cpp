#include "header.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "complaint.hpp"

namespace vorcfg {

static std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\n*");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

static void join(std::string& text, std::string_view more)
{
    if (!text.empty() && !more.empty()) {
        text += ' ';
    }
    text += more;
}

// The lines of a comment without their stars.
static std::vector<std::string> lines_of_comment(std::string_view comment)
{
    std::vector<std::string> lines;
    std::istringstream stream{std::string(comment)};
    for (std::string line; std::getline(stream, line);) {
        lines.emplace_back(trimmed(line));
    }
    return lines;
}

// Runs of lines, an empty line or the end between them. A sentence that a
// line of its own begins stays in its paragraph.
static std::vector<std::string> paragraphs_of(std::string_view comment)
{
    std::vector<std::string> paragraphs;
    std::string current;
    for (const std::string& line : lines_of_comment(comment)) {
        if (line.empty()) {
            if (!current.empty()) {
                paragraphs.push_back(std::move(current));
            }
            current.clear();
        }
        join(current, line);
    }
    if (!current.empty()) {
        paragraphs.push_back(std::move(current));
    }
    return paragraphs;
}

static void read_tag(DocumentedCall& call, std::string_view text)
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

static DocumentedCall read_call(std::string_view comment, std::string_view declaration)
{
    DocumentedCall call;
    join(call.declaration, "");
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

std::string DocumentedCall::summary() const
{
    const std::string& first = paragraphs.empty() ? symbol : paragraphs.front();
    const std::size_t end = first.find(". ");
    return end == std::string::npos ? first : first.substr(0, end + 1);
}

std::string_view DocumentedCall::about(std::string_view argument) const
{
    for (const auto& [name, text] : arguments) {
        if (name == argument) {
            return text;
        }
    }
    return {};
}

const DocumentedCall* Header::call(std::string_view symbol) const
{
    for (const DocumentedCall& each : calls) {
        if (each.symbol == symbol) {
            return &each;
        }
    }
    return nullptr;
}

Header read_header(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::ostringstream content;
    if (!file || !(content << file.rdbuf())) {
        throw Complaint("cannot read " + path.string() + ": " + std::strerror(errno), exit_no_input);
    }
    const std::string owner = content.str();
    std::string_view text = owner;
    Header header;
    header.paragraphs = paragraphs_of(text.substr(2, text.find("*/") - 2));
    for (std::size_t at = text.find("/**"); at != std::string_view::npos; at = text.find("/**")) {
        text.remove_prefix(at + 3);
        const std::size_t end = text.find("*/");
        const std::size_t semicolon = text.find(';', end);
        if (semicolon == std::string_view::npos) {
            break;
        }
        header.calls.push_back(read_call(text.substr(0, end), text.substr(end + 2, semicolon - end - 2)));
        text.remove_prefix(semicolon);
    }
    return header;
}

} // namespace vorcfg
