// batch.hpp: files of calls, one a line.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "call/prepare.hpp"
#include "input/options.hpp"

namespace vorcfg {

// The column of the wrong word in its line; after the last for a missing one.
std::size_t column_of(const InputError& complaint, const std::vector<Word>& words, std::string_view line);

// The calls of a batch, one after the other; none is kept, so that a batch of
// any length takes no more memory than its text and its secrets.
class Batch {
public:
    Batch(std::string text, std::string name, SecretSources sources, Variables variables = {});

    // The next line's call, tried when it is read for the first time; none at the end. Throws a InputError with its
    // place, and goes on behind it.
    std::optional<PreparedCall> next();
    // Reads no secret from standard input: nothing is going to be made.
    void leave_input() { secrets_.leave_input(); }
    // Asks for the secrets that wait for a prompt, of all lines or of those wanted.
    void ask(const std::function<bool(std::size_t line)>& wanted = {});
    // To make what was tried: all lines, or those wanted.
    void rewind(std::function<bool(std::size_t line)> wanted = {});

    std::vector<InputError> unused_variables() const { return variables_.unused(name_); }
    const std::string& name() const { return name_; }

private:
    std::string text_;
    std::string name_;
    Secrets secrets_;
    Variables variables_;
    std::function<bool(std::size_t)> wanted_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;
    bool tried_ = false; // every call, by the first reading
};

// The file that the options are about; - is standard input.
Batch batch_of(const std::string& path, const Options& options);

// Reads it whole: what is in order goes to `each`. The exit code of the last complaint.
int check(Batch& batch, const std::function<void(const PreparedCall&)>& each,
          const std::function<int(const InputError&)>& complain);

// A call that wants --yes.
void check_confirmed(const PreparedCall& planned, const Options& options);
// Of the calls that may cut the link one works over: asked once, and only where someone sits who can answer.
void ask_before(const std::vector<std::string>& cutting, const Options& options);
std::string named(const PreparedCall& planned); // "ip set-dhcp (line 7)"

} // namespace vorcfg
