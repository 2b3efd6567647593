#include "batch.hpp"

#include "commands.hpp"
#include "complaint.hpp"

namespace vorcfg {

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

static std::size_t read_quoted(std::string_view line, std::size_t at, std::string& text)
{
    const std::size_t opened = at++;
    for (; at < line.size() && line[at] != '"'; at++) {
        if (line[at] == '\\') {
            at++;
            if (at == line.size() || (line[at] != '"' && line[at] != '\\')) {
                throw Complaint("a backslash stands before a double quote or a backslash only", exit_usage, at);
            }
        }
        text += line[at];
    }
    if (at == line.size()) {
        throw Complaint("the text that begins here is not closed", exit_usage, opened + 1);
    }
    return at + 1;
}

std::vector<Token> tokens_of(std::string_view line)
{
    std::vector<Token> tokens;
    std::size_t at = 0;
    while (at < line.size()) {
        if (is_blank(line[at])) {
            at++;
            continue;
        }
        if (line[at] == '#') {
            break;
        }
        Token token{{}, line[at] == '"', at + 1};
        if (token.quoted) {
            at = read_quoted(line, at, token.text);
            if (at < line.size() && !is_blank(line[at])) {
                throw Complaint("a blank is missing behind the text", exit_usage, at + 1);
            }
        } else {
            for (; at < line.size() && !is_blank(line[at]); at++) {
                if (line[at] == '"' || line[at] == '\0') {
                    throw Complaint(line[at] == '"' ? "a double quote within a word" : "a zero byte", exit_usage,
                                    at + 1);
                }
                token.text += line[at];
            }
        }
        tokens.push_back(std::move(token));
    }
    return tokens;
}

// The column of the token complained about; behind the last for one that is
// missing.
static std::size_t column_of(const Complaint& complaint, const std::vector<Token>& tokens)
{
    const std::size_t index = complaint.token + 2; // no_token and call_token wrap around
    return index < tokens.size() ? tokens[index].column : tokens.back().column + tokens.back().text.size();
}

static Planned plan_line(const std::vector<Token>& tokens, const SecretSources& sources)
{
    if (tokens.size() == 1) {
        wanted_family(tokens[0].text);
        throw Complaint("the call's name is missing");
    }
    const Row& row = wanted_row(tokens[0].text, tokens[1].text);
    if (row.call == nullptr) {
        throw Complaint("cannot be called on its own; what uses it: " + std::string(row.covered_by), exit_usage,
                        Complaint::call_token);
    }
    return plan(row, std::span(tokens).subspan(2), sources);
}

std::vector<Planned> plan_batch(std::string_view text, const std::string& name, const SecretSources& sources)
{
    static constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
    text.remove_prefix(text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0);
    std::vector<Planned> calls;
    std::string faults;
    ExitCode exit = exit_usage;
    std::size_t number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::string place = name + ':' + std::to_string(++number);
        std::vector<Token> tokens;
        try {
            tokens = tokens_of(line);
            if (!tokens.empty()) {
                calls.push_back(plan_line(tokens, sources));
                calls.back().place = place;
            }
        } catch (const Complaint& complaint) {
            const std::size_t column = tokens.empty() ? complaint.token : column_of(complaint, tokens);
            faults += (faults.empty() ? "" : "\n") + place + ':' + std::to_string(column) + ": " + complaint.what();
            exit = complaint.exit;
        }
    }
    if (!faults.empty()) {
        throw Complaint(faults, exit, 0);
    }
    return calls;
}

std::string read_batch(const std::string& path)
{
    return path == "-" ? content_of(stdin, "", "standard input") : content_of(std::fopen(path.c_str(), "re"), "", path);
}

} // namespace vorcfg
