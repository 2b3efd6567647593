// commands.hpp: the commands of vorsim beside simulating the gateway.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vor {
class Json;
}

namespace vorsim::client {

// Returns the exit code; nothing when the first argument is not a command.
std::optional<int> run(const std::vector<std::string>& arguments);

std::string help_text();

// A command with work to do here; the others are only passed on to the gateway.
struct Handler {
    std::string_view name;
    std::string_view operands;
    std::string_view about;
    int (*run)(const std::vector<std::string>& arguments);
    bool is_live; // needs a running gateway
};
std::span<const Handler> handlers();
int watch(const std::vector<std::string>& arguments);
int wait(const std::vector<std::string>& arguments);
int expect(const std::vector<std::string>& arguments);
int run_command(const std::vector<std::string>& arguments);
int decode(const std::vector<std::string>& arguments);
int replay(const std::vector<std::string>& arguments);

// The document of a state file.
vor::Json state_in(const std::string& file);
// Writes to standard output; throws if that fails.
void print(const std::string& text);

} // namespace vorsim::client
