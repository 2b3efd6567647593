// Documents show what the tools print: every command is run again and the document compared with the result.
//
// In a fenced block marked `console`, "$ " begins a command and the lines below are all that it prints. A block marked
// `gateway` holds the next lines of the vorsim that runs while its document is read, one marked `file NAME` a file for
// the commands. scripts/regenerate sets VOR_REGENERATE: then the result replaces the document.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "processes.hpp"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> documents()
{
    const fs::path root = VOR_SOURCE_DIR;
    std::vector<fs::path> found{root / "README.md"};
    for (const fs::path& folder : {root / "docs", root / "docs/calls", root / "tests/transcripts"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".md" &&
                processes::contents(entry.path()).find("\n```console\n") != std::string::npos) {
                found.push_back(entry.path());
            }
        }
    }
    std::sort(found.begin() + 1, found.end());
    return found;
}

std::string run_again(const fs::path& document, const processes::Workplace& workplace, processes::Gateway& gateway)
{
    std::ifstream file(document);
    std::string result;
    std::string block;
    for (std::string line; std::getline(file, line);) {
        const bool fence = line.starts_with("```");
        const bool command = block == "console" && line.starts_with("$ ");
        if (block == "gateway" && !fence) {
            result += gateway.next_line() + '\n';
        } else if (block != "console" || fence || command) {
            result += line + '\n';
        }
        if (fence) {
            block = block.empty() ? line.substr(3) : "";
        } else if (command) {
            result += workplace.run(line.substr(2)).text;
        } else if (block.starts_with("file ")) {
            std::ofstream(workplace.path() / block.substr(5), std::ios::app) << line << '\n';
        }
    }
    return result;
}

class Transcript : public testing::TestWithParam<fs::path> {};

TEST_P(Transcript, matches_output)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    const std::string result = run_again(GetParam(), workplace, gateway);
    EXPECT_EQ(gateway.stop(SIGTERM), 0) << "vorsim complained in strict mode";
    if (std::getenv("VOR_REGENERATE") != nullptr) {
        std::ofstream(GetParam()) << result;
    } else {
        std::ofstream(workplace.path() / "result") << result;
        EXPECT_EQ(workplace.run("diff -u " + GetParam().string() + " result").text, "") << "run scripts/regenerate";
    }
}

INSTANTIATE_TEST_SUITE_P(documents, Transcript, testing::ValuesIn(documents()), [](const auto& each) {
    std::string name = fs::relative(each.param, VOR_SOURCE_DIR).replace_extension().string();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

} // namespace
