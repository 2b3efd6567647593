// directory.hpp: where the sockets of this gateway are.
#pragma once

#include <cstddef>
#include <sys/un.h>

#include "vorinfra_manager.h"

namespace vorinfra {

constexpr size_t socket_path_size = sizeof(sockaddr_un::sun_path);

// Opens the private directory, the environment's or the given one, created when missing, and stores its path. Returns
// the descriptor, or -1 after reporting why it cannot be used.
int open_directory(char (&path)[socket_path_size], const char* given = nullptr);

// The address of a SAP's socket in that directory.
sockaddr_un sap_address(const char* directory, vor_uint16 sap);

} // namespace vorinfra
