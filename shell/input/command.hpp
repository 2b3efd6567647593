// command.hpp: what may stand first on a line in place of a family.
#pragma once

#include <span>
#include <string_view>

namespace vorcfg {

struct Options;

struct Command {
    std::string_view name;        // empty: of what is no command, a call and lines without words
    std::string_view usage;       // as help and the manual have it
    std::string_view about;       // one line
    std::string_view more;        // what help says besides
    int (*run)(const Options&);   // the exit code
    std::string_view wanted = {}; // the usage in a complaint, where it is another
};

// Dispatch, help, completion and the manual are made of it.
std::span<const Command> commands();
// Null, where there is none of that name.
const Command* command_named(std::string_view name);

// The exit code of what a line says. Throws a Complaint about what was not done.
int run(const Options& options);

} // namespace vorcfg
