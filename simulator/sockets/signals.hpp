// stop.hpp: asked to stop by SIGTERM or SIGINT, and made to when that takes
// too long, whatever is being done.
#pragma once

#include "sockets/unix_socket.hpp"

namespace vorsim {

// Readable as soon as it is asked for. Once in a process.
Descriptor stop_requests();

} // namespace vorsim
