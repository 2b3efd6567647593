#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <unistd.h>

#include <fmt/core.h>
#include <histedit.h>

#include "help/help.hpp"
#include "input/input_error.hpp"
#include "input/terminal.hpp"
#include "prompt/history.hpp"
#include "prompt/prompt.hpp"
#include "text/text.hpp"

namespace vorcfg::prompt {

namespace {

input::Waiting* waiting = nullptr; // while a line is edited

// One key, of however many bytes; an invalid byte is taken as a character.
int next_key(EditLine*, wchar_t* key)
{
    std::mbstate_t state{};
    for (;;) {
        char byte = 0;
        const ssize_t got = waiting->wait() ? read(STDIN_FILENO, &byte, 1) : -1;
        if (got != 1) {
            return static_cast<int>(got);
        }
        const std::size_t length = std::mbrtowc(key, &byte, 1, &state);
        if (length == static_cast<std::size_t>(-1)) {
            *key = static_cast<unsigned char>(byte);
            return 1;
        }
        if (length != static_cast<std::size_t>(-2)) {
            return 1;
        }
    }
}

char* prompt(EditLine*)
{
    static std::string text = prompt_text;
    return text.data();
}

// A word that needs quotes is not offered: quoted, it would be plain text.
bool needs_no_quotes(const help::Candidate& candidate)
{
    return !candidate.word.empty() && candidate.word.find_first_of(" \t\"#") == std::string::npos;
}

std::string shared_beginning(const std::vector<help::Candidate>& candidates)
{
    std::string shared = candidates.front().word;
    for (const help::Candidate& candidate : candidates) {
        const auto [end, other] = std::ranges::mismatch(shared, candidate.word);
        shared.erase(end, shared.end());
    }
    return shared;
}

unsigned char complete(EditLine* line, int)
{
    const LineInfo* const typed = el_line(line);
    const std::string_view text(typed->buffer, static_cast<std::size_t>(typed->cursor - typed->buffer));
    std::vector<input::Word> words;
    try {
        words = input::words_of(text);
    } catch (const input::InputError&) {
        return CC_ERROR;
    }
    if (text.empty() || text.back() == ' ' || text.back() == '\t') {
        words.emplace_back();
    }
    if (words.empty() || words.back().quoted) {
        return CC_ERROR;
    }
    const std::vector<help::Candidate> all = help::candidates(words);
    std::vector<help::Candidate> plain;
    std::ranges::copy_if(all, std::back_inserter(plain), needs_no_quotes);
    const std::string shared = plain.empty() ? "" : shared_beginning(plain);
    const bool only = plain.size() == 1;
    const std::string more =
        shared.substr(std::min(words.back().text.size(), shared.size())) + (only && help::is_whole(shared) ? " " : "");
    if (!more.empty()) {
        return el_insertstr(line, more.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    if (all.empty()) {
        return CC_ERROR;
    }
    std::string list = "\n";
    for (const help::Candidate& candidate : all) {
        list += fmt::format("  {:<24}  {}\n", candidate.word, candidate.hint);
    }
    vor::print(stdout, list);
    return CC_REDISPLAY;
}

class EditedLines : public Lines {
public:
    EditedLines() : line_(only_line()), remembered_(history_init())
    {
        HistEvent event;
        ::history(remembered_, &event, H_SETSIZE, static_cast<int>(LineHistory::most));
        ::history(remembered_, &event, H_SETUNIQUE, 1);
        for (const std::string& line : history_.read()) {
            ::history(remembered_, &event, H_ENTER, line.c_str());
        }
        el_set(line_, EL_PROMPT, prompt);
        el_set(line_, EL_EDITOR, "emacs");
        el_set(line_, EL_SIGNAL, 1);
        el_set(line_, EL_GETCFN, next_key);
        // else Ctrl-C would discard the key that a wait has just reported
        el_set(line_, EL_SETTY, "-d", "+noflsh", nullptr);
        el_set(line_, EL_HIST, ::history, remembered_);
        el_set(line_, EL_ADDFN, "vorcfg-complete", "complete the word", complete);
        el_set(line_, EL_BIND, "\t", "vorcfg-complete", nullptr);
        el_set(line_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    }
    EditedLines(const EditedLines&) = delete;
    EditedLines& operator=(const EditedLines&) = delete;
    ~EditedLines() override { history_end(remembered_); }

    std::optional<std::string> next() override
    {
        input::Waiting for_keys;
        waiting = &for_keys;
        el_set(line_, EL_PREP_TERM, 1); // before the prompt is shown: Ctrl-D is a key from then on
        int size = 0;
        const char* const text = el_gets(line_, &size);
        waiting = nullptr;
        if (text == nullptr || size <= 0) {
            vor::print(stdout, "\n");
            return for_keys.was_interrupted() ? std::optional<std::string>("") : std::nullopt;
        }
        std::string line(text, static_cast<std::size_t>(size));
        line.erase(std::min(line.find_first_of("\r\n"), line.size()));
        return line;
    }

    void keep(const std::string& line) override
    {
        if (line != last_) {
            HistEvent event;
            ::history(remembered_, &event, H_ENTER, line.c_str());
            history_.add(line);
            last_ = line;
        }
    }

private:
    // Never freed: libedit leaks the names of the functions added to it.
    static EditLine* only_line()
    {
        static EditLine* const line = el_init("vorcfg", stdin, stdout, stderr);
        return line;
    }

    LineHistory history_;
    EditLine* const line_;
    ::History* const remembered_;
    std::string last_;
};

} // namespace

std::unique_ptr<Lines> edited_lines()
{
    std::setlocale(LC_CTYPE, "");
    return std::make_unique<EditedLines>();
}

} // namespace vorcfg::prompt
