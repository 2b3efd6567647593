// expect.hpp: checks the messages that a gateway has received.
#pragma once

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "record/comparison.hpp"
#include "server/options.hpp"
#include "text/screen.hpp"

namespace vorsim::client {

struct Check {
    std::string file;
    std::vector<record::Expectation> expected;
    record::Manner manner;
    std::chrono::milliseconds within{};
    bool json = false;
    vor::ColorWhen color{};

    std::string name() const { return file == "-" ? "standard input" : file; }
    // Reads the file; "-" is standard input. Throws.
    void read();
    // Whether the messages of the running gateway are as expected; prints how they differ.
    bool run(std::FILE* to) const;
};

// Of `expect`, and of a command's run.
inline constexpr vor::OptionOf<Check> check_options[] = {
    {{"--any-order", "", ""}, [](Check& check, std::string_view) { check.manner.any_order = true; }},
    {{"--subset", "", ""}, [](Check& check, std::string_view) { check.manner.subset = true; }},
    {{"--allow-complaints", "", ""}, [](Check& check, std::string_view) { check.manner.allow_complaints = true; }},
    {{"--json", "", ""}, vor::taken_as<&Check::json>},
    {{"--within", "T", ""},
     [](Check& check, std::string_view value) { check.within = server::time_of("--within", value); }},
};

} // namespace vorsim::client
