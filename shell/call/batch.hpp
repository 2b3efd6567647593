// batch.hpp: files of calls, one per line.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "call/prepare.hpp"
#include "input/options.hpp"

namespace vorcfg::call {

// The column of the wrong word in its line; after the last for a missing one.
std::size_t column_of(const input::InputError& error, const std::vector<input::Word>& words, std::string_view line);

// The calls of a batch, one after the other. None is kept: memory holds only the text and the secrets.
class Batch {
public:
    Batch(std::string text, std::string name, input::SecretSources sources, input::Variables variables = {});

    // The next line's call, tried when it is read for the first time; none at the end. Throws an InputError with its
    // place; the next call continues after it.
    std::optional<PreparedCall> next();
    // Reads no secret from standard input, nor misses one of a service, where no call will be made.
    void leave_input() { secrets_.leave_input(); }
    // Asks for the secrets that wait for a prompt, of all lines or of those selected.
    void ask(const std::function<bool(std::size_t line)>& selected = {});
    // Back to the beginning, to make what was tried: all lines, or those selected.
    void rewind(std::function<bool(std::size_t line)> selected = {});

    std::vector<input::InputError> unused_variables() const { return variables_.unused(name_); }
    // Once the file was read: the gateway that its first line names, if it does; whether a line has a variable.
    const std::string& gateway() const { return gateway_; }
    bool uses_variables() const { return variables_.are_used(); }
    const std::string& name() const { return name_; }
    std::size_t line() const { return line_; } // read last

private:
    bool is_gateway_line(const std::vector<input::Word>& words);

    std::string text_;
    std::string name_;
    std::string gateway_;
    input::Secrets secrets_;
    input::Variables variables_;
    std::function<bool(std::size_t)> selected_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;
    bool begun_ = false; // a line with words was read
    bool tried_ = false; // every call, by the first reading
};

// Throws for a name that no gateway can have, since a file is named after it.
void check_gateway(std::string_view name);

// The file at `path`; - is standard input.
Batch batch_of(const std::string& path, const input::Options& options);

// Reads it whole and hands each valid call to `each`. The exit code of the last error.
int check(Batch& batch, const std::function<void(const PreparedCall&)>& each,
          const std::function<int(const input::InputError&)>& report, bool shows_progress);

// Throws where the call requires --yes, which was not given.
void check_confirmed(const PreparedCall& call, const input::Options& options);
// Asks once before calls that may drop the operator's connection, and only at a terminal; false where nothing may be
// sent. `question` says what would be made: "Make 12 calls?"
bool agreed_to(const std::vector<std::string>& cutting, const std::string& question, const input::Options& options);
std::string named(const PreparedCall& call); // "ip set-dhcp 0 (line 7)"

} // namespace vorcfg::call
