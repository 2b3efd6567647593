// variables.hpp: what ${name} stands for in a batch file.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/complaint.hpp"

namespace vorcfg {

struct Variable {
    std::string value;
    bool on_command_line = false; // where others can read it: no secret
    Place place;                  // in the file it comes from
    bool used = false;
};

class Variables {
public:
    void set(std::string_view definition); // "name=value", which wins over a file's
    void read(const std::string& path);    // one name=value a line, the value a word as in a batch

    // What the name stands for; null: nothing.
    const Variable* use(std::string_view name);
    std::vector<std::string> names() const;

    // What no line has used, each as a complaint.
    std::vector<Complaint> unused(const std::string& batch) const;

private:
    std::map<std::string, Variable, std::less<>> known_;
};

} // namespace vorcfg
