// tally.hpp: what a batch came to.
#pragma once

#include <string>
#include <vector>

#include "call/session.hpp"

namespace vorcfg {

// The worst of several failures is what leaves the site least known.
ExitCode worse(ExitCode one, ExitCode other);

struct Tally {
    unsigned accepted = 0;
    unsigned sent = 0;
    unsigned unread = 0;
    unsigned dry = 0;
    unsigned other = 0;   // done, nothing to do
    unsigned unknown = 0; // of those that failed
    unsigned refused = 0;
    std::vector<std::size_t> failed; // their lines
    ExitCode worst = exit_ok;

    // Whether the call was no failure.
    bool count(const Planned& planned, Outcome outcome);
};

} // namespace vorcfg
