// Runs what the documents show and compares what they promise.
//
// A fenced block marked `console` holds commands after "$ " and, under each,
// the whole of what it prints. A block marked `gateway` holds the next lines of
// the vorsim that runs while its document is read.
#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "processes.hpp"

namespace {

namespace fs = std::filesystem;

struct Step {
    std::size_t line;
    bool gateway; // lines of vorsim, else a command and its output
    std::string command;
    std::string expected;
};

std::vector<Step> steps_of(const fs::path& document)
{
    std::ifstream file(document);
    std::vector<Step> steps;
    std::string text;
    std::string block;
    for (std::size_t number = 1; std::getline(file, text); ++number) {
        if (text.rfind("```", 0) == 0) {
            block = block.empty() ? text.substr(3) : "";
            if (block == "gateway") {
                steps.push_back({number, true, "the gateway's lines", {}});
            }
            continue;
        }
        if (block == "console" && text.rfind("$ ", 0) == 0) {
            steps.push_back({number, false, text.substr(2), {}});
        } else if ((block == "console" || block == "gateway") && !steps.empty()) {
            steps.back().expected += text + "\n";
        }
    }
    return steps;
}

std::vector<fs::path> documents()
{
    const fs::path root = VOR_SOURCE_DIR;
    std::vector<fs::path> found{root / "README.md"};
    for (const fs::path& folder : {root / "docs", root / "docs/calls", root / "tests/transcripts"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".md" && !steps_of(entry.path()).empty()) {
                found.push_back(entry.path());
            }
        }
    }
    std::sort(found.begin() + 1, found.end());
    return found;
}

class Transcript : public testing::TestWithParam<fs::path> {};

TEST_P(Transcript, matches_output)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    for (const Step& step : steps_of(GetParam())) {
        const std::string place = GetParam().string() + ":" + std::to_string(step.line) + ": " + step.command;
        if (step.gateway) {
            std::istringstream lines(step.expected);
            for (std::string line; std::getline(lines, line);) {
                EXPECT_EQ(gateway.next_line(), line) << place;
            }
        } else {
            EXPECT_EQ(workplace.run(step.command).text, step.expected) << place;
        }
    }
    EXPECT_EQ(gateway.stop(SIGTERM), 0) << "vorsim complained in strict mode";
}

INSTANTIATE_TEST_SUITE_P(documents, Transcript, testing::ValuesIn(documents()), [](const auto& each) {
    std::string name = fs::relative(each.param, VOR_SOURCE_DIR).replace_extension().string();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

} // namespace
