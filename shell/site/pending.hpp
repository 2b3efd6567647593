// pending.hpp: apply --confirm, from its last call until it is confirmed or reverted.
#pragma once

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "site/journal.hpp"

namespace vorcfg::site {

// Throws where an apply is waiting for confirmation.
void check_nothing_pending(const Journal& journal);
// Until when it is waiting, or that nothing is waiting any more.
input::InputError pending_error(const Journal& journal);

// Waits in a process of its own, which outlives the terminal, and at a terminal for Enter. Closes the journal.
int wait_for_confirmation(Journal journal, const input::Options& options);

} // namespace vorcfg::site
