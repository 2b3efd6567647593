#include "words/complaint.hpp"
#include "words/word.hpp"

namespace vorcfg {

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

[[noreturn]] static void complain(const char* text, std::size_t at)
{
    Complaint complaint{text};
    complaint.place.column = at + 1;
    throw complaint;
}

static void check_byte(char c, std::size_t at)
{
    if (c == '\0') {
        complain("a zero byte", at);
    }
}

static std::size_t read_quoted(std::string_view line, std::size_t at, std::string& text)
{
    const std::size_t opened = at++;
    for (; at < line.size() && line[at] != '"'; at++) {
        if (line[at] == '\\') {
            at++;
            if (at == line.size() || (line[at] != '"' && line[at] != '\\')) {
                complain("a backslash stands before a double quote or a backslash only", at - 1);
            }
        }
        check_byte(line[at], at);
        text += line[at];
    }
    if (at == line.size()) {
        complain("the text that begins here is not closed", opened);
    }
    at++;
    if (at < line.size() && !is_blank(line[at])) {
        complain("a blank is missing behind the text", at);
    }
    return at;
}

static std::size_t read_plain(std::string_view line, std::size_t at, std::string& text)
{
    for (; at < line.size() && !is_blank(line[at]); at++) {
        check_byte(line[at], at);
        if (line[at] == '"') {
            complain("a double quote within a word", at);
        }
        text += line[at];
    }
    return at;
}

std::vector<Word> words_of(std::string_view line)
{
    std::vector<Word> words;
    std::size_t at = 0;
    while (at < line.size() && line[at] != '#') {
        if (is_blank(line[at])) {
            at++;
            continue;
        }
        Word word{{}, line[at] == '"', at + 1};
        at = word.quoted ? read_quoted(line, at, word.text) : read_plain(line, at, word.text);
        words.push_back(std::move(word));
    }
    return words;
}

} // namespace vorcfg
