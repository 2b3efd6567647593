// The manual pages as text, for a gateway that has neither man nor mandoc: the part of mdoc that they use.
#include <algorithm>
#include <unistd.h>
#include <utility>

#include "help/help.hpp"
#include "text/parse.hpp"
#include "text/screen.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

namespace {

std::string unescaped(std::string_view text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size(); at++) {
        if (text[at] == '\\' && at + 1 < text.size()) {
            at++;
            out += text[at] == 'e' ? "\\" : text[at] == '&' ? "" : std::string(1, text[at]);
        } else {
            out += text[at];
        }
    }
    return out;
}

// The words of a request, as they are written.
std::vector<std::string> request_words(std::string_view line)
{
    std::vector<std::string> words;
    while (line.find_first_not_of(' ') != std::string_view::npos) {
        line.remove_prefix(line.find_first_not_of(' '));
        const bool quoted = line.front() == '"';
        std::string word;
        std::size_t at = quoted ? 1 : 0;
        for (; at < line.size() && line[at] != (quoted ? '"' : ' '); at++) {
            word += line[at];
            if (quoted && line.substr(at + 1, 2) == "\"\"") { // stands for one
                word += '"';
                at += 2;
            }
        }
        line.remove_prefix(std::min(at + 1, line.size()));
        words.push_back(std::move(word));
    }
    return words;
}

class PageText {
public:
    std::string of(std::string_view page)
    {
        for (const std::string_view line : vor::lines_in(page)) {
            if (line.starts_with('.')) {
                request(request_words(line.substr(1)));
            } else if (literal_) {
                text_ += std::string(indent_ + 4, ' ') + unescaped(line) + '\n';
            } else {
                append(unescaped(line));
            }
        }
        flush();
        return text_;
    }

private:
    void append(std::string_view more, bool spaced = true)
    {
        paragraph_ += paragraph_.empty() || !spaced || joined_ ? "" : " ";
        paragraph_ += more;
        joined_ = false;
    }

    void flush()
    {
        for (const std::string& line : vor::wrapped(paragraph_, help_width(STDOUT_FILENO) - indent_)) {
            text_ += line.empty() ? "" : std::string(indent_, ' ') + line + '\n';
        }
        paragraph_.clear();
    }

    // On a line of its own, further to the left.
    void headed(std::span<const std::string> words, std::size_t indent)
    {
        std::swap(indent_, indent);
        in_line(words);
        flush();
        std::swap(indent_, indent);
    }

    void request(std::span<const std::string> words)
    {
        const std::string name = words.empty() ? "" : words.front();
        const auto rest = words.subspan(std::min<std::size_t>(words.size(), 1));
        const bool ends_paragraph = name == "Sh" || name == "Ss" || name == "Pp" || name == "Bl" || name == "El" ||
                                    name == "It" || name == "Bd" || name == "Ed" || name == "Dl" ||
                                    (name == "Nm" && in_synopsis_);
        if (ends_paragraph) {
            flush();
        }
        if (name == "Sh" || name == "Ss") {
            text_ += text_.empty() ? "" : "\n";
            in_synopsis_ = !rest.empty() && rest.front() == "SYNOPSIS";
            headed(rest, name == "Sh" ? 0 : 2);
        } else if (name == "Pp" || name == "Bd") {
            text_ += '\n';
            literal_ = name == "Bd";
        } else if (name == "Ed") {
            literal_ = false;
        } else if (name == "Bl" || name == "El") {
            indent_ = name == "Bl" ? indent_ + 6 : indent_ - 6;
        } else if (name == "It") {
            headed(rest, indent_ - 6);
        } else if (name == "Dl") {
            headed(rest, indent_ + 4);
        } else if (name == "Nd") {
            append("-");
            in_line(rest);
        } else if (name == "Nm" && rest.empty()) {
            append(name_);
        } else if (name != "Dd" && name != "Dt" && name != "Os") {
            name_ = name == "Nm" && name_.empty() ? rest.front() : name_;
            in_line(words);
        }
    }

    // Texts, and the macros that may be among them.
    void in_line(std::span<const std::string> words)
    {
        std::string closes;
        std::string dashes;
        for (std::size_t i = 0; i < words.size(); i++) {
            const std::string& word = words[i];
            if (word == "Fl") {
                dashes += '-';
            } else if (const std::string_view pair = pair_of(word); !pair.empty()) {
                append(pair.substr(0, 1));
                joined_ = true;
                closes.insert(0, pair.substr(1));
            } else if (word == "Oc") {
                append("]", false);
            } else if (word == "Ns") {
                joined_ = true;
            } else if (word == "Xr" && i + 2 < words.size()) {
                append(words[i + 1] + '(' + words[i + 2] + ')');
                i += 2;
            } else if (!is_font(word)) {
                const bool is_mark = word.size() == 1 && std::string_view(".,;:)").find(word[0]) != std::string::npos;
                if (is_mark && i + 1 == words.size()) {
                    end_words(dashes, closes);
                }
                append(std::exchange(dashes, "") + unescaped(word), !is_mark);
                joined_ = word == "(";
            }
        }
        end_words(dashes, closes);
    }

    void end_words(std::string& dashes, std::string& closes)
    {
        if (!dashes.empty()) {
            append(std::exchange(dashes, ""));
        }
        append(std::exchange(closes, ""), false);
    }

    // What encloses the words after it; Oo has an end of its own.
    static std::string_view pair_of(std::string_view word)
    {
        return word == "Op" ? "[]" : word == "Pq" ? "()" : word == "Dq" ? "\"\"" : word == "Oo" ? "[" : "";
    }

    static bool is_font(std::string_view word)
    {
        static constexpr std::string_view fonts[] = {"Ar", "Cm", "Ev", "Ic", "Nm", "Pa", "Ql", "Sy"};
        return std::ranges::find(fonts, word) != std::end(fonts);
    }

    std::string text_;
    std::string paragraph_;
    std::string name_;
    std::size_t indent_ = 4;
    bool literal_ = false;
    bool joined_ = false; // no blank before what follows
    bool in_synopsis_ = false;
};

} // namespace

std::string text_of_page(std::string_view page)
{
    return PageText().of(page);
}

} // namespace vorcfg::help
