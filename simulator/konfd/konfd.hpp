// konfd.hpp: the daemon of the stored configuration, command by command.
#pragma once

#include <string>
#include <string_view>

#include "konfd/command.hpp"
#include "konfd/pattern.hpp"
#include "konfd/tree.hpp"

namespace vorsim::konfd {

struct Reply {
    std::string answer; // "-o" or "-e", what was to be shown, and a line end
    Report report;
    bool complained = false; // a check that finds nothing is no complaint
};

class Konfd {
public:
    explicit Konfd(bool show_secrets = false) : show_secrets_(show_secrets) {}

    // Carries the commands out in order. One that cannot be read keeps the
    // whole burst from being carried out; one that fails stops it.
    Reply execute(std::string_view burst);
    // The reply to a text too long to be kept.
    static Reply refuse(const std::string& why);

    const Tree& tree() const { return tree_; }
    Json json() const { return tree_.json(show_secrets_); }
    std::string text() const { return tree_.text({}, show_secrets_); }

private:
    // Adds what the command shows; tells why it failed.
    bool carry_out(const Command& command, Work& work, std::string& shown, std::string& why);

    bool show_secrets_;
    Tree tree_;
};

} // namespace vorsim::konfd
