// commands.hpp: what vorsim does beside being the gateway: it asks, watches,
// sets and ends the running one, and reads journals.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorsim::client {

// The exit code; nothing when the first argument is no command.
std::optional<int> run(const std::vector<std::string>& arguments);

// "vorsim show ...   what it does", a line each.
std::string help();

// Each in a file of its own.
int decode(const std::vector<std::string>& arguments);
int replay(const std::vector<std::string>& arguments);

// Nothing where there is no such file.
std::optional<std::string> contents(const std::string& path);
// A line to standard output; throws when that fails.
void print(const std::string& text);

} // namespace vorsim::client
