// variables.hpp: what ${name} stands for in a batch file.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "input/complaint.hpp"
#include "text/parse.hpp"

namespace vorcfg {

class Variables {
public:
    void set(std::string_view definition); // "name=value", which wins over a file's
    void read(const std::string& path);    // one name=value a line, the value a word as in a batch

    // Appends to the word what ${name} or $${ in front of the text stands for, and says how many bytes that was.
    // Throws a Complaint with the column.
    std::size_t expand(std::string_view left, std::size_t column, vor::Word& word);

    // What no line has used, each as a complaint.
    std::vector<Complaint> unused(const std::string& batch) const;

private:
    struct Variable {
        std::string value;
        bool on_command_line = false; // where others can read it: no secret
        Place place;                  // in the file it comes from
        bool used = false;
    };
    std::map<std::string, Variable, std::less<>> known_;
};

} // namespace vorcfg
