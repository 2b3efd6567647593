// konfd.hpp: the daemon of the stored configuration, command by command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "konfd/command.hpp"
#include "konfd/pattern.hpp"
#include "konfd/tree.hpp"
#include "values/record.hpp"

namespace vorsim::konfd {

struct Reply {
    std::string answer; // "-o" or "-e", the output of -d, and a line end
    values::Record record;
};

class Konfd {
public:
    struct Settings {
        bool show_secrets = false;
        bool lenient = false; // a missing path is created, or counts as empty
    };

    Konfd() : Konfd(Settings()) {}
    explicit Konfd(const Settings& settings) : settings_(settings) {}

    // Executes the commands in order. A syntax error in one keeps all from being executed; one that fails stops the
    // rest.
    Reply execute(std::string_view burst);
    // The reply to a text too long to be kept.
    static Reply refuse(const std::string& why);

    std::vector<Tree::Node> lines(const Path& path = {}) const { return tree_.lines(path, settings_.show_secrets); }
    std::string text(const Path& path = {}, std::size_t depth = 0) const { return text_of(lines(path), depth); }

private:
    // Adds the command's output. Returns why it failed; empty: success.
    std::string carry_out(const Command& command, Work& work, std::string& shown);
    std::string missing_in(const Path& path) const;

    Settings settings_;
    Tree tree_;
};

} // namespace vorsim::konfd
