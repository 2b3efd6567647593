// contract.hpp: what the headers say of families and calls. They are built in,
// so that each sentence stands in one place.
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

} // namespace vorcfg
