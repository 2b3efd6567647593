#include <algorithm>
#include <cstdio>

#include <sys/prctl.h>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "call/check.hpp"
#include "call/run.hpp"
#include "help/complete.hpp"
#include "help/help.hpp"
#include "help/manual.hpp"
#include "help/page.hpp"
#include "prompt/prompt.hpp"
#include "rows/families.hpp"
#include "site/commands.hpp"

using namespace vorcfg;

namespace {

int print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return exit_ok;
}

int finished(int code)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("vorcfg: standard output");
        return exit_no_output;
    }
    return code;
}

int print_help(std::span<const Word> words)
{
    if (words.empty()) {
        return print(help());
    }
    if (const std::string text = help_on_command(words[0].text); !text.empty()) {
        return print(text);
    }
    return print(words.size() == 1 ? help(wanted_family(words[0].text))
                                   : help(wanted_row(words[0].text, words[1].text)));
}

// A command with at most one word behind it.
const std::string* word_behind(std::span<const Word> words, const char* wanted)
{
    if (words.size() > 2) {
        throw Complaint{fmt::format("wanted: vorcfg {}", wanted)};
    }
    return words.size() == 2 ? &words[1].text : nullptr;
}

const std::string& wanted_word(std::span<const Word> words, const char* wanted)
{
    const std::string* const word = word_behind(words, wanted);
    return word != nullptr ? *word : throw Complaint{fmt::format("wanted: vorcfg {}", wanted)};
}

// Commands over one file.
struct FileCommand {
    const char* name;
    const char* usage;
    int (*run)(const std::string& file, const Options& options);
};

constexpr FileCommand file_commands[] = {
    {"batch", "batch FILE", run_batch},
    {"check", "check FILE", run_check},
    {"plan", "plan FILE [--journal JOURNAL]", run_plan},
    {"apply", "apply FILE [--journal JOURNAL]", run_apply},
    {"confirm", "confirm JOURNAL", run_confirm},
    {"revert", "revert JOURNAL", run_revert},
    {"report", "report JOURNAL", run_report},
};

int run(const Options& options)
{
    const std::span<const Word> words = options.words;
    const std::string command = words.empty() ? "" : words[0].text;
    if (options.version) {
        return print("vorcfg " VORCFG_VERSION "\n");
    }
    if (options.help) {
        return print_help(words);
    }
    if (!words.empty()) {
        const bool known = std::ranges::find(commands(), command, &Command::name) != commands().end();
        check_given(options, known ? command : "a call");
    }
    if (command == "help") {
        return print_help(words.subspan(1));
    }
    if (command == "list") {
        const std::string* const family = word_behind(words, "list [FAMILY]");
        return print(list(family != nullptr ? &wanted_family(*family) : nullptr, options.json));
    }
    if (command == "search") {
        const std::string& word = wanted_word(words, "search WORD");
        const std::string found = search(word, options.json);
        return found.empty() ? throw Complaint{fmt::format("nothing is known of \"{}\"", word)} : print(found);
    }
    for (const FileCommand& each : file_commands) {
        if (command == each.name) {
            return each.run(wanted_word(words, each.usage), options);
        }
    }
    if (command == "docs") {
        if (!options.yes) {
            throw Complaint{"docs makes the family's examples on the gateway that it finds; --yes says that it may"};
        }
        return print(page(wanted_word(words, "docs FAMILY")));
    }
    if (command == "completion") {
        return print(completion_script(wanted_word(words, "completion SHELL")));
    }
    if (command == "manual") {
        const std::string* const page = word_behind(words, "manual [PAGE]");
        return print(page != nullptr ? manual(*page, !options.in_session)
                                     : fmt::format("{}\n", fmt::join(manual_pages(), "\n")));
    }
    if (command == "complete") { // asked by the completion scripts
        return print(completions(words.subspan(1)));
    }
    if (words.empty()) {
        return run_prompt(options, run);
    }
    if (words.size() < 2) {
        std::fputs(help(wanted_family(command)).c_str(), stderr);
        return exit_usage;
    }
    return run_call(options);
}

} // namespace

int main(int argc, char** argv)
{
    prctl(PR_SET_DUMPABLE, 0); // no core, and no other process, gets to see a secret
    bool json = false;
    try {
        const Options options = options_of({argv + 1, argv + argc});
        json = options.json;
        return finished(run(options));
    } catch (const Complaint& complaint) {
        return complain(complaint, json);
    }
}
