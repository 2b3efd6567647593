// The managers' tables, held against each other and against the headers.
#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <fnmatch.h>
#include <gtest/gtest.h>

#include "gateway/answer.hpp"
#include "gateway/decode.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"
#include "processes.hpp"
#include "tables/managers.hpp"

namespace {

using vorsim::tables::Field;
using vorsim::tables::Form;
using vorsim::tables::MessageRow;

// A call as its header declares it, and all that the header declares.
struct Declared {
    std::string parameters;
    std::string header;
};

bool has_word(const std::string& text, std::string_view word)
{
    return std::regex_search(text, std::regex(fmt::format("\\b{}\\b", word)));
}

std::string without_comments(std::string text)
{
    for (std::size_t begin = text.find("/*"); begin != text.npos; begin = text.find("/*", begin)) {
        text.erase(begin, text.find("*/", begin) + 2 - begin);
    }
    return text;
}

std::map<std::string, Declared> declared_calls()
{
    std::map<std::string, Declared> calls;
    const std::regex call(R"((\w+)\(([^;{}()]*)\);)");
    for (const auto& file : std::filesystem::directory_iterator(VOR_SOURCE_DIR "/include/device_mgmt")) {
        const std::string header = without_comments(processes::contents(file.path()));
        for (std::sregex_iterator found(header.begin(), header.end(), call), end; found != end; ++found) {
            calls.emplace((*found)[1], Declared{(*found)[2], header});
        }
    }
    return calls;
}

// Those that a row's pattern stands for.
std::vector<Declared> matching(std::string_view pattern)
{
    static const std::map<std::string, Declared> calls = declared_calls();
    std::vector<Declared> matching;
    for (const auto& [name, declared] : calls) {
        if (fnmatch(std::string(pattern).c_str(), name.c_str(), 0) == 0) {
            matching.push_back(declared);
        }
    }
    return matching;
}

bool same_elements(const MessageRow& one, const MessageRow& other)
{
    return std::ranges::equal(one.layout.fields(), other.layout.fields(), [](const Field& a, const Field& b) {
        return a.tag_or_offset == b.tag_or_offset && a.kind == b.kind && a.only_value == b.only_value;
    });
}

// A row that another row's message fits as well would never be found.
TEST(tables, messages_are_distinguishable)
{
    for (const vorsim::tables::Manager& manager : vorsim::tables::managers) {
        std::vector<const MessageRow*> earlier;
        for (const auto& listed : vorsim::tables::all_rows()) {
            if (!listed.serves(manager.sap)) {
                continue;
            }
            const MessageRow& row = *listed.row;
            for (const MessageRow* sibling : earlier) {
                if (sibling->exchange.id == row.exchange.id) {
                    EXPECT_FALSE(same_elements(*sibling, row)) << sibling->call << " and " << row.call;
                    EXPECT_EQ(sibling->layout.form, row.layout.form) << sibling->call << " and " << row.call;
                    EXPECT_EQ(sibling->layout.length, row.layout.length) << sibling->call << " and " << row.call;
                }
            }
            earlier.push_back(&row);
        }
    }
}

TEST(tables, names_match_headers)
{
    for (const auto& [row, manager] : vorsim::tables::all_rows()) {
        const std::vector<Declared> calls = matching(row->call);
        EXPECT_FALSE(calls.empty()) << row->call << " is declared nowhere";
        for (const Declared& call : calls) {
            EXPECT_TRUE(row->layout.lead.empty() || has_word(call.parameters, row->layout.lead))
                << row->call << " has no argument " << row->layout.lead;
            for (const Field& field : row->layout.fields()) {
                // The arguments behind the dots have no names, and a record may hold what the call works out.
                const bool in_record = row->layout.form == Form::record && has_word(call.header, field.name);
                EXPECT_TRUE(field.repeated ? call.parameters.ends_with("...")
                                           : has_word(call.parameters, field.name) || in_record)
                    << row->call << " has no argument " << field.name;
            }
        }
    }
}

TEST(tables, answers_match_declared_records)
{
    const vorsim::gateway::State state;
    vorsim::gateway::Measurements measurements(1);
    for (const auto& [row, manager] : vorsim::tables::all_rows()) {
        if (row->query == nullptr) {
            continue;
        }
        for (const vorsim::values::Value& value : row->query({.row = row}, state, measurements).values) {
            for (const Declared& call : matching(row->call)) {
                EXPECT_TRUE(has_word(call.header, value.name)) << row->call << " reads no field " << value.name;
            }
        }
    }
}

} // namespace
