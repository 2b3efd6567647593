#include <algorithm>

#include <fmt/core.h>

#include "input/complaint.hpp"
#include "input/variables.hpp"
#include "input/words.hpp"
#include "text/nearest.hpp"

namespace vorcfg {

namespace {

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

[[noreturn]] void complain(std::string text, std::size_t at)
{
    Complaint complaint{std::move(text)};
    complaint.place.column = at + 1;
    throw complaint;
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Reads the words of one line, from left to right.
class Splitter {
public:
    Splitter(std::string_view line, Variables* variables)
        : line_(line.substr(line.starts_with(byte_order_mark) ? byte_order_mark.size() : 0)), variables_(variables)
    {
    }

    std::vector<Word> words()
    {
        std::vector<Word> words;
        while (at_ < line_.size() && line_[at_] != '#') {
            if (is_blank(line_[at_])) {
                at_++;
                continue;
            }
            Word word{{}, line_[at_] == '"', at_ + 1};
            if (word.quoted) {
                read_quoted(word);
            } else {
                read_plain(word);
            }
            word.index = words.size();
            words.push_back(std::move(word));
        }
        return words;
    }

private:
    void read_quoted(Word& word)
    {
        const std::size_t opened = at_++;
        while (at_ < line_.size() && line_[at_] != '"') {
            if (line_[at_] == '\\') {
                at_++;
                if (at_ == line_.size() || (line_[at_] != '"' && line_[at_] != '\\')) {
                    complain("a backslash stands before a double quote or a backslash only", at_ - 1);
                }
                word.text += line_[at_++];
            } else {
                read_one(word);
            }
        }
        if (at_ == line_.size()) {
            complain("the text that begins here is not closed", opened);
        }
        at_++;
        if (at_ < line_.size() && !is_blank(line_[at_])) {
            complain("a blank is missing behind the text", at_);
        }
    }

    void read_plain(Word& word)
    {
        word.named = named_length(line_.substr(at_));
        if (word.named != 0 && line_.substr(at_ + word.named + 1).starts_with('"')) {
            word.text = line_.substr(at_, word.named + 1);
            word.quoted = true;
            at_ += word.named + 1;
            return read_quoted(word);
        }
        while (at_ < line_.size() && !is_blank(line_[at_])) {
            if (line_[at_] == '"') {
                complain("a double quote within a word", at_);
            }
            read_one(word);
        }
    }

    // A character, or what stands for a variable.
    void read_one(Word& word)
    {
        const std::string_view left = line_.substr(at_);
        if (variables_ != nullptr && left.starts_with("$${")) {
            word.text += "${";
            at_ += 3;
        } else if (variables_ != nullptr && left.starts_with("${")) {
            read_variable(word);
        } else {
            if (line_[at_] == '\0') {
                complain("a zero byte", at_);
            }
            word.text += line_[at_++];
        }
    }

    void read_variable(Word& word)
    {
        const std::size_t length = name_length(line_.substr(at_ + 2));
        if (length == 0 || !line_.substr(at_ + 2 + length).starts_with('}')) {
            complain("${ begins a variable, ${name}; $${ stands for the two characters", at_);
        }
        const std::string_view name = line_.substr(at_ + 2, length);
        const Variable* const variable = variables_->use(name);
        if (variable == nullptr) {
            complain(fmt::format("no variable {}{}", name,
                                 vor::suggestion(vor::nearest(name, variables_->names()),
                                                 fmt::format("give it with --set {}=VALUE or --vars FILE", name))),
                     at_);
        }
        word.text += variable->value;
        word.readable = word.readable || variable->on_command_line;
        at_ += length + 3;
    }

    const std::string_view line_;
    Variables* const variables_;
    std::size_t at_ = 0;
};

} // namespace

std::size_t name_length(std::string_view text)
{
    const auto end = std::ranges::find_if_not(text, [](char c) { return is_letter(c) || is_digit(c); });
    return text.empty() || is_digit(text.front()) ? 0 : static_cast<std::size_t>(end - text.begin());
}

std::size_t named_length(std::string_view text)
{
    const std::size_t length = name_length(text);
    return length < text.size() && text[length] == '=' ? length : 0;
}

std::vector<Word> words_of(std::string_view line, Variables* variables)
{
    return Splitter(line, variables).words();
}

} // namespace vorcfg
