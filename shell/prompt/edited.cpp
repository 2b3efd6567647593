// libedit is loaded when a terminal asks for it: linked, it would be loaded at every call.
#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>

#include <fmt/format.h>
#include <histedit.h>

#include "complete/complete.hpp"
#include "prompt/history.hpp"
#include "prompt/lines.hpp"
#include "text/text.hpp"
#include "words/complaint.hpp"

namespace vorcfg {

namespace {

template <class Function>
bool find(void* library, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(library, name));
    return function != nullptr;
}

// What is used of libedit.
struct Editor {
    decltype(::el_init)* init;
    decltype(::el_end)* end;
    decltype(::el_set)* set;
    decltype(::el_gets)* gets;
    decltype(::el_line)* line;
    decltype(::el_insertstr)* insert;
    decltype(::history_init)* history_init;
    decltype(::history_end)* history_end;
    decltype(::history)* history;

    bool load()
    {
        void* library = nullptr;
        for (const char* const name : {"libedit.so.2", "libedit.so.0", "libedit.so"}) {
            library = library == nullptr ? dlopen(name, RTLD_NOW | RTLD_LOCAL) : library;
        }
        return library != nullptr && find(library, "el_init", init) && find(library, "el_end", end) &&
               find(library, "el_set", set) && find(library, "el_gets", gets) && find(library, "el_line", line) &&
               find(library, "el_insertstr", insert) && find(library, "history_init", history_init) &&
               find(library, "history_end", history_end) && find(library, "history", history);
    }
};

Editor editor;
volatile std::sig_atomic_t abandoned; // the line being edited, by Ctrl-C

char* prompt(EditLine*)
{
    static std::string text = prompt_text;
    return text.data();
}

// What would have to be quoted is not offered: a quoted word is a text, whatever it begins with.
bool stands_plain(const Candidate& candidate)
{
    return !candidate.word.empty() && candidate.word.find_first_of(" \t\"#") == std::string::npos;
}

std::string shared_beginning(const std::vector<Candidate>& candidates)
{
    std::string shared = candidates.front().word;
    for (const Candidate& candidate : candidates) {
        const auto [end, other] = std::ranges::mismatch(shared, candidate.word);
        shared.erase(end, shared.end());
    }
    return shared;
}

unsigned char complete(EditLine* line, int)
{
    const LineInfo* const typed = editor.line(line);
    const std::string_view text(typed->buffer, static_cast<std::size_t>(typed->cursor - typed->buffer));
    std::vector<Word> words;
    try {
        words = words_of(text);
    } catch (const Complaint&) {
        return CC_ERROR;
    }
    if (text.empty() || text.back() == ' ' || text.back() == '\t') {
        words.emplace_back();
    }
    if (words.empty() || words.back().quoted) {
        return CC_ERROR;
    }
    const std::vector<Candidate> all = candidates(words);
    std::vector<Candidate> plain;
    std::ranges::copy_if(all, std::back_inserter(plain), stands_plain);
    const std::string shared = plain.empty() ? "" : shared_beginning(plain);
    const bool only = plain.size() == 1;
    const std::string more =
        shared.substr(std::min(words.back().text.size(), shared.size())) + (only && is_whole(shared) ? " " : "");
    if (!more.empty()) {
        return editor.insert(line, more.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    if (all.empty()) {
        return CC_ERROR;
    }
    std::string list = "\n";
    for (const Candidate& candidate : all) {
        list += fmt::format("  {:<24}  {}\n", candidate.word, candidate.hint);
    }
    vor::print(stdout, list);
    return CC_REDISPLAY;
}

class EditedLines : public Lines {
public:
    EditedLines() : line_(editor.init("vorcfg", stdin, stdout, stderr)), remembered_(editor.history_init())
    {
        HistEvent event;
        editor.history(remembered_, &event, H_SETSIZE, static_cast<int>(History::most));
        editor.history(remembered_, &event, H_SETUNIQUE, 1);
        for (const std::string& line : history_.read()) {
            editor.history(remembered_, &event, H_ENTER, line.c_str());
        }
        editor.set(line_, EL_PROMPT, prompt);
        editor.set(line_, EL_EDITOR, "emacs");
        editor.set(line_, EL_SIGNAL, 1);
        editor.set(line_, EL_HIST, editor.history, remembered_);
        editor.set(line_, EL_ADDFN, "vorcfg-complete", "complete the word", complete);
        editor.set(line_, EL_BIND, "\t", "vorcfg-complete", nullptr);
        editor.set(line_, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    }
    EditedLines(const EditedLines&) = delete;
    EditedLines& operator=(const EditedLines&) = delete;
    ~EditedLines() override
    {
        editor.history_end(remembered_);
        editor.end(line_);
    }

    std::optional<std::string> next() override
    {
        struct sigaction abandons {};
        struct sigaction before {};
        abandons.sa_handler = [](int) { abandoned = 1; };
        abandoned = 0;
        sigaction(SIGINT, &abandons, &before);
        int size = 0;
        const char* const text = editor.gets(line_, &size);
        sigaction(SIGINT, &before, nullptr);
        if (text == nullptr || size <= 0) {
            vor::print(stdout, "\n");
            return abandoned != 0 ? std::optional<std::string>("") : std::nullopt;
        }
        std::string line(text, static_cast<std::size_t>(size));
        line.erase(std::min(line.find_first_of("\r\n"), line.size()));
        return line;
    }

    void keep(const std::string& line) override
    {
        if (line != last_) {
            HistEvent event;
            editor.history(remembered_, &event, H_ENTER, line.c_str());
            history_.add(line);
            last_ = line;
        }
    }

private:
    History history_;
    EditLine* const line_;
    ::History* const remembered_;
    std::string last_;
};

} // namespace

std::unique_ptr<Lines> edited_lines()
{
    if (!editor.load()) {
        return nullptr;
    }
    std::setlocale(LC_CTYPE, "");
    return std::make_unique<EditedLines>();
}

} // namespace vorcfg
