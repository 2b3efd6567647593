// vorcfg's rows against what the library exports and its headers document.
#include <dlfcn.h>
#include <fstream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "batch.hpp"
#include "commands.hpp"
#include "header.hpp"
#include "konfd_query.hpp"
#include "processes.hpp"
#include "report.hpp"
#include "session.hpp"

using namespace vorcfg;

namespace {

namespace fs = std::filesystem;

const fs::path source = VOR_SOURCE_DIR;

std::vector<const Row*> all_rows()
{
    std::vector<const Row*> rows;
    for (const Family& family : families()) {
        for (const Row& row : family.rows()) {
            rows.push_back(&row);
        }
    }
    return rows;
}

std::set<std::string> exported()
{
    std::ifstream map(source / "src/exports.map");
    std::set<std::string> names;
    bool global = false;
    for (std::string word; map >> word;) {
        if (word == "global:" || word == "local:") {
            global = word == "global:";
        } else if (global && word.ends_with(';') && word != "vor_errno;") {
            names.insert(word.substr(0, word.size() - 1));
        }
    }
    return names;
}

TEST(Rows, AreTheExportedAndTheDocumentedCalls)
{
    std::set<std::string> rows;
    std::set<std::string> documented;
    std::set<std::string> names;
    for (const Row* row : all_rows()) {
        EXPECT_TRUE(rows.insert(std::string(row->symbol)).second) << row->symbol << " has two rows";
        EXPECT_TRUE(names.insert(call_name(*row)).second) << call_name(*row);
        EXPECT_NE(nullptr, dlsym(RTLD_DEFAULT, std::string(row->symbol).c_str())) << row->symbol;
    }
    for (const Family& family : families()) {
        for (const DocumentedCall& call :
             read_header(source / "include/device_mgmt" / (std::string(family.header) + ".h")).calls) {
            documented.insert(call.symbol);
        }
    }
    EXPECT_EQ(173U, rows.size());
    EXPECT_EQ(rows, exported());
    EXPECT_EQ(rows, documented);
}

TEST(Rows, SayWhatTheHeadersSay)
{
    for (const Family& family : families()) {
        const Header header = read_header(source / "include/device_mgmt" / (std::string(family.header) + ".h"));
        for (const Row& row : family.rows()) {
            const DocumentedCall* const call = header.call(row.symbol);
            ASSERT_NE(nullptr, call) << row.symbol;
            EXPECT_EQ(call->summary(), row.summary) << row.symbol;
            if (row.call == nullptr) {
                continue;
            }
            std::string names;
            for (const Argument& argument : arguments_of(row)) {
                names += argument.list ? "... " : std::string(argument.name) + ' ';
                const bool never_sent = call->about(argument.name).starts_with("accepted, never sent") ||
                                        call->about(argument.name).find("never sent:") != std::string_view::npos;
                EXPECT_EQ(never_sent, argument.unsent) << row.symbol << ' ' << argument.name;
                const std::string_view about = call->about(argument.list ? "..." : argument.name);
                const bool converted = row.channel == Channel::manager && !never_sent;
                EXPECT_EQ(converted && about.find("dotted quad") != std::string_view::npos, argument.address)
                    << row.symbol << ' ' << argument.name;
                EXPECT_EQ(about.find("decimal text") != std::string_view::npos, argument.bits != 0)
                    << row.symbol << ' ' << argument.name;
            }
            std::string documented;
            for (const auto& [name, text] : call->arguments) {
                documented += name + ' ';
            }
            EXPECT_EQ(documented, names) << row.symbol;
        }
    }
}

Planned example(const Row& row, const std::string& secret)
{
    std::vector<Token> tokens = tokens_of(row.example);
    for (Token& token : tokens) {
        if (token.text == "-") {
            token = {secret, true, 0};
        }
    }
    SecretSources sources;
    sources.literals = true;
    return plan(row, tokens, sources);
}

// Every call runs, nothing reaches the platform, and what is shown of a secret
// is the mask alone.
TEST(Rows, RunDryAndShowNoSecret)
{
    const std::string secret = "gr33n-m0nsoon";
    for (const Row* row : all_rows()) {
        if (row->call == nullptr) {
            continue;
        }
        Planned planned = example(*row, secret);
        const Report report = Session({true, false}, std::nullopt).run(planned);
        const bool silent = row->channel == Channel::none;
        EXPECT_EQ(silent, report.seen.messages.empty()) << row->symbol;
        EXPECT_EQ(exit_ok, exit_of(report.verdict.outcome)) << row->symbol << report.verdict.text;
        const std::string shown = text_of(planned, report) + json_of(planned, report);
        EXPECT_EQ(std::string::npos, shown.find(secret)) << shown;
        const std::string_view marks = row->arguments;
        EXPECT_EQ(marks.find('*') != std::string_view::npos, shown.find(mask) != std::string::npos) << shown;
    }
}

class Page : public testing::TestWithParam<std::string> {};

// What `vorcfg docs` prints now is what stands in docs/calls.
TEST_P(Page, IsWhatTheRowsAndTheHeaderSay)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    std::ifstream file(source / "docs/calls" / (GetParam() + ".md"));
    std::ostringstream stands;
    stands << file.rdbuf();
    const auto output = workplace.run("vorcfg docs " + GetParam() + " '" VOR_SOURCE_DIR "/include'");
    EXPECT_EQ(stands.str(), output.text) << "print it anew: shell/README.md tells how";
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

std::vector<std::string> stems()
{
    std::set<std::string> stems;
    for (const Family& family : families()) {
        stems.emplace(family.header);
    }
    return {stems.begin(), stems.end()};
}

INSTANTIATE_TEST_SUITE_P(Families, Page, testing::ValuesIn(stems()), [](const auto& family) { return family.param; });

} // namespace
