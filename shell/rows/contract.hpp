// contract.hpp: what the headers and the rows say of families and calls, for every page that shows them. The headers
// are built in, so that each sentence stands in one place.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rows/row.hpp"

namespace vorcfg {

struct CallContract {
    std::string symbol;
    std::string declaration;
    std::vector<std::string> paragraphs; // the first begins with the summary
    std::vector<std::pair<std::string, std::string>> arguments;
    std::string returned; // "the common codes" where the header says nothing else

    std::string summary() const;
    std::string_view about(const Argument& argument) const;
};

struct HeaderContract {
    std::vector<std::string> paragraphs; // of the comment at its top
    std::vector<CallContract> calls;
};

const HeaderContract& contract_of(const Family& family);
const CallContract& contract_of(const Row& row);
std::string about(const Family& family); // in a few words

// --- Rows and arguments in words -------------------------------------------------------

std::string usage_of(const Row& row);                     // "gpio set-value port_num value"
std::string example_call(const Row& row);                 // "gpio set-value 1 1"
std::string summary_of(const Row& row);                   // in one sentence
std::vector<std::string_view> remarks_of(const Row& row); // what its marks mean to who makes it
std::string_view type_name(const Argument& argument);

// What is accepted of a number or a text: "0 to 255", "0 to 1, or off, on", "error, warning".
std::string accepted(const Argument& argument);

// "number, 0 to 255; never sent"
std::string kind_text(const Argument& argument);

} // namespace vorcfg
