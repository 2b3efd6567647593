// pending.hpp: a confirmed apply, from when it has been made until it is kept
// or taken back.
#pragma once

#include <string>

#include "input/options.hpp"
#include "site/journal.hpp"

namespace vorcfg {

// Refuses to go on where one waits.
void check_nothing_pending(const Journal& journal);
// "until 2026-05-12 10:04 UTC", or that nobody waits any more.
std::string pending_text(const Journal& journal);

// Waits in a process of its own, which outlives the terminal, and on a terminal for Enter. The journal is closed.
int wait_for_confirmation(Journal journal, const Options& options);

} // namespace vorcfg
