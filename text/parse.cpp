#include "text/parse.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

namespace vor {

namespace {

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

std::int64_t Integer::bounded() const
{
    const auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (negative && magnitude > most) {
        return std::numeric_limits<std::int64_t>::min();
    }
    const auto number = static_cast<std::int64_t>(std::min(magnitude, most));
    return negative ? -number : number;
}

std::optional<Integer> integer_in(std::string_view text)
{
    Integer integer{.negative = text.starts_with('-')};
    text.remove_prefix(integer.negative ? 1 : 0);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    const char* const whole = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), whole, integer.magnitude, hexadecimal ? 16 : 10);
    if (text.empty() || end != whole || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (error != std::errc()) {
        integer.magnitude = UINT64_MAX;
        integer.exact = false;
    }
    return integer;
}

std::optional<std::chrono::milliseconds> time_in(std::string_view text, Bare bare)
{
    struct Unit {
        std::string_view name;
        std::uint32_t milliseconds;
    };
    constexpr std::uint32_t longest = 24 * 3600 * 1000;
    constexpr Unit units[] = {{"ms", 1}, {"min", 60'000}, {"m", 60'000}, {"h", 3'600'000}, {"s", 1000}, {"", 1000}};
    const auto unit = std::ranges::find_if(units, [text](const Unit& each) { return text.ends_with(each.name); });
    if (unit->name.empty() && bare == Bare::refused) {
        return std::nullopt;
    }
    const auto number = number_in<std::uint32_t>(text.substr(0, text.size() - unit->name.size()));
    if (!number || *number > longest / unit->milliseconds) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(*number * unit->milliseconds);
}

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

std::vector<std::string_view> lines_in(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

namespace {

// Reads the words of one line, from left to right.
class Splitter {
public:
    Splitter(std::string_view line, const WordRules& rules) : line_(without_mark(line)), rules_(rules) {}

    std::vector<Word> words()
    {
        std::vector<Word> words;
        while (at_ < line_.size() && line_[at_] != '#') {
            if (is_blank(line_[at_])) {
                at_++;
                continue;
            }
            Word word{.column = at_ + 1};
            if (line_[at_] == '"') {
                read_quoted(word);
            } else if (ends_word()) {
                word.text = line_[at_++];
            } else {
                read_plain(word);
            }
            word.end = at_ + 1;
            words.push_back(std::move(word));
        }
        return words;
    }

private:
    bool ends_word() const { return is_blank(line_[at_]) || rules_.ends.find(line_[at_]) != std::string_view::npos; }

    void read_quoted(Word& word)
    {
        const std::size_t opened = at_++;
        word.quoted = true;
        while (at_ < line_.size() && line_[at_] != '"') {
            if (line_[at_] == '\\') {
                at_++;
                if (at_ == line_.size() || (line_[at_] != '"' && line_[at_] != '\\')) {
                    throw WordError("expected a double quote or a backslash after the backslash", at_);
                }
                word.text += line_[at_++];
            } else {
                read_one(word);
            }
        }
        if (at_ == line_.size()) {
            throw WordError("this double quote is not closed", opened + 1);
        }
        at_++;
        if (at_ < line_.size() && !ends_word()) {
            throw WordError("expected a space after the closing double quote", at_ + 1);
        }
    }

    void read_plain(Word& word)
    {
        word.named = named_length(line_.substr(at_));
        if (word.named != 0 && line_.substr(at_ + word.named + 1).starts_with('"')) {
            word.text = line_.substr(at_, word.named + 1);
            at_ += word.named + 1;
            read_quoted(word);
            return;
        }
        while (at_ < line_.size() && !ends_word()) {
            if (line_[at_] == '"') {
                throw WordError("unexpected double quote in a word", at_ + 1);
            }
            read_one(word);
        }
    }

    // A character, or an expansion.
    void read_one(Word& word)
    {
        const std::size_t expanded = rules_.expand ? rules_.expand(line_.substr(at_), at_ + 1, word) : 0;
        if (expanded == 0 && line_[at_] == '\0') {
            throw WordError("unexpected zero byte", at_ + 1);
        }
        if (expanded == 0) {
            word.text += line_[at_];
        }
        at_ += std::max<std::size_t>(expanded, 1);
    }

    const std::string_view line_;
    const WordRules& rules_;
    std::size_t at_ = 0;
};

} // namespace

std::vector<Word> words_in(std::string_view line, const WordRules& rules)
{
    return Splitter(line, rules).words();
}

std::string typed(std::string_view word)
{
    const bool plain = !word.empty() && word.find_first_of(" \t\r\"#\\") == std::string_view::npos;
    if (plain) {
        return std::string(word);
    }
    std::string text = "\"";
    for (const char character : word) {
        text += character == '"' || character == '\\' ? "\\" : "";
        text += character;
    }
    return text + '"';
}

} // namespace vor
