#include <cstdio>

#include "batch.hpp"
#include "commands.hpp"
#include "complaint.hpp"
#include "docs.hpp"
#include "help.hpp"
#include "observe.hpp"
#include "options.hpp"
#include "report.hpp"
#include "run.hpp"

#ifndef VORCFG_VERSION
#define VORCFG_VERSION "0"
#endif

using namespace vorcfg;

static void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

static int finished(int code)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("vorcfg: standard output");
        return exit_no_output;
    }
    return code;
}

static int wanted_help(const Options& options)
{
    if (options.words.empty()) {
        print(help());
    } else if (options.words.size() == 1) {
        print(help(wanted_family(options.words[0].text)));
    } else {
        print(help(wanted_row(options.words[0].text, options.words[1].text)));
    }
    return exit_ok;
}

static int dispatch(const Options& options)
{
    const auto& words = options.words;
    if (options.version) {
        print("vorcfg " VORCFG_VERSION "\n");
        return exit_ok;
    }
    if (options.help &&
        (words.empty() || (words[0].text != "batch" && words[0].text != "list" && words[0].text != "docs"))) {
        return wanted_help(options);
    }
    if (words.empty() || options.help || words[0].text == "help") {
        print(help());
        return words.empty() ? exit_usage : exit_ok;
    }
    if (words[0].text == "list" && words.size() == 1) {
        print(list(options.json));
        return exit_ok;
    }
    if (words[0].text == "batch") {
        if (words.size() != 2) {
            throw Complaint("wanted: vorcfg batch FILE");
        }
        return run_batch(words[1].text, options);
    }
    if (words[0].text == "docs") {
        if (words.size() != 3) {
            throw Complaint("wanted: vorcfg docs FAMILY INCLUDE_DIR");
        }
        print(page(words[1].text, words[2].text));
        return exit_ok;
    }
    if (words.size() == 1) {
        std::fputs(help(wanted_family(words[0].text)).c_str(), stderr);
        return exit_usage;
    }
    return run_call(options);
}

int main(int argc, char** argv)
{
    try {
        return finished(dispatch(options_of({argv + 1, argv + argc})));
    } catch (const Complaint& complaint) {
        std::fflush(stdout);
        std::fprintf(stderr, "vorcfg: %s\n", printable(complaint.what()).c_str());
        return complaint.exit;
    }
}
